#pragma once

#include <QLabel>

/// A label in a cell whose size its form sets, whatever the text. It isn't measured: that would lay
/// each text out up to three times.
class CellLabel : public QLabel
{
public:
    using QLabel::QLabel;

    QSize sizeHint() const override { return {0, 0}; }
    QSize minimumSizeHint() const override { return {0, 0}; }
    bool hasHeightForWidth() const override { return false; }

protected:
    bool event(QEvent *event) override;
};
