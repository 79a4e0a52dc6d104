#include "protocol/HexLabel.h"

#include <QPainter>
#include <QStyle>

namespace {

constexpr int kLongText = 1000; ///< characters, more than a row of the form can show

} // namespace

bool HexLabel::isLong() const
{
    return text().size() > kLongText;
}

QSize HexLabel::sizeHint() const
{
    return isLong() ? size() : QLabel::sizeHint();
}

QSize HexLabel::minimumSizeHint() const
{
    return isLong() ? QSize() : QLabel::minimumSizeHint();
}

int HexLabel::heightForWidth(int width) const
{
    return isLong() ? height() : QLabel::heightForWidth(width);
}

void HexLabel::paintEvent(QPaintEvent *event)
{
    if (!isLong())
        return QLabel::paintEvent(event);
    QPainter painter(this);
    drawFrame(&painter);
    style()->drawItemText(&painter, contentsRect(), int(Qt::AlignTop | Qt::TextWordWrap), palette(),
                          isEnabled(), text().left(kLongText), foregroundRole());
}
