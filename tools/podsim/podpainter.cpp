#include "tools/podsim/podpainter.h"

#include "tools/podsim/podfont.h"
#include "tools/podsim/podview.h"

#include <QPainter>
#include <QTime>

#include <algorithm>

namespace podsim {

namespace {

constexpr int kInsetPart = 3;   // an inset takes this part of the picture's width and height
constexpr int kMarginPart = 36; // of the picture's height
constexpr int kLinePitch = 10;  // dots from a line of text to the next
constexpr int kCrossArm = 20;   // dots
constexpr int kFrameHalf = 24;  // dots to each side of what is tracked or recognised
constexpr QRgb kFrontColour = 0xFFFFFFFF;
constexpr QRgb kBackColour = 0xFF202020;
constexpr QRgb kMeasureColour = 0xFFFF40FF;

/// Draws a camera's view into the picture's upper right corner.
void paintInset(QImage &picture, const PodState &state, std::size_t camera)
{
    const int margin = picture.height() / kMarginPart;
    const QSize size = picture.size() / kInsetPart;
    const QRect place({picture.width() - size.width() - margin, margin}, size);
    QImage part(picture.scanLine(place.top()) + place.left() * 4, size.width(), size.height(),
                picture.bytesPerLine(), picture.format()); // shares the picture's pixels
    PodView(part, state, camera).draw();
    QPainter painter(&picture);
    painter.setPen(kFrontColour);
    painter.drawRect(place);
}

/// An angle with one place; there is no minus before a zero.
QByteArray angleText(double degrees)
{
    const QByteArray text = QByteArray::number(degrees, 'f', 1);
    return text == "-0.0" ? QByteArray("0.0") : text;
}

QByteArray anglesText(const char *name, const Angles &angles)
{
    return QByteArray(name) + " R" + angleText(angles.roll) + " P" + angleText(angles.pitch) +
           " Y" + angleText(angles.yaw);
}

/// What is laid over the cameras' views. Sizes are in dots, which grow with the picture.
class Overlay
{
public:
    Overlay(QImage &picture, const PodState &state)
        : m_size(picture.size()), m_dot(dotOf(picture)), m_state(state), m_painter(&picture)
    {
        m_painter.setBrush(Qt::NoBrush);
    }

    void drawMeasured(const TemperatureArea &area)
    {
        if (!area.isOn)
            return;
        const QPoint first = pixelOf(area.box.x0, area.box.y0);
        const QPoint last = pixelOf(area.box.x1, area.box.y1);
        setPen(kMeasureColour);
        if (first == last)
            drawCross(first, 0);
        else
            m_painter.drawRect(QRect(first, last).normalized());
        const double temperature = m_state.temperatureIn(area.box);
        drawLine(last + QPoint(2, 2) * m_dot, QByteArray::number(temperature, 'f', 1) + " C",
                 kMeasureColour);
    }

    void drawDisplay(quint32 number)
    {
        setPen(kFrontColour);
        drawCross(QPoint(m_size.width(), m_size.height()) / 2, kCrossArm / 4);
        drawTexts(number);
        if (m_state.motion.mode() == PodMode::Tracking) {
            const std::array<int, 2> miss = m_state.missDistances();
            setPen(kMeasureColour);
            drawFrame(pixelOf(kPickCentre + miss[0], kPickCentre + miss[1]));
        }
        if (m_state.recognition != 0)
            drawRecognised();
    }

private:
    void setPen(QRgb colour) { m_painter.setPen(QPen(QColor(colour), m_dot)); }

    QPoint pixelOf(double x, double y) const
    {
        return QPointF(x * m_size.width() / (2 * kPickCentre),
                       y * m_size.height() / (2 * kPickCentre))
            .toPoint();
    }

    void drawCross(const QPoint &middle, int gap)
    {
        for (const QPoint &arm : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)})
            m_painter.drawLine(middle + arm * gap * m_dot, middle + arm * kCrossArm * m_dot);
    }

    void drawFrame(const QPoint &middle)
    {
        const QPoint corner(kFrameHalf * m_dot, kFrameHalf * m_dot);
        m_painter.drawRect(QRect(middle - corner, middle + corner));
    }

    void drawRecognised()
    {
        setPen(kFrontColour);
        for (const SceneObject &object : kScene) {
            const auto point =
                m_state.seenAt(directionAt(object, m_state.seconds), m_state.mainCamera());
            if (object.isMoving() && point)
                drawFrame(pixelOf((*point)[0], (*point)[1]));
        }
    }

    void drawTexts(quint32 number)
    {
        const QPoint corner(m_size.height() / kMarginPart, m_size.height() / kMarginPart);
        const QByteArray zooms = " Z1 " + QByteArray::number(m_state.cameras[0].zoom, 'f', 1) +
                                 " Z2 " + QByteArray::number(m_state.cameras[1].zoom, 'f', 1);
        const QByteArray mode = modeName(int(m_state.motion.mode()));
        const QByteArray lines[] = {
            mode + zooms + (m_state.recording != 0 ? " REC" : ""),
            anglesText("REL", m_state.motion.relative()),
            anglesText("ABS", m_state.motion.absolute()),
            QTime::currentTime().toString(QStringLiteral("HH:mm:ss.zzz")).toLatin1() + " N " +
                QByteArray::number(number),
        };
        for (int i = 0; i < 4; ++i)
            drawLine(corner + QPoint(0, i * kLinePitch * m_dot), lines[i], kFrontColour);
    }

    void drawLine(const QPoint &corner, const QByteArray &text, QRgb colour)
    {
        const QPoint border(m_dot, m_dot);
        m_painter.fillRect(QRect(corner - border, textSize(text, m_dot) + QSize(m_dot, 2 * m_dot)),
                           QColor(kBackColour));
        drawText(m_painter, corner, text, m_dot, colour);
    }

    QSize m_size;
    int m_dot;
    const PodState &m_state;
    QPainter m_painter;
};

} // namespace

void paintPicture(QImage &picture, const PodState &state, quint32 number)
{
    const std::size_t camera = state.mainCamera();
    PodView(picture, state, camera).draw();
    if (state.pictureInPicture == 3 || state.pictureInPicture == 4)
        paintInset(picture, state, 1 - camera);
    Overlay overlay(picture, state);
    overlay.drawMeasured(state.temperatureArea);
    overlay.drawMeasured(state.temperatureSpot);
    if (state.osd != 0)
        overlay.drawDisplay(number);
}

} // namespace podsim
