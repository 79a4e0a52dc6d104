#pragma once

#include <QCommandLineParser>
#include <QString>

#include <optional>

namespace podsim {

/// Takes the values of a parsed command line, keeping the first error.
class OptionReader
{
public:
    explicit OptionReader(const QCommandLineParser &parser) : m_parser(parser) {}

    const QString &error() const { return m_error; }
    bool has(const char *name) const { return m_parser.isSet(QLatin1String(name)); }
    QString text(const char *name) const { return m_parser.value(QLatin1String(name)); }

    /// The number of an option that is given, within its limits.
    std::optional<qint64> number(const char *name, qint64 least, qint64 most, int base = 10);
    std::optional<double> decimal(const char *name, double least, double most);
    std::optional<quint16> port(const char *name, int least);

    void refuse(const char *name, const QString &reason);

private:
    const QCommandLineParser &m_parser;
    QString m_error;
};

} // namespace podsim
