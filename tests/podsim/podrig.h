#pragma once

#include "tests/podsim/podprocess.h"
#include "tests/podsim/testhost.h"

#include <QTemporaryDir>

#include <memory>

// Frames written out, and a pod with a host to exchange them.

inline QByteArray bytes(const QByteArray &hex)
{
    return QByteArray::fromHex(hex);
}

inline QByteArray hex(const QByteArray &data)
{
    return data.toHex(' ').toUpper();
}

inline QByteArray zeros(int count)
{
    return QByteArray(count, '\0');
}

/// The host's empty command, 72 bytes, without a position block.
inline const QByteArray kEmpty =
    bytes("A8 E5 48 00 01") + zeros(25) + bytes("01") + zeros(39) + bytes("28 B2");

/// A host frame with valid inertial data, a carrier at 170.9175332 east, 38.0300822 north and
/// 41.123 m, and all controls at zero. `tail` is the command area with the checksum.
QByteArray hostFrame(const QByteArray &length, const QByteArray &tail);

inline const QByteArray kIdle = hostFrame("48", "00 0B 2F");
inline const QByteArray kPhoto = hostFrame("49", "20 01 E8 B5");
inline const QByteArray kRecord = hostFrame("49", "21 01 DB 84");

inline const QByteArray kNowhere = "00 00 00 00 00 00 00 00 00 00 00 00";
inline const QByteArray kPlace = "24 F2 DF 65 16 EE AA 16 A3 A0 00 00";

/// An answer of a pod that looks ahead in follow mode with both zooms at 1.0 and the OSD on.
/// `place` is the carrier's, which is the target's, and `tail` the feedback area with the
/// checksum.
QByteArray answer(const QByteArray &length, const QByteArray &place, const QByteArray &tail);

inline const QByteArray kEmptyAnswer = answer("47", kNowhere, "6E 0C");
inline const QByteArray kIdleAnswer = answer("47", kPlace, "F3 91");
inline const QByteArray kPhotoAnswer = answer("49", kPlace, "20 00 B3 30");

constexpr int kPlainSize = 71;
constexpr int kFeedbackSize = 73;

/// A pod with one host on one kind of link: "tcp", "udp" or "pty".
struct Rig
{
    Rig(const QByteArray &kind, const QStringList &options);

    QTemporaryDir directory;
    std::unique_ptr<PodProcess> pod;
    std::unique_ptr<TestHost> host;

private:
    void start(const QStringList &link, const QStringList &options);
};
