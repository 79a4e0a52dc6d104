#include "tools/wire/decode.h"
#include "tools/wire/framefields.h"

#include <algorithm>

namespace wire {

namespace {

/// A field with its key made ready: `"roll_control":`, a comma in front of all but the first.
struct JsonField
{
    protocol::Field field;
    QByteArray key;
    int decimals = 0;
    bool isQuoted = false;
};

QVector<JsonField> jsonFields(FrameKind kind)
{
    QVector<JsonField> fields;
    for (const protocol::Field &field : fieldsOf(kind)) {
        if (field.kind == FieldKind::Command || field.kind == FieldKind::Feedback)
            continue;
        const QByteArray comma = fields.isEmpty() ? "" : ",";
        fields.append({field, comma + '"' + field.id + "\":", decimalsOf(field.scale.k),
                       !isNumber(field.kind)});
    }
    return fields;
}

/// Those of them that are a number, the first without a comma.
QVector<JsonField> rawFields(FrameKind kind)
{
    QVector<JsonField> fields = jsonFields(kind);
    fields.erase(std::remove_if(fields.begin(), fields.end(),
                                [](const JsonField &each) { return each.isQuoted; }),
                 fields.end());
    if (!fields.isEmpty())
        fields.front().key.remove(0, 1);
    return fields;
}

void putModeOrNumber(qint64 raw, TextBuffer &out)
{
    const ModeRow *mode = modeOf(quint8(raw));
    if (mode)
        out.putQuoted(mode->id);
    else
        out.putNumber(raw);
}

void putField(const JsonField &each, const char *at, TextBuffer &out)
{
    if (each.isQuoted) {
        out.put('"');
        out.putHex(at, each.field.size);
        out.put('"');
    } else if (each.field.kind == FieldKind::Mode) {
        putModeOrNumber(rawNumber(each.field.kind, at), out);
    } else {
        out.putDecimal(rawNumber(each.field.kind, at), each.decimals);
    }
}

class JsonFormat : public FrameFormat
{
public:
    JsonFormat()
    {
        for (const FrameKind kind : {FrameKind::Host, FrameKind::Gcu}) {
            m_fields[int(kind)] = jsonFields(kind);
            m_raw[int(kind)] = rawFields(kind);
        }
    }

    void add(const Record &record, TextBuffer &out) const override
    {
        const char *bytes = record.bytes.constData();
        const int size = record.bytes.size();
        const FrameKind kind = kindOf(bytes, size);
        out.put('{');
        putHead(record, kind, out);
        if (kind != FrameKind::Unknown) {
            putFields(kind, bytes, size, out);
            putArea(kind, bytes, size, out);
        }
        out.put(",\"hex\":\"", 8);
        out.putHex(bytes, size);
        out.put("\"}\n", 3);
    }

private:
    static void putHead(const Record &record, FrameKind kind, TextBuffer &out)
    {
        if (record.time != kNoTime) {
            out.put("\"time\":", 7);
            out.putTime(record.time);
            out.put(',');
        }
        if (record.direction != Direction::Unknown) {
            out.put("\"dir\":\"", 7);
            out.put(wordOf(record.direction), 2);
            out.put("\",", 2);
        }
        out.put("\"frame\":\"", 9);
        out.put(wordOf(kind));
        out.put("\",\"length\":", 11);
        out.putNumber(record.bytes.size());
        out.put(",\"crc\":\"", 8);
        out.put(wordOf(verdictOf(record.bytes)));
        out.put('"');
    }

    void putFields(FrameKind kind, const char *bytes, int size, TextBuffer &out) const
    {
        out.put(",\"fields\":{", 11);
        for (const JsonField &each : m_fields[int(kind)]) {
            const bool isCrc = each.field.kind == FieldKind::Crc;
            const Span span = isCrc ? crcOf(bytes, size) : Span{each.field.offset, each.field.size};
            if (span.size == 0 || span.offset + span.size > size)
                continue;
            out.put(each.key);
            putField(each, bytes + span.offset, out);
        }
        out.put("},\"raw\":{", 9);
        for (const JsonField &each : m_raw[int(kind)]) {
            if (each.field.offset + each.field.size > size)
                break;
            out.put(each.key);
            out.putNumber(rawNumber(each.field.kind, bytes + each.field.offset));
        }
        out.put('}');
    }

    static void putArea(FrameKind kind, const char *bytes, int size, TextBuffer &out)
    {
        const Span span = areaOf(kind, bytes, size);
        if (span.size == 0)
            return;
        const char *area = bytes + span.offset;
        const CommandView view = commandIn(area, span.size);
        out.put(kind == FrameKind::Host ? ",\"command\":{" : ",\"feedback\":{");
        out.put("\"code\":", 7);
        out.putNumber(view.code);
        if (view.row) {
            out.put(",\"name\":", 8);
            out.putQuoted(view.row->id);
        }
        if (kind == FrameKind::Host)
            putParams(view, area, span.size, out);
        else
            putResult(area, span.size, out);
        out.put('}');
    }

    static void putParams(const CommandView &view, const char *area, int size, TextBuffer &out)
    {
        out.put(",\"params\":{", 11);
        bool isFirst = true;
        if (view.row)
            forEachParam(*view.row, area, size, [&](const Param &param, const char *at) {
                out.put(isFirst ? "\"" : ",\"");
                out.put(param.id);
                out.put("\":", 2);
                putParam(param.kind, at, out);
                isFirst = false;
            });
        out.put('}');
        if (!view.isExact)
            putAreaDigits(area, size, out);
    }

    static void putResult(const char *area, int size, TextBuffer &out)
    {
        if (size > 1) {
            out.put(",\"result\":", 10);
            out.putNumber(quint8(area[1]));
            out.put(",\"state\":", 9);
            out.putQuoted(resultWord(quint8(area[1])));
        }
        if (size > 2)
            putAreaDigits(area, size, out);
    }

    static void putAreaDigits(const char *area, int size, TextBuffer &out)
    {
        out.put(",\"area\":\"", 9);
        out.putHex(area, size);
        out.put('"');
    }

    QVector<JsonField> m_fields[3];
    QVector<JsonField> m_raw[3];
};

} // namespace

std::unique_ptr<FrameFormat> jsonFormat()
{
    return std::make_unique<JsonFormat>();
}

} // namespace wire
