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
constexpr QRgb kData = 0xFF86A9EC;
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
    return axisOver(low < high / 2 ? qMin(low, 0.0) : low, high, 0.02);
}

int ticksTo(const Axis &axis, double value)
{
    return int(std::floor((value - axis.low) / axis.step + 1e-6));
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
        {words.worst, percentile(sorted, 1) / kMillisecond, {2, 2}, ink::kBad},
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
        for (int i = 0; i <= ticksTo(y, y.high); ++i)
            putLevel(y.low + i * y.step);
        setPen(ink::kQuiet, 0.5);
        m_painter.drawLine(m_frame.bottomLeft(), m_frame.bottomRight());
    }

    /// Numbers below the axis, up to a value.
    void putTicks(double last)
    {
        for (int i = 0; i <= ticksTo(m_x, last); ++i)
            putTick(m_x.low + i * m_x.step, numberAt(m_x, m_x.low + i * m_x.step));
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
            const QPointF middle = pen - QPointF(0, points(2.3));
            drawMark(mark, middle, middle + QPointF(points(13), 0));
            const QString text =
                QStringLiteral("%1 %2 ms").arg(mark.name, QString::number(mark.value, 'f', 2));
            write(pen + QPointF(points(16), 0), text, 7, ink::kText);
            pen.rx() += points(16 + 9) + width(text, 7);
        }
    }

    void drawMark(const Mark &mark, const QPointF &from, const QPointF &to)
    {
        setPen(mark.colour, 0.8, mark.dashes);
        m_painter.drawLine(from, to);
    }
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

/// What a histogram shows.
struct Bars
{
    Axis axis;
    double end = 0;      ///< of the even bars: that of the axis, or a tick before it
    QVector<int> counts; ///< of each even bar
    bool isCut = false;
    int beyond = 0; ///< times that lie beyond, if it is cut

    double width() const { return axis.step / kBarsInTick; }
    int most() const { return qMax(beyond, *std::max_element(counts.begin(), counts.end())); }
};

void countBars(const QVector<int> &sorted, Bars &bars)
{
    bars.counts.fill(0, int(std::lround((bars.end - bars.axis.low) / bars.width())));
    const int last = bars.counts.size() - 1;
    for (const int time : sorted) {
        const double bar = std::floor((time / kMillisecond - bars.axis.low) / bars.width() + 1e-9);
        if (bar > last && bars.isCut)
            ++bars.beyond;
        else
            ++bars.counts[int(std::clamp(bar, 0.0, double(last)))];
    }
}

Bars barsOf(const QVector<int> &sorted)
{
    const double ninetyNine = percentile(sorted, 0.99) / kMillisecond;
    const double worst = sorted.last() / kMillisecond;
    Bars bars;
    bars.isCut = ninetyNine > 0 && worst > kFar * ninetyNine;
    bars.axis = timeAxis(sorted.first() / kMillisecond, bars.isCut ? 1.5 * ninetyNine : worst);
    bars.end = bars.axis.high;
    if (bars.isCut)
        bars.axis.high += bars.axis.step;
    countBars(sorted, bars);
    return bars;
}

void drawBars(Frame &frame, const Bars &bars, const QString &above)
{
    const double width = bars.width();
    for (int i = 0; i < bars.counts.size(); ++i) {
        const double from = bars.axis.low + i * width;
        frame.drawBar(from, from + width, bars.counts[i], true);
    }
    if (!bars.isCut)
        return;
    frame.drawBar(bars.end + 2 * width, bars.end + 4 * width, bars.beyond, false);
    frame.putTick(bars.end + 3 * width, above);
    frame.putCount(bars.end + 3 * width, bars.beyond);
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
    const QVector<int> sorted = sortedOf(micros);
    const Bars bars = barsOf(sorted);
    const QVector<Mark> marks = marksOf(sorted, words);
    frame.setAxes(bars.axis, axisOver(0, bars.most(), 1));
    frame.putTicks(bars.end);
    frame.putLegend(marks);
    drawBars(frame, bars, words.above);
    for (const Mark &mark : marks) {
        if (mark.value <= bars.end)
            frame.drawMark(mark, frame.at(mark.value, 0), frame.at(mark.value, frame.y().high));
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
    Axis x = axisOver(when.first(), when.last(), 0.02);
    x.high = qMax(when.last(), x.low + x.step); // the run fills its frame
    frame.setAxes(x, timeAxis(sorted.first() / kMillisecond, sorted.last() / kMillisecond));
    frame.putTicks(frame.x().high);
    frame.putLegend(marks);
    const qreal width = reaches.size() < micros.size() ? 0.9 : 2.0;
    const QPointF dot(0, frame.points(width / 2));
    frame.setPen(kData, width);
    for (const Reach &each : reaches) {
        frame.drawLine(frame.at(each.when, each.most / kMillisecond) - dot,
                       frame.at(each.when, each.least / kMillisecond) + dot);
    }
    for (const Mark &mark : marks)
        frame.drawMark(mark, frame.at(frame.x().low, mark.value),
                       frame.at(frame.x().high, mark.value));
}

} // namespace check
