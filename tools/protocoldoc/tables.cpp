#include "tools/protocoldoc/tables.h"

#include "foundation/QGlobal.h"
#include "protocol/codec.h"
#include "protocol/commands.h"
#include "protocol/gcuframe.h"
#include "protocol/hostframe.h"
#include "protocol/modes.h"
#include "tools/protocoldoc/examples.h"
#include "tools/protocoldoc/rowtexts.h"

#include <QVector>

namespace {

struct Column
{
    const char *zh;
    const char *en;
    int width; ///< in parts of the table's whole width
};

constexpr Column kBytes{"字节", "Bytes", 15};
constexpr Column kId{"标识", "Id", 23};
constexpr Column kSize{"长度", "Size", 8};
constexpr Column kKind{"类型", "Kind", 9};
constexpr Column kFactor{"K", "K", 8};
constexpr Column kPrecision{"精度", "Prec.", 11};
constexpr Column kUnit{"单位", "Unit", 9};
constexpr Column kField{"字段", "Field", 24};
constexpr Column kMeaning{"含义", "Meaning", 44};
constexpr Column kWire{"报文字节", "On the wire", 26};
constexpr Column kValue{"值", "Value", 26};
constexpr Column kCode{"代码", "Code", 8};
constexpr Column kCommand{"命令", "Command", 22};
constexpr Column kCount{"N", "N", 5};
constexpr Column kPayload{"命令码之后的内容", "After the code", 30};
constexpr Column kMode{"工作模式", "Work mode", 22};

bool isChinese()
{
    return QGlobal::instance()->languageChinese;
}

QString chosen(const char *zh, const char *en)
{
    return QString::fromUtf8(isChinese() ? zh : en);
}

QString pipeLine(const QStringList &cells)
{
    return QStringLiteral("| ") + cells.join(QStringLiteral(" | ")) + QStringLiteral(" |");
}

QString pipeTable(const QVector<Column> &columns, const QList<QStringList> &rows)
{
    QStringList titles, rulers;
    for (const Column &column : columns) {
        titles << chosen(column.zh, column.en);
        rulers << QString(column.width, QLatin1Char('-'));
    }
    QStringList lines{pipeLine(titles), pipeLine(rulers)};
    for (const QStringList &row : rows)
        lines << pipeLine(row);
    return lines.join(QLatin1Char('\n'));
}

QString hexNumber(quint8 number)
{
    return QStringLiteral("0x") + hexDigits(QByteArray(1, char(number)));
}

QString code(const QString &text)
{
    return text.isEmpty() ? text : QLatin1Char('`') + text.trimmed() + QLatin1Char('`');
}

/// Where a field stands. The form's own text, in English with its own signs.
QString placeOf(const protocol::Field &field)
{
    QString place = byteLabel(field);
    if (!isChinese())
        place.replace(QChar(0xFF5E), QChar(0x2013));
    return place.replace(QLatin1Char('-'), QChar(0x2212));
}

/// The kind in the document's language.
QString kindText(FieldKind kind)
{
    const QString text = kindOf(kind);
    if (text == QLatin1String("bits"))
        return chosen("位", "bits");
    return text == QLatin1String("bytes") ? chosen("字节", "bytes") : text;
}

QString factorOf(const protocol::Scale &scale)
{
    if (scale.precision == protocol::Precision::Integer)
        return {};
    return scale.k == kGeoDegrees.k ? QString::fromUtf8("10⁷") : QString::number(scale.k);
}

/// What a scaled value is computed in on its way to the wire.
QString precisionOf(const protocol::Scale &scale)
{
    if (scale.precision == protocol::Precision::Integer)
        return {};
    return scale.precision == protocol::Precision::Single ? chosen("单", "single")
                                                          : chosen("双", "double");
}

template <typename Rows>
QString fieldTable(const QString &table, const Rows &rows, bool isWritten, Notes &notes)
{
    QList<QStringList> lines;
    for (const auto &row : rows) {
        const protocol::Field &field = row.field;
        QStringList cells{placeOf(field), code(QLatin1String(field.id)),
                          field.size == 0 ? QStringLiteral("N") : QString::number(field.size),
                          kindText(field.kind), factorOf(field.scale)};
        if (isWritten)
            cells << precisionOf(field.scale);
        lines << cells + QStringList{unitOf(field), nameOf(field.key, notes),
                                     notes.take(table, QString::fromUtf8(field.key))};
    }
    QVector<Column> columns{kBytes, kId, kSize, kKind, kFactor};
    if (isWritten)
        columns << kPrecision;
    return pipeTable(columns + QVector<Column>{kUnit, kField, kMeaning}, lines);
}

QString paramText(const Param &param)
{
    const QString name = QLatin1String(param.symbol);
    switch (param.kind) {
    case ParamKind::Byte:
        return name + QStringLiteral(" u8");
    case ParamKind::U16:
        return name + QStringLiteral(" u16");
    case ParamKind::GeoDegrees:
        return name + QStringLiteral(" i32 × ") + factorOf(kGeoDegrees);
    case ParamKind::Metres:
        return name + QStringLiteral(" i32 × ") + factorOf(kThousandths);
    default:
        return name + QStringLiteral(" i16");
    }
}

/// The payload in wire order.
QString payloadOf(const CommandRow &row)
{
    QStringList parts;
    if (row.fixedByte != kNoFixedByte)
        parts << code(hexDigits(QByteArray(1, char(row.fixedByte))));
    for (int i = 0; i < paramCount(row); ++i)
        parts << paramText(row.params[std::size_t(i)]);
    return parts.join(QStringLiteral(", "));
}

QString commandTable(Notes &notes)
{
    QList<QStringList> lines;
    for (const CommandRow &row : kCommands) {
        const QString number = hexNumber(row.code);
        lines << QStringList{code(number),
                             code(QLatin1String(row.id)),
                             nameOf(row.name, notes),
                             QString::number(areaSize(row)),
                             payloadOf(row),
                             notes.take(QStringLiteral("command"), number)};
    }
    return pipeTable({kCode, kId, kCommand, kCount, kPayload, kMeaning}, lines);
}

QString modeTable(Notes &notes)
{
    QList<QStringList> lines;
    for (const ModeRow &row : kModes) {
        const QString number = hexNumber(row.code);
        lines << QStringList{code(number), code(QLatin1String(row.id)), nameOf(row.name, notes),
                             notes.take(QStringLiteral("mode"), number)};
    }
    return pipeTable({kCode, kId, kMode, kMeaning}, lines);
}

/// A frame's bytes, sixteen a line.
QString frameBlock(const QByteArray &frame)
{
    QStringList lines{QStringLiteral("```")};
    for (int i = 0; i < frame.size(); i += 16)
        lines << toHexText(frame.mid(i, 16)).trimmed();
    return (lines << QStringLiteral("```")).join(QLatin1Char('\n'));
}

QString valueOf(const protocol::Field &field, const QByteArray &frame)
{
    if (field.kind == FieldKind::Command)
        return commandName(byteAt(frame, kFixedSize));
    if (field.kind == FieldKind::Feedback)
        return feedbackText(frame);
    if (field.kind == FieldKind::Crc)
        return translated(crcMatches(frame) ? "通过" : "不通过");
    return field.kind == FieldKind::Constant ? QString() : fieldText(field, frame);
}

/// A frame taken apart; of one that is compared with another, only what differs.
template <typename Rows>
QString takenApart(const Rows &rows, const QByteArray &frame, const QByteArray &other = {})
{
    QList<QStringList> lines;
    for (const auto &row : rows) {
        const QByteArray slice = fieldSlice(row.field, frame);
        if (slice != fieldSlice(row.field, other))
            lines << QStringList{placeOf(row.field), translated(row.field.key),
                                 code(toHexText(slice)), valueOf(row.field, frame)};
    }
    return pipeTable({kBytes, kField, kWire, kValue}, lines);
}

} // namespace

QMap<QString, QString> placeholderTexts(Notes &notes)
{
    const QByteArray idle = idleFrame(), photo = photoFrame(), pointing = pointingFrame();
    return {
        {"HOST_FIELDS", fieldTable("host", kHostRows, true, notes)},
        {"GCU_FIELDS", fieldTable("gcu", kGcuRows, false, notes)},
        {"COMMANDS", commandTable(notes)},
        {"MODES", modeTable(notes)},
        {"IDLE_FRAME", frameBlock(idle)},
        {"IDLE_FIELDS", takenApart(kHostRows, idle)},
        {"PHOTO_FRAME", frameBlock(photo)},
        {"PHOTO_CHANGES", takenApart(kHostRows, photo, idle)},
        {"POINTING_FRAME", frameBlock(pointing)},
        {"POINTING_CHANGES", takenApart(kHostRows, pointing, idle)},
        {"ANSWER_FRAME", frameBlock(answerFrame())},
        {"ANSWER_FIELDS", takenApart(kGcuRows, answerFrame())},
    };
}
