#include "tools/config/describe.h"

#include "tools/config/choices.h"

#include <QDebug>

namespace {

/// A value as text; what can't be printed of a string is escaped.
template <typename T>
QString shown(const T &value)
{
    QString text;
    QDebug(&text).nospace() << value;
    return text;
}

template <typename T>
QString settingLine(const SettingField<T> &field, const SavedBlock &block)
{
    if constexpr (std::is_same_v<T, bool>) {
        for (const Choice &choice : kChoices)
            if (choice.member == field.member)
                return QLatin1String(choice.name) + QStringLiteral(": ") +
                       QLatin1String(wordFor(choice, block.*field.member));
    }
    return QLatin1String(field.name) + QStringLiteral(": ") + shown(block.*field.member);
}

template <typename Row, typename Fields>
QString rowLine(const Row &row, const Fields &fields)
{
    const Row blank;
    QStringList parts;
    forEachField(fields, [&](const auto &field) {
        if (row.*field.member != blank.*field.member)
            parts << QLatin1String(field.name) + QLatin1Char(' ') + shown(row.*field.member);
    });
    return QStringLiteral("  ") + parts.join(QStringLiteral(", "));
}

template <typename Row, typename Fields>
QStringList rowLines(const char *name, const QList<Row> &rows, const Fields &fields)
{
    QStringList lines{QStringLiteral("%1: %2").arg(QLatin1String(name)).arg(rows.size())};
    for (const Row &row : rows)
        lines << rowLine(row, fields);
    return lines;
}

} // namespace

QStringList describe(const SavedBlock &block)
{
    QStringList lines;
    forEachField(kSettingFields, [&](const auto &field) { lines << settingLine(field, block); });
    return lines + rowLines("controlRows", block.controlRows, kControlFields) +
           rowLines("keyRows", block.keyRows, kKeyFields);
}
