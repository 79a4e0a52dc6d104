#pragma once

#include <QImage>
#include <QString>

#include <memory>

/// A client of an RTSP stream over TCP that decodes its pictures one by one. Waiting is limited, so
/// that a test that fails ends.
class StreamReader
{
public:
    explicit StreamReader(const QString &address);
    ~StreamReader();

    /// Whether the stream was there and holds pictures.
    bool isOpen() const;
    /// Whether the stream announces a sound track, and packets of it that have come so far.
    bool hasSound() const;
    int soundPackets() const;
    /// The next picture, in its own size and `QImage::Format_RGB32`; a null one at the stream's
    /// end.
    QImage next();

private:
    struct Stream;

    std::unique_ptr<Stream> m_stream;
};
