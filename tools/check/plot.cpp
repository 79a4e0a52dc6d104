#include "tools/check/plot.h"

#include "tools/check/paper.h"
#include "tools/check/percentile.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace check {

namespace {

constexpr double kMillisecond = 1000;
constexpr int kTicks = 5;
constexpr int kBarsInTick = 5;
/// A worst time of so many times the 99th percentile leaves the histogram's axis.
constexpr double kFar = 3;
/// Light enough for the marks to be seen on it.
constexpr QRgb kData = 0xFF8FB0EC;
/// More places than that can't be told from one another on paper.
constexpr int kPlaces = 400;

struct Axis
{
    double low = 0;
    double high = 1;
    double step = 1;
};

/// From round number to round number, 1, 2 or 5 of a power of ten apart.
Axis axisOver(double low, double high, double leastStep)
{
    const double raw = qMax((high - low) / kTicks, leastStep);
    const double power = std::pow(10, std::floor(std::log10(raw)));
    const double share = raw / power;
    const double step = power * (share <= 1 ? 1 : share <= 2 ? 2 : share <= 5 ? 5 : 10);
    Axis axis{std::floor(low / step) * step, std::ceil(high / step) * step, step};
    if (axis.high <= axis.low)
        axis.high = axis.low + step;
    return axis;
}

Axis timeAxis(double low, double high)
{
    // Times that lie close together would all look alike on an axis from 0.
    return axisOver(low < high / 2 ? qMin(low, 0.0) : low, high, 0.001);
}

QString numberAt(const Axis &axis, double value)
{
    const int decimals = qMax(0, -int(std::floor(std::log10(axis.step) + 1e-9)));
    return QString::number(value, 'f', decimals);
}

struct Mark
{
    QString name;
    double value = 0; ///< milliseconds
    QVector<qreal> dashes;
    QRgb colour = ink::kText;
};

QVector<Mark> marksOf(const QVector<int> &sorted, const PlotWords &words)
{
    return {
        {words.median, percentile(sorted, 0.5) / kMillisecond, {}, ink::kText},
        {words.percentile, percentile(sorted, 0.99) / kMillisecond, {6, 3}, ink::kText},
        {words.worst, percentile(sorted, 1) / kMillisecond, {1.5, 2}, ink::kBad},
    };
}

/// The frame of a plot with its axes; places values in it.
class Frame
{
public:
    Frame(QPainter &painter, const QRectF &area, const PlotWords &words)
        : m_painter(painter), m_area(area), m_point(painter.device()->logicalDpiX() / 72.0),
          m_frame(area.adjusted(points(30), points(38), -points(10), -points(24)))
    {
        write(area.topLeft() + QPointF(0, points(8)), words.title, 9, ink::kText);
        write({m_area.left(), m_frame.top() - points(8)}, words.y, 7, ink::kQuiet);
        const QString &x = words.x;
        write({m_frame.right() - width(x, 7), m_frame.bottom() + points(20)}, x, 7, ink::kQuiet);
    }

    void setAxes(const Axis &x, const Axis &y)
    {
        m_x = x;
        m_y = y;
        for (double value = y.low; value < y.high + y.step / 2; value += y.step)
            putLevel(value);
        setPen(ink::kQuiet, 0.5);
        m_painter.drawLine(m_frame.bottomLeft(), m_frame.bottomRight());
    }

    /// Numbers below the axis, up to a value.
    void putTicks(double last)
    {
        for (double value = m_x.low; value < last + m_x.step / 2; value += m_x.step)
            putTick(value, numberAt(m_x, value));
    }

    void putTick(double value, const QString &text)
    {
        const QPointF foot(at(value, m_y.low).x(), m_frame.bottom());
        setPen(ink::kQuiet, 0.5);
        m_painter.drawLine(foot, foot + QPointF(0, points(2.5)));
        write(foot + QPointF(-width(text, 7) / 2, points(10)), text, 7, ink::kQuiet);
    }

    QPointF at(double x, double y) const
    {
        return {m_frame.left() + (x - m_x.low) / (m_x.high - m_x.low) * m_frame.width(),
                m_frame.bottom() - (y - m_y.low) / (m_y.high - m_y.low) * m_frame.height()};
    }

    void setPen(QRgb colour, qreal width, const QVector<qreal> &dashes = {})
    {
        QPen pen(QColor(colour), points(width));
        pen.setCapStyle(Qt::FlatCap);
        if (!dashes.isEmpty())
            pen.setDashPattern(dashes);
        m_painter.setPen(pen);
        m_painter.setBrush(Qt::NoBrush);
    }

    /// The marks' names and values in a line above the frame, each with its line.
    void putLegend(const QVector<Mark> &marks)
    {
        QPointF pen(m_area.left(), m_area.top() + points(19));
        for (const Mark &mark : marks) {
            setMarkPen(mark);
            const QPointF middle = pen - QPointF(0, points(2.3));
            m_painter.drawLine(middle, middle + QPointF(points(13), 0));
            const QString text =
                QStringLiteral("%1 %2 ms").arg(mark.name, QString::number(mark.value, 'f', 2));
            write(pen + QPointF(points(16), 0), text, 7, ink::kText);
            pen.rx() += points(16 + 9) + width(text, 7);
        }
    }

    void setMarkPen(const Mark &mark) { setPen(mark.colour, 0.8, mark.dashes); }
    void drawLine(const QPointF &from, const QPointF &to) { m_painter.drawLine(from, to); }
    void putWord(const QString &text)
    {
        write(m_frame.center() - QPointF(width(text, 9) / 2, 0), text, 9, ink::kQuiet);
    }
    /// From the axis up, filled or as an outline.
    void drawBar(double from, double to, double height, bool isFilled)
    {
        const QRectF bar(at(from, height), at(to, m_y.low));
        m_painter.setPen(QPen(QColor(ink::kAccent), points(0.4)));
        m_painter.setBrush(isFilled ? QBrush(QColor(kData)) : QBrush(Qt::NoBrush));
        if (height > 0)
            m_painter.drawRect(bar);
    }
    void putCount(double value, int count)
    {
        const QString text = QString::number(count);
        const QPointF middle(width(text, 7) / 2, points(3));
        write(at(value, count) - middle, text, 7, ink::kText);
    }
    qreal points(qreal count) const { return count * m_point; }
    const Axis &x() const { return m_x; }
    const Axis &y() const { return m_y; }

private:
    void putLevel(double value)
    {
        setPen(ink::kRule, 0.3);
        const QPointF left = at(m_x.low, value);
        m_painter.drawLine(left, {m_frame.right(), left.y()});
        const QString text = numberAt(m_y, value);
        write(left + QPointF(-points(4) - width(text, 7), points(2.5)), text, 7, ink::kQuiet);
    }

    qreal width(const QString &text, qreal size) const
    {
        return QFontMetricsF(textFont(size), m_painter.device()).horizontalAdvance(text);
    }

    void write(const QPointF &baseline, const QString &text, qreal size, QRgb colour)
    {
        m_painter.setFont(textFont(size));
        m_painter.setPen(QColor(colour));
        m_painter.drawText(baseline, text);
    }

    QPainter &m_painter;
    const QRectF m_area;
    const qreal m_point; ///< of the device, in a point
    const QRectF m_frame;
    Axis m_x, m_y;
};

QVector<int> sortedOf(QVector<int> micros)
{
    std::sort(micros.begin(), micros.end());
    return micros;
}

/// How many times lie in each bar from the axis' beginning; the last one counts all beyond.
QVector<int> countsOf(const QVector<int> &micros, double low, double width, int bars)
{
    QVector<int> counts(bars + 1, 0);
    for (const int time : micros) {
        const double bar = std::floor((time / kMillisecond - low) / width + 1e-9);
        ++counts[int(std::clamp(bar, 0.0, double(bars)))];
    }
    return counts;
}

/// Least and greatest time of the places that fall together on paper.
struct Reach
{
    double when = 0;
    int least = 0;
    int most = 0;
};

QVector<Reach> reachesOf(const QVector<double> &when, const QVector<int> &micros)
{
    QVector<Reach> all;
    const int count = qMin(when.size(), micros.size());
    const int together = (count + kPlaces - 1) / kPlaces;
    for (int i = 0; i < count; i += together) {
        const int size = qMin(together, count - i);
        const auto ends = std::minmax_element(&micros[i], &micros[i] + size);
        all.append({when[i + size / 2], *ends.first, *ends.second});
    }
    return all;
}

} // namespace

void drawHistogram(QPainter &painter, const QRectF &area, const QVector<int> &micros,
                   const PlotWords &words)
{
    Frame frame(painter, area, words);
    if (micros.isEmpty()) {
        frame.putWord(words.none);
        return;
    }
    const QVector<Mark> marks = marksOf(sortedOf(micros), words);
    const double ninetyNine = marks[1].value;
    const bool isCut = marks[2].value > kFar * ninetyNine && ninetyNine > 0;
    const double least = *std::min_element(micros.begin(), micros.end()) / kMillisecond;
    Axis x = timeAxis(least, isCut ? 1.5 * ninetyNine : marks[2].value);
    const double end = x.high;
    const double width = x.step / kBarsInTick;
    const int bars = int(std::lround((x.high - x.low) / width));
    QVector<int> counts = countsOf(micros, x.low, width, bars);
    const int beyond = counts.takeLast();
    if (isCut)
        x.high += x.step;
    else
        counts.last() += beyond; // on the axis' very end
    const int most = qMax(isCut ? beyond : 1, *std::max_element(counts.begin(), counts.end()));
    frame.setAxes(x, axisOver(0, most, 1));
    frame.putTicks(end);
    frame.putLegend(marks);
    for (int i = 0; i < counts.size(); ++i)
        frame.drawBar(x.low + i * width, x.low + (i + 1) * width, counts[i], true);
    if (isCut) {
        frame.drawBar(end + 2 * width, end + 4 * width, beyond, false);
        frame.putTick(end + 3 * width, words.above);
        frame.putCount(end + 3 * width, beyond);
    }
    for (const Mark &mark : marks) {
        if (mark.value > end)
            continue;
        frame.setMarkPen(mark);
        frame.drawLine(frame.at(mark.value, frame.y().low), frame.at(mark.value, frame.y().high));
    }
}

void drawRun(QPainter &painter, const QRectF &area, const QVector<double> &when,
             const QVector<int> &micros, const PlotWords &words)
{
    Frame frame(painter, area, words);
    const QVector<Reach> reaches = reachesOf(when, micros);
    if (reaches.isEmpty()) {
        frame.putWord(words.none);
        return;
    }
    const QVector<int> sorted = sortedOf(micros);
    const QVector<Mark> marks = marksOf(sorted, words);
    frame.setAxes(axisOver(when.first(), when.last(), 0.001),
                  timeAxis(sorted.first() / kMillisecond, sorted.last() / kMillisecond));
    frame.putTicks(frame.x().high);
    frame.putLegend(marks);
    frame.setPen(kData, 0.9);
    for (const Reach &each : reaches) {
        const QPointF dot(0, frame.points(0.45));
        frame.drawLine(frame.at(each.when, each.most / kMillisecond) - dot,
                       frame.at(each.when, each.least / kMillisecond) + dot);
    }
    for (const Mark &mark : marks) {
        frame.setMarkPen(mark);
        frame.drawLine(frame.at(frame.x().low, mark.value), frame.at(frame.x().high, mark.value));
    }
}

} // namespace check
