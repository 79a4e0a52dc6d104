#pragma once

#include "video/ffmpeg.h"

#include <QHash>
#include <QImage>
#include <QString>
#include <QThread>

#include <atomic>

/// Opens an RTSP stream, decodes its video and hands every picture to the GUI thread. It waits for
/// a camera that isn't up yet and opens a lost stream anew, without a word, until it is asked to
/// stop. Nobody deletes it: a thread that still waits for its camera lives to the end of the
/// process.
class VideoCodec : public QThread
{
    Q_OBJECT

public:
    /// `transport` is the value of FFmpeg's option "rtsp_transport"; nothing reads `flag`.
    VideoCodec(const QString &url, const QString &transport, bool flag);

    void startDecoding();
    /// Stops at once and starts with another address.
    void restart(const QString &url, const QString &transport);
    /// Terminates the thread, wherever it is.
    void stopNow();
    /// Lets the thread end after the packet in hand, from any thread. While it waits for a camera
    /// it doesn't look.
    void requestStop();

signals:
    /// A picture of `QImage::Format_RGB32`. It shares its pixels with the decoder: the next one
    /// overwrites them, and a torn picture is accepted.
    void sig_GetOneFrame(QImage);
    void sig_GetRFrame(QImage); ///< nothing emits it

protected:
    void run() override;

private:
    void runAgain();
    bool open(int *videoStream);
    bool openInput();
    bool openDecoder(int *videoStream);
    bool allocatePictures();
    void decode(int videoStream);
    bool decodePacket(const AVPacket *packet);
    bool showPicture();
    bool pictureChanged() const;
    void release();

    QString m_url;
    QString m_transport;
    bool m_released = false;
    // Released from the bottom up.
    ffmpeg::FormatContext m_format;
    ffmpeg::CodecContext m_codecContext;
    ffmpeg::Frame m_frame;
    ffmpeg::Frame m_frameRgb;
    ffmpeg::Scaler m_scaler;
    std::atomic<bool> m_stop{false};
    [[maybe_unused]] bool m_flag;
    int m_width = 0;
    int m_height = 0;
    AVPixelFormat m_sourceFormat = AV_PIX_FMT_NONE;
    /// Pixels of converted pictures by their size in bytes. Never freed, as pictures on their way
    /// to the GUI thread still point there; a stream that comes back takes them again.
    QHash<int, quint8 *> m_pixels;
};
