#include "tools/wire/filter.h"

#include "tools/wire/framefields.h"

#include <QDateTime>
#include <QRegularExpression>

#include <cmath>

namespace wire {

namespace {

constexpr double kMicro = 1e6;
constexpr double kFarthest = 1e12; // seconds

bool areaBegins(const QByteArray &bytes, FrameKind kind, quint8 code)
{
    const Span span = areaOf(kind, bytes.constData(), bytes.size());
    return span.size > 0 && quint8(bytes[span.offset]) == code;
}

bool inSeconds(const QString &text, double factor, qint64 &microseconds)
{
    bool isGood = false;
    const double seconds = text.toDouble(&isGood) * factor;
    if (!isGood || !std::isfinite(seconds) || std::abs(seconds) > kFarthest)
        return false;
    microseconds = qRound64(seconds * kMicro);
    return true;
}

} // namespace

bool Filter::isInTime(qint64 time)
{
    if (from == kNoTime && to == std::numeric_limits<qint64>::max())
        return true;
    m_untimed += time == kNoTime;
    if (time == kNoTime)
        return false;
    if (m_first == kNoTime)
        m_first = time;
    const qint64 compared = isRelative ? time - m_first : time;
    return compared >= from && compared <= to;
}

QString Filter::remark() const
{
    return m_untimed == 0
               ? QString()
               : QStringLiteral("%1 frames have no time, and are left out by --from and --to")
                     .arg(m_untimed);
}

bool Filter::takes(const Record &record)
{
    const FrameKind recordKind = kindOf(record.bytes);
    return isInTime(record.time) && (!direction || record.direction == *direction) &&
           (!kind || recordKind == *kind) &&
           (!command || areaBegins(record.bytes, recordKind, *command)) &&
           (!mode || (recordKind == FrameKind::Gcu && record.bytes.size() > kModeOffset &&
                      quint8(record.bytes[kModeOffset]) == *mode)) &&
           (!verdict || verdictOf(record.bytes) == *verdict);
}

bool readMoment(const QString &text, qint64 &microseconds, bool &isRelative)
{
    const bool isEpoch = text.startsWith(QLatin1Char('@'));
    isRelative = !isEpoch && !text.contains(QLatin1Char('T'));
    if (isRelative)
        return readDuration(text, microseconds);
    if (isEpoch)
        return inSeconds(text.mid(1), 1, microseconds);
    // The toolkit passes over what follows the seconds.
    static const QRegularExpression form(QStringLiteral(
        "^[0-9-]{10}T[0-9]{2}:[0-9]{2}(:[0-9]{2}([.,][0-9]+)?)?(Z|[+-][0-9]{2}:?[0-9]{2})?$"));
    if (!form.match(text).hasMatch())
        return false;
    const QDateTime when = QDateTime::fromString(text, Qt::ISODateWithMs);
    microseconds = when.toMSecsSinceEpoch() * 1000;
    return when.isValid();
}

bool readDuration(const QString &text, qint64 &microseconds)
{
    constexpr struct
    {
        const char *unit;
        double seconds;
    } kUnits[] = {{"ms", 0.001}, {"us", 0.000001}, {"min", 60}, {"h", 3600}, {"s", 1}};
    for (const auto &each : kUnits) {
        const QLatin1String unit(each.unit);
        if (text.endsWith(unit))
            return inSeconds(text.chopped(unit.size()), each.seconds, microseconds);
    }
    return inSeconds(text, 1, microseconds);
}

} // namespace wire
