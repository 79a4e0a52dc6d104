#include "tools/podsim/hostreader.h"

#include "tools/podsim/podcodec.h"

#include <QtEndian>

#include <utility>

namespace podsim {

namespace {

constexpr char kHeader0 = '\xA8';
constexpr char kHeader1 = '\xE5';
constexpr int kHeadSize = 4; // header and length field

/// Position of the next header at or after `from`, or of a last byte that may begin one.
int headerPosition(const QByteArray &bytes, int from)
{
    for (int i = bytes.indexOf(kHeader0, from); i >= 0; i = bytes.indexOf(kHeader0, i + 1))
        if (i + 1 == bytes.size() || bytes[i + 1] == kHeader1)
            return i;
    return bytes.size();
}

bool isSaneLength(int size)
{
    return size >= kLeastHostFrame && size <= kLargestHostFrame;
}

} // namespace

QVector<ReaderEvent> HostReader::take(const QByteArray &chunk)
{
    QVector<ReaderEvent> events;
    m_buffer.append(chunk);
    int position = passNoise(0, events);
    while (m_buffer.size() - position >= kHeadSize) {
        const int size = frameSizeAt(position);
        if (isSaneLength(size) && m_buffer.size() - position < size)
            break;
        position += testFrame(position, size, events) ? size : 1;
        position = passNoise(position, events);
    }
    m_buffer.remove(0, position);
    return events;
}

int HostReader::takeNoise()
{
    return std::exchange(m_noise, 0);
}

int HostReader::announcedSize() const
{
    return m_buffer.size() < kHeadSize ? 0 : frameSizeAt(0);
}

int HostReader::frameSizeAt(int position) const
{
    return u16At(m_buffer, position + 2);
}

int HostReader::passNoise(int position, QVector<ReaderEvent> &events)
{
    const int header = headerPosition(m_buffer, position);
    if (!m_isInsideBroken)
        m_noise += header - position;
    if (m_buffer.size() - header < 2)
        return header;
    m_isInsideBroken = false;
    if (m_noise > 0)
        events.append({ReaderEvent::Noise, takeNoise(), 0, 0, {}});
    return header;
}

bool HostReader::testFrame(int position, int size, QVector<ReaderEvent> &events)
{
    m_isInsideBroken = true;
    if (!isSaneLength(size)) {
        events.append({ReaderEvent::BadLength, size, 0, 0, {}});
        return false;
    }
    const QByteArray frame = m_buffer.mid(position, size);
    const quint16 expected = checksum(frame.constData(), size - kChecksumSize);
    const quint16 found = qFromBigEndian<quint16>(frame.constData() + size - kChecksumSize);
    if (expected != found) {
        events.append({ReaderEvent::BadChecksum, size, expected, found, {}});
        return false;
    }
    m_isInsideBroken = false;
    events.append({ReaderEvent::Frame, size, expected, found, frame});
    return true;
}

} // namespace podsim
