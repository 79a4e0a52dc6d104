#include "bench/baredecoder.h"

namespace {

constexpr const char *kOptions[][2] = {
    {"rtsp_transport", "tcp"},      {"fflags", "nobuffer"}, {"probesize", "512000"},
    {"analyzeduration", "5000000"}, {"fpsprobesize", "0"},
};

} // namespace

BareDecoder::~BareDecoder()
{
    m_stop = true;
    wait();
}

void BareDecoder::run()
{
    if (open())
        decode();
    m_format.reset(); // the server's other end is free as soon as the thread is
}

bool BareDecoder::open()
{
    ffmpeg::Options options;
    for (const auto &[key, value] : kOptions)
        options.set(key, value);
    AVFormatContext *context = nullptr;
    if (ffmpeg::avformat_open_input(&context, m_url.toUtf8().constData(), nullptr, options.get()))
        return false;
    m_format.reset(context);
    if (ffmpeg::avformat_find_stream_info(context, nullptr) < 0)
        return false;
    for (unsigned i = 0; i < context->nb_streams && m_stream < 0; ++i)
        if (context->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
            m_stream = int(i);
    if (m_stream < 0)
        return false;
    const AVCodecParameters *stream = context->streams[m_stream]->codecpar;
    const AVCodec *codec = ffmpeg::avcodec_find_decoder(stream->codec_id);
    m_codec.reset(ffmpeg::avcodec_alloc_context3(codec));
    m_frame.reset(ffmpeg::av_frame_alloc());
    ffmpeg::avcodec_parameters_to_context(m_codec.get(), stream);
    m_pixels = QImage(stream->width, stream->height, QImage::Format_RGB32);
    m_scaler.reset(ffmpeg::sws_getContext(stream->width, stream->height, m_codec->pix_fmt,
                                          stream->width, stream->height, AV_PIX_FMT_BGRA,
                                          SWS_BICUBIC, nullptr, nullptr, nullptr));
    return m_scaler && ffmpeg::avcodec_open2(m_codec.get(), codec, nullptr) == 0;
}

void BareDecoder::decode()
{
    const ffmpeg::Packet packet(ffmpeg::av_packet_alloc());
    while (!m_stop && ffmpeg::av_read_frame(m_format.get(), packet.get()) >= 0) {
        if (packet->stream_index == m_stream)
            ffmpeg::avcodec_send_packet(m_codec.get(), packet.get());
        ffmpeg::av_packet_unref(packet.get());
        while (ffmpeg::avcodec_receive_frame(m_codec.get(), m_frame.get()) >= 0)
            convert();
    }
}

void BareDecoder::convert()
{
    quint8 *const lines[] = {m_pixels.bits()};
    const int strides[] = {m_pixels.bytesPerLine()};
    ffmpeg::sws_scale(m_scaler.get(), m_frame->data, m_frame->linesize, 0, m_frame->height, lines,
                      strides);
    emit decoded(
        QImage(lines[0], m_pixels.width(), m_pixels.height(), strides[0], m_pixels.format()));
}
