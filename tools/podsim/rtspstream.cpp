#include "tools/podsim/rtspstream.h"

#include <QStringList>

#include <utility>

namespace podsim {

namespace {

constexpr char kPath[] = "/pod";
constexpr char kCameraName[] = "camera";
constexpr char kMicrophoneName[] = "microphone";

// BT.601, which decoders take for granted that don't look; no picture waits for another.
constexpr char kPictures[] =
    "appsrc name=camera is-live=true format=time do-timestamp=true max-buffers=2 "
    "leaky-type=downstream ! videoconvert ! video/x-raw,format=I420,colorimetry=bt601 ! "
    "x264enc tune=zerolatency speed-preset=ultrafast bitrate=4000 key-int-max=30 threads=1 ! "
    "rtph264pay name=pay0 pt=96 config-interval=-1 aggregate-mode=zero-latency";
constexpr char kSound[] = " appsrc name=microphone is-live=true format=time do-timestamp=true "
                          "caps=audio/x-mulaw,rate=8000,channels=1 ! rtppcmupay name=pay1";
constexpr const char *kElements[] = {"appsrc", "videoconvert", "x264enc", "rtph264pay",
                                     "rtppcmupay"};

/// An element that no plug-in of this machine has, or empty.
QString missingElement()
{
    for (const char *name : kElements) {
        const ObjectPtr<GstElementFactory> factory(gst_element_factory_find(name));
        if (!factory)
            return QLatin1String(name);
    }
    return {};
}

ObjectPtr<GstElement> elementOf(GstRTSPMedia *media, const char *name)
{
    const ObjectPtr<GstElement> pipeline(gst_rtsp_media_get_element(media));
    return ObjectPtr<GstElement>(gst_bin_get_by_name_recurse_up(GST_BIN(pipeline.get()), name));
}

GstRTSPFilterResult removeClient(GstRTSPServer *, GstRTSPClient *, gpointer)
{
    return GST_RTSP_FILTER_REMOVE;
}

gboolean removeClients(gpointer server)
{
    GList *rest = gst_rtsp_server_client_filter(GST_RTSP_SERVER(server), removeClient, nullptr);
    g_list_free_full(rest, g_object_unref);
    return G_SOURCE_REMOVE;
}

gboolean quitLoop(gpointer loop)
{
    g_main_loop_quit(static_cast<GMainLoop *>(loop));
    return G_SOURCE_REMOVE;
}

} // namespace

RtspStream::RtspStream(const PodOptions &options, const PodSnapshot &snapshot)
    : m_feed(options.stream, snapshot), m_address(options.address.toString()),
      m_context(g_main_context_new()), m_loop(g_main_loop_new(m_context, FALSE)),
      m_server(gst_rtsp_server_new())
{
    const QByteArray port = QByteArray::number(options.stream.port.value_or(0));
    gst_rtsp_server_set_address(m_server.get(), m_address.toLatin1().constData());
    gst_rtsp_server_set_service(m_server.get(), port.constData());
    const ObjectPtr<GstRTSPThreadPool> threads(gst_rtsp_server_get_thread_pool(m_server.get()));
    gst_rtsp_thread_pool_set_max_threads(threads.get(), 0); // clients live in the server's thread
    addFactory(options.stream);
    m_thread = std::thread([this] {
        g_main_context_push_thread_default(m_context);
        g_main_loop_run(m_loop);
        g_main_context_pop_thread_default(m_context);
    });
}

RtspStream::~RtspStream()
{
    close();
    callInThread(quitLoop, m_loop);
    m_thread.join();
    m_server.reset();
    g_main_loop_unref(m_loop);
    g_main_context_unref(m_context);
}

void RtspStream::addFactory(const StreamOptions &options)
{
    const QByteArray pipeline =
        QByteArray("( ") + kPictures + (options.hasSound ? kSound : "") + " )";
    GstRTSPMediaFactory *factory = gst_rtsp_media_factory_new();
    gst_rtsp_media_factory_set_launch(factory, pipeline.constData());
    gst_rtsp_media_factory_set_shared(factory, TRUE);
    g_signal_connect(factory, "media-configure", G_CALLBACK(takeMedia), this);
    const ObjectPtr<GstRTSPMountPoints> mounts(gst_rtsp_server_get_mount_points(m_server.get()));
    gst_rtsp_mount_points_add_factory(mounts.get(), kPath, factory); // takes the factory
}

/// Has the server's thread call a function, after those that it was given before.
void RtspStream::callInThread(GSourceFunc function, gpointer argument)
{
    GSource *source = g_idle_source_new();
    g_source_set_callback(source, function, argument, nullptr);
    g_source_attach(source, m_context);
    g_source_unref(source);
}

void RtspStream::takeMedia(GstRTSPMediaFactory *, GstRTSPMedia *media, gpointer self)
{
    g_signal_connect(media, "unprepared", G_CALLBACK(leaveMedia), self);
    static_cast<RtspStream *>(self)->m_feed.attach(elementOf(media, kCameraName),
                                                   elementOf(media, kMicrophoneName));
}

void RtspStream::leaveMedia(GstRTSPMedia *media, gpointer self)
{
    static_cast<RtspStream *>(self)->m_feed.detach(elementOf(media, kCameraName));
}

QString RtspStream::open()
{
    if (m_listener)
        return {};
    const QString missing = missingElement();
    if (!missing.isEmpty())
        return QStringLiteral("cannot open %1: GStreamer has no %2").arg(where(), missing);
    GError *error = nullptr;
    m_listener = gst_rtsp_server_create_source(m_server.get(), nullptr, &error);
    if (!m_listener) {
        const QString reason = QString::fromUtf8(error->message);
        g_error_free(error);
        return QStringLiteral("cannot open %1: %2").arg(where(), reason);
    }
    g_source_attach(m_listener, m_context);
    const QByteArray port = QByteArray::number(gst_rtsp_server_get_bound_port(m_server.get()));
    gst_rtsp_server_set_service(m_server.get(), port.constData()); // the same at the next time
    return {};
}

QString RtspStream::where() const
{
    gchar *port = gst_rtsp_server_get_service(m_server.get());
    const QString text =
        QStringLiteral("rtsp %1:%2%3").arg(m_address, QLatin1String(port), QLatin1String(kPath));
    g_free(port);
    return text;
}

void RtspStream::drop()
{
    callInThread(removeClients, m_server.get());
}

void RtspStream::close()
{
    if (m_listener) {
        g_source_destroy(m_listener);
        g_source_unref(std::exchange(m_listener, nullptr));
    }
    m_feed.setFrozen(false); // a client that waits for its first picture holds the server's thread
    drop();
}

std::unique_ptr<PodStream> makeStream(const PodOptions &options, const PodSnapshot &snapshot)
{
    gst_init(nullptr, nullptr);
    return std::make_unique<RtspStream>(options, snapshot);
}

} // namespace podsim
