#pragma once

#include "video/foreign.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include <memory>

/// The functions of FFmpeg that are in use, and what differs between its versions.
namespace ffmpeg {

constexpr ForeignLibrary kAvFormat{"avformat", LIBAVFORMAT_VERSION_MAJOR};
constexpr ForeignLibrary kAvCodec{"avcodec", LIBAVCODEC_VERSION_MAJOR};
constexpr ForeignLibrary kAvUtil{"avutil", LIBAVUTIL_VERSION_MAJOR};
constexpr ForeignLibrary kSwScale{"swscale", LIBSWSCALE_VERSION_MAJOR};

NACELLE_FOREIGN(kAvFormat, av_read_frame)
NACELLE_FOREIGN(kAvFormat, avformat_alloc_context)
NACELLE_FOREIGN(kAvFormat, avformat_close_input)
NACELLE_FOREIGN(kAvFormat, avformat_find_stream_info)
NACELLE_FOREIGN(kAvFormat, avformat_network_init)
NACELLE_FOREIGN(kAvFormat, avformat_open_input)
NACELLE_FOREIGN(kAvCodec, av_packet_alloc)
NACELLE_FOREIGN(kAvCodec, av_packet_free)
NACELLE_FOREIGN(kAvCodec, av_packet_unref)
NACELLE_FOREIGN(kAvCodec, avcodec_alloc_context3)
NACELLE_FOREIGN(kAvCodec, avcodec_find_decoder)
NACELLE_FOREIGN(kAvCodec, avcodec_free_context)
NACELLE_FOREIGN(kAvCodec, avcodec_open2)
NACELLE_FOREIGN(kAvCodec, avcodec_parameters_to_context)
NACELLE_FOREIGN(kAvCodec, avcodec_receive_frame)
NACELLE_FOREIGN(kAvCodec, avcodec_send_packet)
NACELLE_FOREIGN(kAvUtil, av_dict_free)
NACELLE_FOREIGN(kAvUtil, av_dict_set)
NACELLE_FOREIGN(kAvUtil, av_frame_alloc)
NACELLE_FOREIGN(kAvUtil, av_frame_free)
NACELLE_FOREIGN(kAvUtil, av_image_fill_arrays)
NACELLE_FOREIGN(kAvUtil, av_image_get_buffer_size)
NACELLE_FOREIGN(kAvUtil, av_mallocz)
NACELLE_FOREIGN(kSwScale, sws_freeContext)
NACELLE_FOREIGN(kSwScale, sws_getContext)
NACELLE_FOREIGN(kSwScale, sws_scale)

/// The releases of FFmpeg by the major version of its avformat.
struct Release
{
    int avformat;
    int ffmpeg;
};
constexpr Release kReleases[] = {{58, 4}, {59, 5}, {60, 6}, {61, 7}};

/// The release whose headers this was built with, 0 for an unknown one.
constexpr int builtWith()
{
    for (const Release &release : kReleases)
        if (release.avformat == LIBAVFORMAT_VERSION_MAJOR)
            return release.ffmpeg;
    return 0;
}
static_assert(builtWith() != 0, "of another FFmpeg nobody knows whether what is here fits it");

/// Whether all four libraries are there. Nothing else here may be called where they aren't.
inline bool isThere()
{
    const bool isThere = canLoad(kAvFormat, "avformat_version") &&
                         canLoad(kAvCodec, "avcodec_version") &&
                         canLoad(kAvUtil, "avutil_version") && canLoad(kSwScale, "swscale_version");
    if (!isThere)
        qInfo("this build plays with FFmpeg %d", builtWith());
    return isThere;
}

/// Older versions register their formats only when they are asked to.
inline void registerFormats()
{
#if LIBAVFORMAT_VERSION_INT < AV_VERSION_INT(58, 9, 100)
    foreignFunction<void (*)()>(kAvFormat, "av_register_all")();
#endif
}

/// Option for the longest silence of an RTSP server, in microseconds. In older versions "timeout"
/// meant the wait of a listening side.
#if LIBAVFORMAT_VERSION_MAJOR >= 59
constexpr char kSilenceOption[] = "timeout";
#else
constexpr char kSilenceOption[] = "stimeout";
#endif

/// Frees any of FFmpeg's objects that are owned. Without the namespace a call would go to the
/// function that isn't linked.
struct Freer
{
    void operator()(AVFormatContext *context) const { ffmpeg::avformat_close_input(&context); }
    void operator()(AVCodecContext *context) const { ffmpeg::avcodec_free_context(&context); }
    void operator()(AVFrame *frame) const { ffmpeg::av_frame_free(&frame); }
    void operator()(AVPacket *packet) const { ffmpeg::av_packet_free(&packet); }
    void operator()(SwsContext *context) const { ffmpeg::sws_freeContext(context); }
};

using FormatContext = std::unique_ptr<AVFormatContext, Freer>;
using CodecContext = std::unique_ptr<AVCodecContext, Freer>;
using Frame = std::unique_ptr<AVFrame, Freer>;
using Packet = std::unique_ptr<AVPacket, Freer>;
using Scaler = std::unique_ptr<SwsContext, Freer>;

/// A dictionary of options as `avformat_open_input` takes it.
class Options
{
public:
    Options() = default;
    Options(const Options &) = delete;
    Options &operator=(const Options &) = delete;
    ~Options() { ffmpeg::av_dict_free(&m_dictionary); }

    void set(const char *key, const char *value)
    {
        ffmpeg::av_dict_set(&m_dictionary, key, value, 0);
    }
    AVDictionary **get() { return &m_dictionary; }

private:
    AVDictionary *m_dictionary = nullptr;
};

} // namespace ffmpeg
