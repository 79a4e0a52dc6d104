#pragma once

#include <QLabel>

/// Hexadecimal text of a field. That of a feedback area may be 100 KB long, of which a row of the
/// form shows a hundredth: such a text is neither measured nor painted beyond what is to be seen.
class HexLabel : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool isLong() const;
};
