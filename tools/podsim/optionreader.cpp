#include "tools/podsim/optionreader.h"

namespace podsim {

namespace {

/// The value if it is one and lies within the limits; what isn't a number lies within none.
template <typename Number>
std::optional<Number> within(bool isGood, Number value, Number least, Number most)
{
    return isGood && value >= least && value <= most ? std::optional<Number>(value) : std::nullopt;
}

} // namespace

std::optional<qint64> OptionReader::number(const char *name, qint64 least, qint64 most, int base)
{
    if (!has(name))
        return {};
    bool isGood = false;
    const qint64 value = text(name).toLongLong(&isGood, base);
    const std::optional<qint64> result = within(isGood, value, least, most);
    if (!result)
        refuse(name, QStringLiteral("a %1number from %2 to %3 is needed")
                         .arg(base == 16 ? QStringLiteral("hexadecimal ") : QString(),
                              QString::number(least, base), QString::number(most, base).toUpper()));
    return result;
}

std::optional<double> OptionReader::decimal(const char *name, double least, double most)
{
    if (!has(name))
        return {};
    bool isGood = false;
    const double value = text(name).toDouble(&isGood);
    const std::optional<double> result = within(isGood, value, least, most);
    if (!result)
        refuse(name, QStringLiteral("a number from %1 to %2 is needed").arg(least).arg(most));
    return result;
}

std::optional<quint16> OptionReader::port(const char *name, int least)
{
    const std::optional<qint64> value = number(name, least, 65535);
    return value ? std::optional<quint16>(quint16(*value)) : std::nullopt;
}

void OptionReader::refuse(const char *name, const QString &reason)
{
    if (m_error.isEmpty())
        m_error = QStringLiteral("--%1 %2: %3").arg(QLatin1String(name), text(name), reason);
}

} // namespace podsim
