#include "tools/podsim/podcodec.h"

namespace podsim {

namespace {

constexpr quint8 kProtocolVersion = 1;
constexpr quint8 kSubFrameHeader = 1;
constexpr quint8 kHardwareVersion = 1;
constexpr quint8 kFirmwareVersion = 1;
constexpr quint8 kPodCode = 1;

void put8(QByteArray &bytes, quint8 value)
{
    bytes.append(char(value));
}

void put16(QByteArray &bytes, int value)
{
    put8(bytes, quint8(value));
    put8(bytes, quint8(value >> 8));
}

void put32(QByteArray &bytes, qint32 value)
{
    put16(bytes, value);
    put16(bytes, value >> 16);
}

quint8 u8At(const QByteArray &bytes, int offset)
{
    return quint8(bytes[offset]);
}

void putTurning(QByteArray &frame, const GcuReport &r)
{
    for (const int value :
         {int(r.missHorizontal), int(r.missVertical), int(r.relativeX), int(r.relativeY),
          int(r.relativeZ), int(r.absoluteRoll), int(r.absolutePitch), int(r.absoluteYaw),
          int(r.rateX), int(r.rateY), int(r.rateZ)})
        put16(frame, value);
}

void putSubFrame(QByteArray &frame, const GcuReport &r)
{
    for (const quint8 value : {kSubFrameHeader, kHardwareVersion, kFirmwareVersion, kPodCode})
        put8(frame, value);
    put16(frame, 0); // fault code
    for (const qint32 value :
         {r.targetDistance, r.targetLongitude, r.targetLatitude, r.targetAltitude})
        put32(frame, value);
    put16(frame, r.zoom1);
    put16(frame, r.zoom2);
}

} // namespace

quint16 checksum(const char *data, int size)
{
    quint16 crc = 0;
    for (int i = 0; i < size; ++i) {
        crc = quint16(crc ^ (quint8(data[i]) << 8));
        for (int bit = 0; bit < 8; ++bit)
            crc = quint16((crc << 1) ^ ((crc & 0x8000) != 0 ? 0x1021 : 0));
    }
    return crc;
}

quint16 u16At(const QByteArray &bytes, int offset)
{
    return quint16(u8At(bytes, offset) | (u8At(bytes, offset + 1) << 8));
}

qint16 i16At(const QByteArray &bytes, int offset)
{
    return qint16(u16At(bytes, offset));
}

qint32 i32At(const QByteArray &bytes, int offset)
{
    const quint32 high = u16At(bytes, offset + 2);
    return qint32(u16At(bytes, offset) | (high << 16));
}

void appendChecksum(QByteArray &frame)
{
    const quint16 crc = checksum(frame.constData(), frame.size());
    put8(frame, quint8(crc >> 8));
    put8(frame, quint8(crc));
}

HostFrame decodeHostFrame(const QByteArray &frame)
{
    HostFrame host;
    const quint8 flags = u8At(frame, 11);
    host.control = {i16At(frame, 5), i16At(frame, 7), i16At(frame, 9), (flags & 0x04) != 0};
    host.inertialValid = (flags & 0x01) != 0;
    host.attitude = {i16At(frame, 12) / 100.0, i16At(frame, 14) / 100.0, u16At(frame, 16) / 100.0};
    host.hasPosition = u8At(frame, 37) == kSubFrameHeader;
    host.position = {i32At(frame, 38) / 1e7, i32At(frame, 42) / 1e7, i32At(frame, 46) / 1e3};
    host.command = frame.mid(kFixedSize, frame.size() - kFixedSize - kChecksumSize);
    return host;
}

QByteArray encodeGcuFrame(const GcuReport &report, const QByteArray &feedback)
{
    QByteArray frame("\x8A\x5E", 2);
    put16(frame, kFixedSize + feedback.size() + kChecksumSize);
    for (const quint8 value : {kProtocolVersion, report.mode, report.flags[0], report.flags[1]})
        put8(frame, value);
    putTurning(frame, report);
    frame.append(7, '\0');
    putSubFrame(frame, report);
    frame.append(6, '\0');
    frame.append(feedback);
    appendChecksum(frame);
    return frame;
}

} // namespace podsim
