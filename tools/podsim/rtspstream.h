#pragma once

#include "tools/podsim/picturefeed.h"
#include "tools/podsim/podstream.h"

#include <gst/rtsp-server/rtsp-server.h>

namespace podsim {

/// The stream by RTSP, in H.264, with a sound track where the options want one. All clients get
/// the same pictures. The server runs in a separate thread; each pipeline has more, which are the
/// library's and end with its last client.
class RtspStream final : public PodStream
{
public:
    RtspStream(const PodOptions &options, const PodSnapshot &snapshot);
    ~RtspStream() override;

    QString open() override;
    QString where() const override;
    void setSize(const QSize &size) override { m_feed.setSize(size); }
    void setFrozen(bool isFrozen) override { m_feed.setFrozen(isFrozen); }
    void drop() override;
    void close() override;

private:
    static void takeMedia(GstRTSPMediaFactory *factory, GstRTSPMedia *media, gpointer self);
    static void leaveMedia(GstRTSPMedia *media, gpointer self);
    void callInThread(GSourceFunc function, gpointer argument);
    void addFactory(const StreamOptions &options);

    PictureFeed m_feed;
    const QString m_address;
    GMainContext *m_context;
    GMainLoop *m_loop;
    ObjectPtr<GstRTSPServer> m_server;
    GSource *m_listener = nullptr; ///< null while no clients are taken
    std::thread m_thread;
};

} // namespace podsim
