#pragma once

#include "tools/podsim/podgeometry.h"

#include <QByteArray>
#include <QtGlobal>

// The two frames of the GCU private protocol as the pod sees them: the host frame comes in, the
// GCU frame goes out. These are the pod's own few lines, written apart from the bench's library,
// so that the two prove each other.

namespace podsim {

/// Bytes of either frame before its variable area.
constexpr int kFixedSize = 69;
/// Bytes of the checksum at the end of either frame.
constexpr int kChecksumSize = 2;

/// CRC-16/XMODEM: polynomial 0x1021, initial value 0, nothing reflected, no final XOR.
quint16 checksum(const char *data, int size);

/// The little-endian number at `offset`; the caller sees to it that the bytes are there.
quint16 u16At(const QByteArray &bytes, int offset);
qint16 i16At(const QByteArray &bytes, int offset);
qint32 i32At(const QByteArray &bytes, int offset);

/// Appends the two checksum bytes over all of `frame`, high byte first.
void appendChecksum(QByteArray &frame);

/// The control inputs of a host frame, in wire units, and whether they count.
struct ControlInput
{
    qint16 roll = 0;
    qint16 pitch = 0;
    qint16 yaw = 0;
    bool isValid = false;
};

/// What the pod takes from a host frame.
struct HostFrame
{
    ControlInput control;
    bool inertialValid = false;
    Angles attitude;          ///< of the carrier, degrees
    bool hasPosition = false; ///< the sub-frame with the position block is there
    GeoPoint position;        ///< of the carrier
    QByteArray command;       ///< the command area: code, then payload; never empty
};

/// Reads a whole, tested frame of at least 72 bytes.
HostFrame decodeHostFrame(const QByteArray &frame);

/// What the pod reports in a GCU frame, in wire units: hundredths of a degree, tenths of a degree a
/// second, tenths of a metre, 1e-7 degrees, millimetres, tenths of a zoom ratio.
struct GcuReport
{
    quint8 mode = 0;
    quint8 flags[2] = {0, 0};
    qint16 missHorizontal = 0;
    qint16 missVertical = 0;
    qint16 relativeX = 0;
    qint16 relativeY = 0;
    qint16 relativeZ = 0;
    qint16 absoluteRoll = 0;
    qint16 absolutePitch = 0;
    quint16 absoluteYaw = 0;
    qint16 rateX = 0;
    qint16 rateY = 0;
    qint16 rateZ = 0;
    qint32 targetDistance = 0;
    qint32 targetLongitude = 0;
    qint32 targetLatitude = 0;
    qint32 targetAltitude = 0;
    quint16 zoom1 = 0;
    quint16 zoom2 = 0;
};

/// A whole GCU frame of 71 bytes plus those of `feedback`, which may be empty.
QByteArray encodeGcuFrame(const GcuReport &report, const QByteArray &feedback);

} // namespace podsim
