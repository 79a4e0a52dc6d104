#pragma once

#include <QByteArray>
#include <QVector>

namespace podsim {

/// Sizes that a host frame's length field may say: the least frame has one command byte.
constexpr int kLeastHostFrame = 72;
constexpr int kLargestHostFrame = 512;

/// Something that the reader found in its input.
struct ReaderEvent
{
    enum Kind {
        Frame,       ///< a whole frame with the right checksum, in `frame`
        BadChecksum, ///< `size` bytes whose checksum reads `found` instead of `expected`
        BadLength,   ///< a header whose length field says `size`
        Noise,       ///< `size` bytes that belong to no frame
    };
    Kind kind = Frame;
    int size = 0;
    quint16 expected = 0;
    quint16 found = 0;
    QByteArray frame;
};

/// Searches a stream for host frames, in pieces of any size. One per connection; plain data, used
/// by the thread of its owner. After a broken frame the search goes on at the byte after its
/// first one; what is passed over then, up to the next header, counts as part of the broken frame
/// and not as noise. Never holds more than one frame's bytes between two calls.
class HostReader
{
public:
    /// Takes the next bytes of the stream and returns what was found, in order.
    QVector<ReaderEvent> take(const QByteArray &chunk);

    /// Bytes of noise that no event has reported yet; the next event for noise starts from 0.
    int takeNoise();

    /// Bytes of an unfinished frame, and the length that it announces or 0 if that is not in yet.
    int pendingSize() const { return m_buffer.size(); }
    int announcedSize() const;

private:
    int frameSizeAt(int position) const;
    int passNoise(int position, QVector<ReaderEvent> &events);
    bool testFrame(int position, int size, QVector<ReaderEvent> &events);

    QByteArray m_buffer;
    int m_noise = 0;
    bool m_isInsideBroken = false;
};

} // namespace podsim
