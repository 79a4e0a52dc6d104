#include "protocol/hostframe.h"

#include "protocol/codec.h"
#include "protocol/commands.h"

#include <type_traits>

namespace {

quint8 statusFlags(bool controlValid, bool inertialValid)
{
    quint8 flags = 0;
    setBit(&flags, kControlValidBit, controlValid);
    setBit(&flags, kInertialValidBit, inertialValid);
    return flags;
}

constexpr std::array<quint8 HostFrame::*, 2> kParams = {&HostFrame::param0, &HostFrame::param1};
constexpr std::array<quint16 HostFrame::*, 4> kWords = {&HostFrame::word0, &HostFrame::word1,
                                                        &HostFrame::word2, &HostFrame::word3};
constexpr std::array<qint32 HostFrame::*, 3> kLongs = {&HostFrame::long0, &HostFrame::long1,
                                                       &HostFrame::long2};

/// Calls `visit(offset, member)` for each element of a command's payload in wire order. A byte
/// that follows a word has no separate param: it takes the next word's place.
template <typename Visitor>
void walkPayload(const CommandRow &row, Visitor visit)
{
    std::size_t param = 0, word = 0, longWord = 0;
    int offset = kFixedSize + 1;
    const auto element = [&](int size) {
        if (size == 4)
            visit(offset, kLongs[longWord++]);
        else if (size == 2)
            visit(offset, kWords[word++]);
        else if (word > 0)
            visit(offset, kWords[word++], 1);
        else
            visit(offset, kParams[param++]);
        offset += size;
    };
    if (row.fixedByte != kNoFixedByte)
        element(1);
    for (int i = 0; i < paramCount(row); ++i)
        element(paramSize(row.params[std::size_t(i)].kind));
}

/// Fills the record's payload members from `frame`.
void readPayload(const QByteArray &frame, HostFrame &record)
{
    const CommandRow *row = findCommand(quint8(record.commandCode));
    if (!row)
        return;
    walkPayload(*row, [&](int offset, auto member, int size = 0) {
        using T = std::remove_reference_t<decltype(record.*member)>;
        record.*member = T(decodeU32(frame.mid(offset, size ? size : int(sizeof(T)))));
    });
}

/// The inverse: stores the record's payload into `frame`, as far as it reaches.
void writePayload(const HostFrame &record, QByteArray &frame)
{
    const CommandRow *row = findCommand(quint8(record.commandCode));
    if (!row)
        return;
    walkPayload(*row, [&](int offset, auto member, int size = 0) {
        using T = std::remove_cv_t<std::remove_reference_t<decltype(record.*member)>>;
        const QByteArray bytes = encodeU32(quint32(record.*member));
        const int wanted = size ? size : int(sizeof(T));
        for (int i = 0; i < wanted && offset + i < frame.size(); ++i)
            frame[offset + i] = bytes.at(i);
    });
}

} // namespace

void parseHostFrame(const QByteArray &bytes, HostFrame &record)
{
    readMembers(kHostRows, bytes, record);
    const quint8 flags = byteAt(bytes, kFlagsOffset);
    record.controlValid = flags & (1 << kControlValidBit);
    record.inertialValid = flags & (1 << kInertialValidBit);
    record.commandCode = byteAt(bytes, kFixedSize);
    record.commandName = commandNameGbk(quint8(record.commandCode));
    readPayload(bytes, record);
    computeCrc(bytes, record);
}

quint16 packHostFrame(const HostFrame &record, QByteArray &bytes)
{
    writeMembers(kHostRows, record, bytes);
    if (kFlagsOffset < bytes.size())
        bytes[kFlagsOffset] = char(statusFlags(record.controlValid, record.inertialValid));
    if (kFixedSize < bytes.size())
        bytes[kFixedSize] = char(record.commandCode);
    writePayload(record, bytes);
    if (record.length >= kCrcSize && record.length <= bytes.size()) {
        const quint16 crc = crc16Of(bytes.left(record.length - kCrcSize));
        bytes[record.length - 2] = char(crc >> 8);
        bytes[record.length - 1] = char(crc);
    }
    return record.length;
}

QByteArray buildHostFrame(const HostTexts &texts)
{
    QByteArray frame;
    frame.reserve(kFrameOverhead + 16);
    for (std::size_t i = 0; i < kHostRows.size(); ++i) {
        const protocol::Field &field = kHostRows[i].field;
        if (field.kind == FieldKind::Flags)
            frame.append(char(statusFlags(texts.controlValid, texts.inertialValid)));
        else if (field.kind == FieldKind::Command)
            frame.append(hexTextToBytes(texts.command));
        else if (field.kind != FieldKind::Crc)
            frame.append(fieldBytes(field, texts.values[i]));
    }
    appendCrc(frame);
    return frame;
}
