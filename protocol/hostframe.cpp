#include "protocol/hostframe.h"

#include "protocol/codec.h"
#include "protocol/commands.h"

namespace {

quint8 statusFlags(bool controlValid, bool inertialValid)
{
    quint8 flags = 0;
    setBit(&flags, kControlValidBit, controlValid);
    setBit(&flags, kInertialValidBit, inertialValid);
    return flags;
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
        const Field &field = kHostRows[i].field;
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
