#pragma once

#include <QByteArray>
#include <QColor>
#include <QPoint>
#include <QSize>

class QImage;
class QPainter;

// Letters of 5 by 7 dots. The toolkit's own would need fonts and an application with a screen.

namespace podsim {

/// Pixels to each side of a letter's dot that suit a picture's height: 2 for 720 lines.
int dotOf(const QImage &picture);

/// Pixels that a text takes, with dots of `dot` pixels to each side.
QSize textSize(const QByteArray &text, int dot);

/// Draws a text of letters, digits and the signs " +,-./:", letters as capitals, with its upper
/// left corner at `corner`. Other signs leave a gap.
void drawText(QPainter &painter, const QPoint &corner, const QByteArray &text, int dot,
              const QColor &colour);

} // namespace podsim
