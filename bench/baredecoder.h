#pragma once

#include "video/ffmpeg.h"

#include <QImage>
#include <QString>
#include <QThread>

#include <atomic>

/// A thread that reads, decodes and converts an RTSP stream over TCP and does nothing else: what a
/// picture costs at the least. It takes a stream that is there and ends with its first error. The
/// one who made it owns it.
class BareDecoder : public QThread
{
    Q_OBJECT

public:
    explicit BareDecoder(const QString &url) : m_url(url) {}
    /// Ends the thread after the packet in hand.
    ~BareDecoder() override;

signals:
    /// A picture of `QImage::Format_RGB32`. Its pixels are the decoder's, which the next one
    /// overwrites: they end with the decoder.
    void decoded(QImage picture);

protected:
    void run() override;

private:
    bool open();
    void decode();
    void convert();

    const QString m_url;
    std::atomic<bool> m_stop{false};
    ffmpeg::FormatContext m_format;
    ffmpeg::CodecContext m_codec;
    ffmpeg::Frame m_frame;
    ffmpeg::Scaler m_scaler;
    QImage m_pixels;
    int m_stream = -1;
};
