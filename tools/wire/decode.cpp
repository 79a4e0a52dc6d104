#include "tools/wire/decode.h"

#include "tools/wire/framefields.h"

namespace wire {

namespace {

class HexFormat : public FrameFormat
{
public:
    void add(const Record &record, TextBuffer &out) const override
    {
        out.putHex(record.bytes.constData(), record.bytes.size());
        out.put('\n');
    }
};

class LineFormat : public FrameFormat
{
public:
    void add(const Record &record, TextBuffer &out) const override
    {
        out.put('(');
        if (record.time == kNoTime)
            out.put('-');
        else
            out.putTime(record.time);
        out.put(") ", 2);
        out.put(record.direction == Direction::Unknown ? "-" : wordOf(record.direction));
        out.put(' ');
        out.putHex(record.bytes.constData(), record.bytes.size());
        out.put('\n');
    }
};

} // namespace

std::unique_ptr<FrameFormat> hexFormat()
{
    return std::make_unique<HexFormat>();
}

std::unique_ptr<FrameFormat> lineFormat()
{
    return std::make_unique<LineFormat>();
}

void putValue(const protocol::Field &field, const char *at, TextBuffer &out)
{
    if (!isNumber(field.kind)) {
        out.putHex(at, field.size);
        return;
    }
    const qint64 raw = rawNumber(field.kind, at);
    const ModeRow *mode = field.kind == FieldKind::Mode ? modeOf(quint8(raw)) : nullptr;
    if (mode)
        out.put(mode->id);
    else
        out.putDecimal(raw, decimalsOf(field.scale.k));
}

void putParam(ParamKind kind, const char *at, TextBuffer &out)
{
    out.putDecimal(rawParam(kind, at), decimalsOf(scaleOf(kind)));
}

CommandView commandIn(const char *area, int size)
{
    CommandView view;
    if (size == 0)
        return view;
    view.code = quint8(area[0]);
    view.row = findCommand(view.code);
    view.isExact = view.row && size == areaSize(*view.row) &&
                   (view.row->fixedByte == kNoFixedByte || quint8(area[1]) == view.row->fixedByte);
    return view;
}

const char *resultWord(quint8 result)
{
    return result == 0 ? "success" : result == 1 ? "failure" : "executing";
}

} // namespace wire
