#include "tools/wire/decode.h"
#include "tools/wire/framefields.h"

#include <QDateTime>

namespace wire {

namespace {

void putName(const CommandView &view, TextBuffer &out)
{
    if (view.row) {
        out.put(view.row->id);
        return;
    }
    const char code = char(view.code);
    out.put("0x", 2);
    out.putHex(&code, 1);
}

/// "photo", or "zoom_ratio camera=1 zoom=20"; an unknown command's code as 0x40.
void putCommand(const char *area, int size, TextBuffer &out)
{
    const CommandView view = commandIn(area, size);
    putName(view, out);
    if (!view.row)
        return;
    forEachParam(*view.row, area, size, [&out](const Param &param, const char *at) {
        out.put(' ');
        out.put(param.id);
        out.put('=');
        putParam(param.kind, at, out);
    });
}

void putFeedback(const char *area, int size, TextBuffer &out)
{
    putName(commandIn(area, size), out);
    if (size > 1) {
        out.put(' ');
        out.put(resultWord(quint8(area[1])));
    }
}

void putCell(const protocol::Field &field, const char *at, int size, TextBuffer &out)
{
    if (field.kind == FieldKind::Command)
        putCommand(at, size, out);
    else if (field.kind == FieldKind::Feedback)
        putFeedback(at, size, out);
    else
        putValue(field, at, out);
}

/// A column of both frames: the field's place in each, or none.
struct Column
{
    QByteArray id;
    int places[3] = {-1, -1, -1};
};

QVector<Column> columns()
{
    QVector<Column> all;
    for (const FrameKind kind : {FrameKind::Host, FrameKind::Gcu}) {
        const QVector<protocol::Field> &fields = fieldsOf(kind);
        for (int i = 0; i < fields.size(); ++i) {
            auto column = std::find_if(all.begin(), all.end(),
                                       [&](const Column &each) { return each.id == fields[i].id; });
            if (column == all.end())
                column = all.insert(all.end(), Column{fields[i].id});
            column->places[int(kind)] = i;
        }
    }
    return all;
}

class CsvFormat : public FrameFormat
{
public:
    void begin(TextBuffer &out) const override
    {
        out.put("time,dir,frame,bytes,verdict");
        for (const Column &column : m_columns) {
            out.put(',');
            out.put(column.id);
        }
        out.put(",hex\n");
    }

    void add(const Record &record, TextBuffer &out) const override
    {
        const FrameKind kind = kindOf(record.bytes);
        if (record.time != kNoTime)
            out.putTime(record.time);
        out.put(',');
        out.put(wordOf(record.direction));
        out.put(',');
        out.put(wordOf(kind));
        out.put(',');
        out.putNumber(record.bytes.size());
        out.put(',');
        out.put(wordOf(verdictOf(record.bytes)));
        for (const Column &column : m_columns)
            putColumn(column.places[int(kind)], kind, record.bytes, out);
        out.put(',');
        out.putHex(record.bytes.constData(), record.bytes.size());
        out.put('\n');
    }

private:
    static void putColumn(int place, FrameKind kind, const QByteArray &bytes, TextBuffer &out)
    {
        out.put(',');
        if (place < 0)
            return;
        const protocol::Field &field = fieldsOf(kind)[place];
        const Span span = spanOf(field, kind, bytes.constData(), bytes.size());
        if (span.size > 0)
            putCell(field, bytes.constData() + span.offset, span.size, out);
    }

    const QVector<Column> m_columns = columns();
};

/// Names of fields, commands and results in a language.
class FieldWords
{
public:
    FieldWords(Language language, Verdict verdict) : m_language(language), m_verdict(verdict) {}

    QString text(const char *key) const { return nameOf(key, m_language); }

    /// A value has the digits that the workbench's form has.
    ShownField shown(const protocol::Field &field, const QByteArray &frame, const Span &span) const
    {
        const QByteArray bytes = frame.mid(span.offset, span.size);
        QString value = words(field, bytes);
        if (value.isEmpty() && *field.valueObject)
            value = fieldText(field, frame);
        return {text(byteLabel(field).toUtf8().constData()), text(field.key), value,
                QLatin1String(field.unit), bytes};
    }

private:
    QString words(const protocol::Field &field, const QByteArray &bytes) const
    {
        if (field.kind == FieldKind::Crc)
            return text(m_verdict == Verdict::Ok ? "通过" : "不通过");
        if (field.kind == FieldKind::Mode)
            return modeOf(quint8(bytes[0])) ? text(modeOf(quint8(bytes[0]))->name) : QString();
        if (field.kind == FieldKind::Flags)
            return flags(quint8(bytes[0]));
        if (field.kind != FieldKind::Command && field.kind != FieldKind::Feedback)
            return {};
        if (bytes.isEmpty())
            return text("无命令");
        const CommandRow *row = shownCommand(quint8(bytes[0]));
        const QString name = row ? text(row->name) : QString();
        const bool hasResult = field.kind == FieldKind::Feedback && bytes.size() > 1;
        return hasResult ? name + result(quint8(bytes[1])) : name;
    }

    /// The boxes that are checked in the form.
    QString flags(quint8 byte) const
    {
        QStringList checked;
        for (const FlagBit &flag : kFlagBits)
            if (byte & (1 << flag.bit))
                checked << text(flag.key);
        return checked.join(QLatin1String(", "));
    }

    QString result(quint8 code) const
    {
        return text(code == 0 ? "成功" : code == 1 ? "失败" : "执行中");
    }

    Language m_language;
    Verdict m_verdict;
};

/// To a width in columns of a terminal, where a Chinese character takes two.
QString padded(const QString &text, int width)
{
    int used = 0;
    for (const QChar c : text)
        used += c.unicode() >= 0x2E80 ? 2 : 1;
    return text + QString(qMax(1, width - used), QLatin1Char(' '));
}

void putRow(const ShownField &field, TextBuffer &out)
{
    out.put("  ");
    out.put(padded(field.place, 9));
    out.put(padded(field.name, 22));
    out.put(padded(field.unit.isEmpty() ? field.value : field.value + QLatin1Char(' ') + field.unit,
                   26));
    out.putHex(field.bytes.constData(), field.bytes.size());
    out.put('\n');
}

class TextFormat : public FrameFormat
{
public:
    explicit TextFormat(Language language) : m_language(language) {}

    void add(const Record &record, TextBuffer &out) const override
    {
        putTitle(record, out);
        for (const ShownField &field : shownFields(record.bytes, m_language))
            putRow(field, out);
        if (kindOf(record.bytes) == FrameKind::Unknown)
            out.putHex(record.bytes.constData(), record.bytes.size());
        out.put('\n');
    }

private:
    void putTitle(const Record &record, TextBuffer &out) const
    {
        if (record.time != kNoTime) {
            const auto when = QDateTime::fromMSecsSinceEpoch(record.time / 1000);
            out.put(when.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz ")));
        }
        if (record.direction != Direction::Unknown)
            out.put(nameOf(record.direction == Direction::Tx ? "发" : "收", m_language) +
                    QLatin1Char(' '));
        if (kindOf(record.bytes) != FrameKind::Unknown)
            out.put(nameOf(kindOf(record.bytes), m_language) + QLatin1String(", "));
        out.putNumber(record.bytes.size());
        out.put(" B\n");
    }

    Language m_language;
};

} // namespace

QString nameOf(FrameKind kind, Language language)
{
    if (kind == FrameKind::Unknown)
        return {};
    return nameOf(kind == FrameKind::Host ? "上位机发送数据" : "GCU返回数据", language);
}

QVector<ShownField> shownFields(const QByteArray &frame, Language language)
{
    const FrameKind kind = kindOf(frame);
    const FieldWords words(language, verdictOf(frame));
    QVector<ShownField> shown;
    for (const protocol::Field &field : fieldsOf(kind)) {
        const Span span = spanOf(field, kind, frame.constData(), frame.size());
        if (span.size > 0 || field.kind == FieldKind::Feedback)
            shown.append(words.shown(field, frame, span));
    }
    return shown;
}

std::unique_ptr<FrameFormat> csvFormat()
{
    return std::make_unique<CsvFormat>();
}

std::unique_ptr<FrameFormat> textFormat(Language language)
{
    return std::make_unique<TextFormat>(language);
}

} // namespace wire
