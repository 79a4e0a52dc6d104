#include "tools/wire/framescanner.h"

#include "protocol/fields.h"

namespace wire {

namespace {

constexpr int kLongestPiece = 4096;
constexpr int kWait = -1;

} // namespace

void FrameScanner::push(const char *bytes, int size)
{
    if (m_at > 0) {
        m_bytes.remove(0, m_at);
        m_noneBefore = qMax(0, m_noneBefore - m_at);
        m_at = 0;
    }
    m_bytes.append(bytes, size);
}

bool FrameScanner::isHeader(int at) const
{
    return kindOf(m_bytes.constData() + at, m_bytes.size() - at) != FrameKind::Unknown;
}

/// The next header, or the end; a last byte that may begin one is left for what follows.
int FrameScanner::headerFrom(int at) const
{
    const int size = m_bytes.size();
    for (; at < size; ++at) {
        const quint8 first = quint8(m_bytes[at]);
        if (first != 0xA8 && first != 0x8A)
            continue;
        if (isHeader(at) || (at + 1 == size && !m_isFinished))
            break;
    }
    return qMin(at, size);
}

/// S of the frame there, or 0 for one that no frame has or that isn't there yet.
int FrameScanner::plausibleLength(int at) const
{
    const int length = lengthOf(m_bytes.constData() + at, m_bytes.size() - at);
    return length >= kFrameOverhead && length <= kLongestScanned ? length : 0;
}

bool FrameScanner::isGood(int at) const
{
    const int length = plausibleLength(at);
    return length > 0 && isHeader(at) && at + length <= m_bytes.size() &&
           verdictOf(m_bytes.constData() + at, length) == Verdict::Ok;
}

/// The first good frame that begins there, or -1. What was found not to begin one isn't looked at
/// again: noise made of headers would take a checksum a byte, each time.
int FrameScanner::goodBetween(int from, int to)
{
    bool isKnown = true;
    for (int at = qMax(from, m_noneBefore); at < to; ++at) {
        if (isGood(at))
            return at;
        isKnown = isKnown && at + kLongestScanned <= m_bytes.size();
        if (isKnown)
            m_noneBefore = at + 1;
    }
    return -1;
}

/// Where the piece ends that begins with the header at `at`, or kWait.
int FrameScanner::endOf(int at, bool ends)
{
    if (isGood(at))
        return at + plausibleLength(at);
    const int size = m_bytes.size();
    const int length = plausibleLength(at);
    const int limit = at + (length > 0 ? length : kLongestScanned);
    const int good = goodBetween(at + 1, qMin(size, limit));
    if (good >= 0)
        return good;
    if (size < limit && !m_isFinished && !(ends && length == 0 && size - at >= kFrameOverhead))
        return kWait;
    return afterFailure(at, length, ends);
}

/// A frame without a right checksum: it ends at S where a header follows, or nothing; else with the
/// next header, for which it may have to wait.
int FrameScanner::afterFailure(int at, int length, bool ends) const
{
    const int size = m_bytes.size();
    const int next = at + length;
    if (length > 0 && (next < size ? isHeader(next) : next == size && (ends || m_isFinished)))
        return next;
    const int end = headerFrom(at + 2);
    const bool mayGoOn = end == size && !ends && !m_isFinished && size - at < kLongestScanned;
    return mayGoOn ? kWait : end;
}

bool FrameScanner::take(QByteArray &piece, bool ends)
{
    if (isEmpty())
        return false;
    int end = headerFrom(m_at);
    if (end == m_at) {
        end = m_bytes.size() - m_at < 2 && !m_isFinished ? kWait : endOf(m_at, ends);
        if (end == kWait)
            return false;
    }
    end = qMin(end, m_at + kLongestPiece);
    piece = m_bytes.mid(m_at, end - m_at);
    m_at = end;
    return true;
}

} // namespace wire
