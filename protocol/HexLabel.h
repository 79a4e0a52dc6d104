#pragma once

#include "foundation/CellLabel.h"

/// Hexadecimal text of a field. That of a feedback area may be 100 KB long, of which a row of the
/// form shows a hundredth: such a text isn't painted beyond what is to be seen.
class HexLabel : public CellLabel
{
    Q_OBJECT

public:
    using CellLabel::CellLabel;

protected:
    void paintEvent(QPaintEvent *event) override;
};
