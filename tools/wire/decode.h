#pragma once

#include "protocol/fields.h"
#include "tools/wire/names.h"
#include "tools/wire/record.h"
#include "tools/wire/textbuffer.h"

#include <QVector>

#include <memory>

namespace wire {

/// What frames are shown as. One for each output; it holds nothing of the frames.
class FrameFormat
{
public:
    virtual ~FrameFormat() = default;
    /// What stands before the first frame.
    virtual void begin(TextBuffer &) const {}
    /// A record taken apart, whatever its bytes; fields that it is too short for are left out.
    virtual void add(const Record &record, TextBuffer &out) const = 0;
};

/// A JSON object a line.
std::unique_ptr<FrameFormat> jsonFormat();
/// Comma-separated values under one line of titles, the same columns for both frames.
std::unique_ptr<FrameFormat> csvFormat();
/// Field by field as the workbench shows them, in a language.
std::unique_ptr<FrameFormat> textFormat(Language language);
/// The digits alone, a line a frame.
std::unique_ptr<FrameFormat> hexFormat();
/// `(1732190000.123456) tx A8E5…`, a line a frame; unknown time and direction as (-) and -.
std::unique_ptr<FrameFormat> lineFormat();

/// A field of a frame as it is shown in a language.
struct ShownField
{
    QString place; ///< "4", "12～13", "S-2～S-1"
    QString name;
    QString value; ///< a number or a word, empty for bytes that stand for themselves
    QString unit;  ///< of a number
    QByteArray bytes;
};
/// The fields of a frame in wire order, as far as its bytes reach; none for an unknown one.
QVector<ShownField> shownFields(const QByteArray &frame, Language language);

/// Where a frame comes from: "上位机发送数据", "GCU返回数据" or nothing.
QString nameOf(FrameKind kind, Language language);

/// A field's engineering value: a decimal number, a mode's id, or digits.
void putValue(const protocol::Field &field, const char *at, TextBuffer &out);

/// A parameter's value.
void putParam(ParamKind kind, const char *at, TextBuffer &out);

/// What the area of a host frame comes to: its command, and whether its bytes are just what the
/// command's parameters make.
struct CommandView
{
    quint8 code = 0;
    const CommandRow *row = nullptr; ///< null for an unknown code
    bool isExact = false;
};
CommandView commandIn(const char *area, int size);

/// Calls `take(param, bytes)` for each parameter that the area is long enough for.
template <typename Take>
void forEachParam(const CommandRow &row, const char *area, int size, Take take)
{
    int offset = row.fixedByte == kNoFixedByte ? 1 : 2;
    for (int i = 0; i < paramCount(row); ++i) {
        const Param &param = row.params[std::size_t(i)];
        if (offset + paramSize(param.kind) > size)
            return;
        take(param, area + offset);
        offset += paramSize(param.kind);
    }
}

/// A result's word: "success", "failure" or, for any other, "executing".
const char *resultWord(quint8 result);

} // namespace wire
