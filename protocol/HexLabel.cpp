#include "protocol/HexLabel.h"

#include <QPainter>
#include <QStyle>

namespace {

constexpr int kLongText = 1000; ///< characters, more than a row of the form can show

} // namespace

void HexLabel::paintEvent(QPaintEvent *event)
{
    if (text().size() <= kLongText)
        return CellLabel::paintEvent(event);
    QPainter painter(this);
    drawFrame(&painter);
    style()->drawItemText(&painter, contentsRect(), int(Qt::AlignTop | Qt::TextWordWrap), palette(),
                          isEnabled(), text().left(kLongText), foregroundRole());
}
