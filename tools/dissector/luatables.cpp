#include "tools/dissector/luatables.h"

#include "foundation/QGlobal.h"
#include "protocol/commands.h"
#include "protocol/gcuframe.h"
#include "protocol/hostframe.h"
#include "protocol/modes.h"
#include "protocol/rowids.h"
#include "tools/protocoldoc/notes.h"
#include "tools/protocoldoc/rowtexts.h"

#include <functional>
#include <iterator>

namespace {

QString quoted(QString text)
{
    text.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    return QLatin1Char('"') + text.replace(QLatin1Char('"'), QStringLiteral("\\\"")) +
           QLatin1Char('"');
}

QString entry(const char *key, const QString &value)
{
    return QLatin1String(key) + QStringLiteral(" = ") + value;
}

QString table(const QStringList &entries)
{
    return QStringLiteral("{ ") + entries.join(QStringLiteral(", ")) + QStringLiteral(" }");
}

/// A named table, an entry a line.
QString block(const char *name, const QStringList &lines)
{
    return QStringLiteral("local ") + QLatin1String(name) + QStringLiteral(" = {\n    ") +
           lines.join(QStringLiteral(",\n    ")) + QStringLiteral("\n}\n");
}

QString inBoth(const Explanations &notes, const std::function<QString(Notes &)> &textOf)
{
    QStringList entries;
    for (auto it = notes.begin(); it != notes.end(); ++it) {
        QGlobal::instance()->languageChinese = it.key() == QLatin1String("zh");
        entries << entry(qPrintable(it.key()), quoted(textOf(*it.value()).trimmed()));
    }
    return table(entries);
}

QString nameEntry(const char *key, const Explanations &notes)
{
    return entry("name", inBoth(notes, [key](Notes &of) { return nameOf(key, of); }));
}

QString noteEntry(const QString &of, const QString &row, const Explanations &notes)
{
    return entry("note", inBoth(notes, [&](Notes &notes) {
                     return notes.take(of, row).remove(QLatin1Char('`'));
                 }));
}

/// What a number is scaled by and its unit, where it has them.
QStringList scaleEntries(const protocol::Scale &scale, const QString &unit)
{
    QStringList entries;
    if (scale.precision != protocol::Precision::Integer)
        entries << entry("k", QString::number(scale.k, 'f', 0));
    if (!unit.isEmpty())
        entries << entry("unit", quoted(unit));
    return entries;
}

template <typename Rows>
QStringList fieldLines(const QString &of, const Rows &rows, const Explanations &notes)
{
    QStringList lines;
    for (const auto &row : rows) {
        const protocol::Field &field = row.field;
        lines << table(QStringList{entry("id", quoted(QLatin1String(field.id))),
                                   entry("at", QString::number(field.offset)),
                                   entry("size", QString::number(field.size)),
                                   entry("kind", quoted(kindOf(field.kind)))} +
                       scaleEntries(field.scale, unitOf(field)) +
                       QStringList{nameEntry(field.key, notes),
                                   noteEntry(of, QString::fromUtf8(field.key), notes)});
    }
    return lines;
}

static_assert(idsAreDistinct(kFlagBits.data(), kFlagBits.size()),
              "a flag lacks an id, or shares one");

QStringList flagLines(const Explanations &notes)
{
    QStringList lines;
    for (const FlagBit &flag : kFlagBits)
        lines << table({entry("bit", QString::number(flag.bit)),
                        entry("id", quoted(QLatin1String(flag.id))), nameEntry(flag.key, notes)});
    return lines;
}

/// What a parameter of that kind is on the wire: its Lua kind, its scale, its unit.
struct ParamForm
{
    const char *kind;
    protocol::Scale scale;
    const char *unit;
};

ParamForm formOf(ParamKind kind)
{
    switch (kind) {
    case ParamKind::Byte:
        return {"u8", kPlain, ""};
    case ParamKind::U16:
        return {"u16", kPlain, ""};
    case ParamKind::Temperature:
        return {"i16", kPlain, "°C"};
    case ParamKind::GeoDegrees:
        return {"i32", kGeoDegrees, "°"};
    case ParamKind::Metres:
        return {"i32", kThousandths, "m"};
    default:
        return {"i16", kPlain, ""};
    }
}

QString paramLine(const Param &param, const Explanations &names)
{
    const QString id = QLatin1String(param.id);
    const ParamForm form = formOf(param.kind);
    const QString name =
        inBoth(names, [&id](Notes &notes) { return notes.take(QStringLiteral("param"), id); });
    return entry(param.id, table(QStringList{entry("id", quoted(id)),
                                             entry("size", QString::number(paramSize(param.kind))),
                                             entry("kind", quoted(QLatin1String(form.kind)))} +
                                 scaleEntries(form.scale, QString::fromUtf8(form.unit)) +
                                 QStringList{entry("name", name)}));
}

/// Each parameter once. One id stands for one form: two would be two fields of one filter name.
QStringList paramLines(const Explanations &names)
{
    QMap<QString, QString> lines;
    for (const CommandRow &row : kCommands) {
        for (int i = 0; i < paramCount(row); ++i) {
            const Param &param = row.params[std::size_t(i)];
            const QString line = paramLine(param, names);
            const QString id = QLatin1String(param.id);
            if (lines.value(id, line) != line)
                names.first()->complain(QStringLiteral("a parameter of two forms: ") + id);
            lines.insert(id, line);
        }
    }
    return lines.values();
}

/// The entry of a row that has a code.
template <typename Row>
QString codeLine(const QString &of, const Row &row, const QStringList &more,
                 const Explanations &notes)
{
    const QString code = QStringLiteral("0x%1").arg(
        QString::number(row.code, 16).rightJustified(2, QLatin1Char('0')).toUpper());
    return QStringLiteral("[%1] = ").arg(code) +
           table(QStringList{entry("id", quoted(QLatin1String(row.id))), nameEntry(row.name, notes),
                             noteEntry(of, code, notes)} +
                 more);
}

QStringList commandLines(const Explanations &notes)
{
    QStringList lines;
    for (const CommandRow &row : kCommands) {
        QStringList params, more;
        for (int i = 0; i < paramCount(row); ++i)
            params << quoted(QLatin1String(row.params[std::size_t(i)].id));
        if (row.fixedByte != kNoFixedByte)
            more << entry("fixed", QString::number(row.fixedByte));
        more << entry("size", QString::number(areaSize(row))) << entry("params", table(params));
        lines << codeLine(QStringLiteral("command"), row, more, notes);
    }
    return lines;
}

QStringList modeLines(const Explanations &notes)
{
    QStringList lines;
    for (const ModeRow &row : kModes)
        lines << codeLine(QStringLiteral("mode"), row, {}, notes);
    return lines;
}

/// Words of the program that no row has, by the name that the dissector calls them.
QStringList wordLines(const Explanations &notes)
{
    constexpr const char *kWords[][2] = {
        {"pass", "通过"},   {"fail", "不通过"},    {"succeeded", "成功"},
        {"failed", "失败"}, {"running", "执行中"}, {"none", "无命令"},
    };
    QStringList lines;
    for (const auto &word : kWords)
        lines << entry(word[0], inBoth(notes, [&word](Notes &of) { return nameOf(word[1], of); }));
    return lines;
}

} // namespace

QString luaTables(const Explanations &notes, const Explanations &names)
{
    return block("HOST_ROWS", fieldLines(QStringLiteral("host"), kHostRows, notes)) +
           block("GCU_ROWS", fieldLines(QStringLiteral("gcu"), kGcuRows, notes)) +
           block("FLAG_BITS", flagLines(notes)) + block("COMMANDS", commandLines(notes)) +
           block("PARAMS", paramLines(names)) + block("MODES", modeLines(notes)) +
           block("WORDS", wordLines(notes));
}
