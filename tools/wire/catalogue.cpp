#include "tools/wire/catalogue.h"

#include "tools/wire/framefields.h"
#include "tools/wire/jsonmembers.h"
#include "tools/wire/names.h"

namespace wire {

namespace {

const char *wordOf(FieldKind kind)
{
    switch (kind) {
    case FieldKind::Byte:
    case FieldKind::Flags:
    case FieldKind::Mode:
        return "u8";
    case FieldKind::SignedByte:
        return "i8";
    case FieldKind::I16:
        return "i16";
    case FieldKind::U16:
    case FieldKind::Length:
        return "u16";
    case FieldKind::I32:
        return "i32";
    case FieldKind::U32:
        return "u32";
    default:
        return "bytes";
    }
}

const char *wordOf(ParamKind kind)
{
    switch (kind) {
    case ParamKind::Byte:
        return "u8";
    case ParamKind::U16:
        return "u16";
    case ParamKind::GeoDegrees:
    case ParamKind::Metres:
        return "i32";
    default:
        return "i16";
    }
}

void putField(const protocol::Field &field, const char *frame, TextBuffer &out)
{
    Members members(out);
    members.add("frame", frame).add("id", field.id);
    if (field.kind == FieldKind::Crc)
        members.add("place", "S-2");
    else
        members.add("offset", field.offset);
    if (field.size > 0)
        members.add("size", field.size);
    members.add("kind", wordOf(field.kind))
        .add("factor", field.scale.k > 1 ? qint64(field.scale.k) : 1);
    members.add("unit", field.unit).addNames(field.key);
}

void putCommand(const CommandRow &row, TextBuffer &out)
{
    Members members(out);
    members.add("code", row.code).add("id", row.id).add("size", areaSize(row)).addNames(row.name);
    if (row.fixedByte != kNoFixedByte)
        members.add("fixed", row.fixedByte);
    members.key("params");
    out.put('[');
    for (int i = 0; i < paramCount(row); ++i) {
        const Param &param = row.params[std::size_t(i)];
        if (i > 0)
            out.put(',');
        Members(out)
            .add("id", param.id)
            .add("kind", wordOf(param.kind))
            .add("factor", qint64(scaleOf(param.kind)));
    }
    out.put(']');
}

} // namespace

QByteArray catalogue()
{
    TextBuffer out;
    {
        Members document(out);
        for (const FrameKind kind : {FrameKind::Host, FrameKind::Gcu}) {
            document.key(wire::wordOf(kind));
            putList(fieldsOf(kind), out, [&](const protocol::Field &field) {
                putField(field, wire::wordOf(kind), out);
            });
        }
        document.key("commands");
        putList(kCommands, out, [&out](const CommandRow &row) { putCommand(row, out); });
        document.key("modes");
        putList(kModes, out, [&out](const ModeRow &row) {
            Members(out).add("code", row.code).add("id", row.id).addNames(row.name);
        });
    }
    out.put('\n');
    return out.bytes();
}

} // namespace wire
