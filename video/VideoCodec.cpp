#include "video/VideoCodec.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <exception>

namespace {

constexpr AVPixelFormat kPictureFormat = AV_PIX_FMT_BGRA; // the bytes of QImage::Format_RGB32
constexpr int kUnpadded = 1;
constexpr unsigned long kRetrySeconds = 1;
constexpr unsigned long kPauseMs = 1;
constexpr int kDeepest = 1000; // calls of some 200 bytes each; the smallest stack has a megabyte
constexpr qint64 kAnalyzeMicroseconds = 5000000;

bool fails(const char *message)
{
    std::printf("%s\n", message);
    return false;
}

/// Gives the GUI thread time for the picture, and then lets the events in that have come meanwhile.
/// One sleep: it isn't the pause that costs, but each waking up.
void pause()
{
    QThread::msleep(kPauseMs);
    QCoreApplication::processEvents(QEventLoop::AllEvents, int(kPauseMs));
}

} // namespace

VideoCodec::VideoCodec(const QString &url, const QString &transport, bool flag)
    : m_url(url), m_transport(transport), m_flag(flag)
{
}

void VideoCodec::startDecoding()
{
    start(InheritPriority);
}

void VideoCodec::restart(const QString &url, const QString &transport)
{
    stopNow();
    m_url = url;
    m_transport = transport;
    start(InheritPriority);
}

void VideoCodec::stopNow()
{
    if (!isRunning())
        return;
    terminate();
    release();
}

void VideoCodec::requestStop()
{
    m_stop = true;
}

/// Each opening nests one call deeper: what runs in a call stands in separate functions, so that
/// a level costs the stack next to nothing.
void VideoCodec::run()
{
    try {
        if (!ffmpeg::isThere()) {
            fails("FFmpeg not found.");
            return; // it won't come
        }
        int videoStream = -1;
        if (open(&videoStream)) {
            decode(videoStream);
            release();
            if (!m_stop)
                runAgain();
            return;
        }
        release();
        if (m_stop)
            return;
        sleep(kRetrySeconds);
        runAgain();
    } catch (...) {
        // What is no exception of the language is a terminated thread on its way out.
        if (!std::current_exception())
            throw;
    }
}

/// A call of `run` has nothing left to do after the one in it. So the calls can all return to the
/// outermost before the stack ends, and go on from there: openings without a bound, as far as can
/// be seen. The counts are the thread's, since one that is terminated leaves them as they are.
void VideoCodec::runAgain()
{
    thread_local int depth = 0;
    thread_local bool isCutShort = false;
    if (depth == kDeepest) {
        isCutShort = true;
        return;
    }
    ++depth;
    do {
        isCutShort = false;
        run();
    } while (isCutShort && depth == 1);
    --depth;
}

bool VideoCodec::open(int *videoStream)
{
    m_released = false;
    ffmpeg::avformat_network_init();
    return openInput() && openDecoder(videoStream) && allocatePictures();
}

/// Waits as long as it takes for the camera, whatever is asked meanwhile.
bool VideoCodec::openInput()
{
    ffmpeg::Options options;
    options.set("rtsp_transport", m_transport.toLatin1().constData());
    options.set(ffmpeg::kSilenceOption, "5000000");
    options.set("fflags", "nobuffer");
    options.set("probesize", "512000");
    const QByteArray address = m_url.toLocal8Bit();
    ffmpeg::registerFormats();
    // What a failed attempt has left goes here, and not before.
    m_format.reset(ffmpeg::avformat_alloc_context());
    for (;;) {
        AVFormatContext *context = m_format.release(); // freed by a call that fails
        const int result =
            ffmpeg::avformat_open_input(&context, address.constData(), nullptr, options.get());
        m_format.reset(context);
        if (result == 0)
            break;
        sleep(kRetrySeconds);
    }
    m_format->max_analyze_duration = kAnalyzeMicroseconds;
    m_format->fps_probe_size = 0;
    if (ffmpeg::avformat_find_stream_info(m_format.get(), nullptr) < 0)
        return fails("Couldn't find stream information.");
    return true;
}

bool VideoCodec::openDecoder(int *videoStream)
{
    AVStream **const end = m_format->streams + m_format->nb_streams;
    AVStream **const video = std::find_if(m_format->streams, end, [](const AVStream *stream) {
        return stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
    });
    if (video == end)
        return fails("Didn't find a video stream.");
    *videoStream = (*video)->index;

    const AVCodec *codec = ffmpeg::avcodec_find_decoder((*video)->codecpar->codec_id);
    m_codecContext.reset(ffmpeg::avcodec_alloc_context3(codec));
    if (!codec ||
        ffmpeg::avcodec_parameters_to_context(m_codecContext.get(), (*video)->codecpar) < 0)
        return fails("Codec not found.");
    if (ffmpeg::avcodec_open2(m_codecContext.get(), codec, nullptr) < 0)
        return fails("Could not open codec.");
    return true;
}

bool VideoCodec::allocatePictures()
{
    m_frame.reset(ffmpeg::av_frame_alloc());
    m_frameRgb.reset(ffmpeg::av_frame_alloc());
    m_width = m_codecContext->width;
    m_height = m_codecContext->height;
    m_sourceFormat = m_codecContext->pix_fmt;
    const int size = ffmpeg::av_image_get_buffer_size(kPictureFormat, m_width, m_height, kUnpadded);
    if (size <= 0 || m_sourceFormat == AV_PIX_FMT_NONE)
        return false;
    quint8 *&pixels = m_pixels[size];
    if (!pixels) // the scaler writes whole vectors, and so past the end of the last line
        pixels = static_cast<quint8 *>(
            ffmpeg::av_mallocz(std::size_t(size) + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!pixels || !m_frame || !m_frameRgb)
        return false;
    ffmpeg::av_image_fill_arrays(m_frameRgb->data, m_frameRgb->linesize, pixels, kPictureFormat,
                                 m_width, m_height, kUnpadded);
    m_scaler.reset(ffmpeg::sws_getContext(m_width, m_height, m_sourceFormat, m_width, m_height,
                                          kPictureFormat, SWS_BICUBIC, nullptr, nullptr, nullptr));
    m_released = false;
    return true;
}

void VideoCodec::decode(int videoStream)
{
    const ffmpeg::Packet packet(ffmpeg::av_packet_alloc());
    while (packet && ffmpeg::av_read_frame(m_format.get(), packet.get()) >= 0) {
        const bool good = packet->stream_index != videoStream || decodePacket(packet.get());
        ffmpeg::av_packet_unref(packet.get());
        if (!good || m_stop)
            break;
    }
}

/// False on a decoding error and on a change of the picture, which both lead to a new opening.
bool VideoCodec::decodePacket(const AVPacket *packet)
{
    if (ffmpeg::avcodec_send_packet(m_codecContext.get(), packet) < 0)
        return false;
    int result = 0;
    while ((result = ffmpeg::avcodec_receive_frame(m_codecContext.get(), m_frame.get())) >= 0) {
        if (!showPicture())
            return false;
    }
    return result == AVERROR(EAGAIN);
}

bool VideoCodec::showPicture()
{
    if (pictureChanged())
        return false; // the scaler and its buffer are made for the old one
    if (m_scaler)
        ffmpeg::sws_scale(m_scaler.get(), m_frame->data, m_frame->linesize, 0, m_height,
                          m_frameRgb->data, m_frameRgb->linesize);
    emit sig_GetOneFrame(QImage(m_frameRgb->data[0], m_width, m_height, m_frameRgb->linesize[0],
                                QImage::Format_RGB32));
    pause();
    return true;
}

bool VideoCodec::pictureChanged() const
{
    return m_codecContext->width != m_width || m_codecContext->height != m_height ||
           m_frame->width != m_width || m_frame->height != m_height ||
           m_frame->format != m_sourceFormat;
}

/// In this order. A failed opening has no scaler yet, and what it made stays for the next one.
void VideoCodec::release()
{
    if (m_released || !m_scaler)
        return;
    m_scaler.reset();
    m_frameRgb.reset();
    m_frame.reset();
    m_codecContext.reset();
    m_format.reset();
    m_released = true;
}
