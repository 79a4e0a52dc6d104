#pragma once

#include "tools/wire/record.h"

#include <QByteArray>

namespace wire {

/// S of the longest frame that the scanner believes: one byte counts what the checksum covers.
constexpr int kLongestScanned = 257;

/// Cuts the bytes of one direction of a stream into frames: headers are searched and checksums
/// looked at, so that it finds its way again after noise and lying lengths. All that goes in comes
/// out, in order: frames, frames with a wrong checksum or length, and what stands between them.
class FrameScanner
{
public:
    void push(const char *bytes, int size);
    /// Says that nothing more will come, so that nothing is waited for.
    void finish() { m_isFinished = true; }
    /// The next piece, false when more has to be pushed first. With `ends`, the bytes end where a
    /// frame does: a wrong checksum there is a wrong frame, and nothing is waited for to see that.
    bool take(QByteArray &piece, bool ends);
    bool isEmpty() const { return m_at == m_bytes.size(); }

private:
    bool isHeader(int at) const;
    int headerFrom(int at) const;
    int plausibleLength(int at) const;
    bool isGood(int at) const;
    int goodBetween(int from, int to);
    int endOf(int at, bool ends);
    int afterFailure(int at, int length, bool ends) const;

    QByteArray m_bytes;
    int m_at = 0;
    int m_noneBefore = 0; ///< no good frame begins before
    bool m_isFinished = false;
};

} // namespace wire
