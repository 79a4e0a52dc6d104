#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <limits>

// What a recording consists of, and what can be said of a frame without taking it apart.

namespace wire {

/// A time that isn't known.
constexpr qint64 kNoTime = std::numeric_limits<qint64>::min();

/// As the bench sees it: sent to the pod, received from it.
enum class Direction : quint8 { Unknown, Tx, Rx };

/// A frame, or bytes between frames, as they stood on the wire.
struct Record
{
    qint64 time = kNoTime; ///< microseconds since 1970 began in UTC
    Direction direction = Direction::Unknown;
    QByteArray bytes;
};

/// What a recording names as the place that it comes from.
struct Origin
{
    QString link; ///< as it was given, "" for none
    QString peer;
    QString tool; ///< name and version
};

enum class FrameKind : quint8 { Unknown, Host, Gcu };
enum class Verdict : quint8 { Ok, Bad, None };

/// The kind that the first two bytes say, whatever follows them.
FrameKind kindOf(const char *bytes, int size);
FrameKind kindOf(const QByteArray &bytes);

/// S as the frame says it, signed; 0 where the two bytes aren't there.
int lengthOf(const char *bytes, int size);

/// Whether the bytes at S - 2 are the checksum of those before them; `None` where they aren't
/// there. As for the bench one byte counts what it covers: of a longer frame 256 bytes or their
/// multiple are left away, and by that rule such a frame is made too.
Verdict verdictOf(const char *bytes, int size);
Verdict verdictOf(const QByteArray &bytes);

/// "tx" and "rx", empty for an unknown one; and back.
const char *wordOf(Direction direction);
Direction directionOf(const QByteArray &word);

/// "host", "gcu", "unknown"; "ok", "bad", "none".
const char *wordOf(FrameKind kind);
const char *wordOf(Verdict verdict);

/// The direction that a frame has on every link: host frames are sent, GCU frames received.
Direction usualDirection(FrameKind kind);

} // namespace wire
