#include "tests/support/streamreader.h"

#include <QDeadlineTimer>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace {

constexpr int kLimitMs = 20000;

struct Deleter
{
    void operator()(AVFormatContext *format) const { avformat_close_input(&format); }
    void operator()(AVCodecContext *codec) const { avcodec_free_context(&codec); }
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
    void operator()(SwsContext *scaler) const { sws_freeContext(scaler); }
};
template <typename T>
using Handle = std::unique_ptr<T, Deleter>;

int isOver(void *deadline)
{
    return static_cast<QDeadlineTimer *>(deadline)->hasExpired() ? 1 : 0;
}

QImage imageOf(const AVFrame &frame)
{
    QImage image(frame.width, frame.height, QImage::Format_RGB32);
    const Handle<SwsContext> scaler(sws_getContext(
        frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), frame.width,
        frame.height, AV_PIX_FMT_BGRA, SWS_POINT, nullptr, nullptr, nullptr));
    uint8_t *const lines[] = {image.bits()};
    const int strides[] = {image.bytesPerLine()};
    sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, lines, strides);
    return image;
}

} // namespace

struct StreamReader::Stream
{
    bool open(const QString &address);
    bool openDecoder();
    bool readPacket();

    QDeadlineTimer deadline{kLimitMs};
    Handle<AVFormatContext> format;
    Handle<AVCodecContext> decoder;
    Handle<AVPacket> packet{av_packet_alloc()};
    Handle<AVFrame> frame{av_frame_alloc()};
    int video = -1;
    int sound = -1;
    int soundPackets = 0;
};

bool StreamReader::Stream::open(const QString &address)
{
    AVDictionary *options = nullptr;
    av_dict_set(&options, "rtsp_transport", "tcp", 0);
    AVFormatContext *context = avformat_alloc_context();
    context->interrupt_callback = {isOver, &deadline};
    const int result =
        avformat_open_input(&context, address.toUtf8().constData(), nullptr, &options);
    av_dict_free(&options);
    format.reset(result == 0 ? context : nullptr);
    return result == 0 && openDecoder();
}

/// From the session's description alone: pictures are decoded from the first one on.
bool StreamReader::Stream::openDecoder()
{
    video = av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    sound = av_find_best_stream(format.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (video < 0)
        return false;
    const AVCodecParameters *parameters = format->streams[video]->codecpar;
    const AVCodec *codec = avcodec_find_decoder(parameters->codec_id);
    decoder.reset(avcodec_alloc_context3(codec));
    decoder->flags |= AV_CODEC_FLAG_LOW_DELAY;
    avcodec_parameters_to_context(decoder.get(), parameters);
    return avcodec_open2(decoder.get(), codec, nullptr) == 0;
}

/// Hands the next packet to the decoder, or counts it.
bool StreamReader::Stream::readPacket()
{
    av_packet_unref(packet.get());
    if (av_read_frame(format.get(), packet.get()) < 0)
        return false;
    if (packet->stream_index == sound)
        ++soundPackets;
    if (packet->stream_index == video)
        avcodec_send_packet(decoder.get(), packet.get());
    return true;
}

StreamReader::StreamReader(const QString &address) : m_stream(std::make_unique<Stream>())
{
    if (!m_stream->open(address))
        m_stream->decoder.reset();
}

StreamReader::~StreamReader() = default;

bool StreamReader::isOpen() const
{
    return m_stream->decoder != nullptr;
}

bool StreamReader::hasSound() const
{
    return m_stream->sound >= 0;
}

int StreamReader::soundPackets() const
{
    return m_stream->soundPackets;
}

QImage StreamReader::next()
{
    if (!isOpen())
        return {};
    m_stream->deadline.setRemainingTime(kLimitMs);
    while (avcodec_receive_frame(m_stream->decoder.get(), m_stream->frame.get()) != 0)
        if (!m_stream->readPacket())
            return {};
    return imageOf(*m_stream->frame);
}
