#pragma once

#include "tools/podsim/podoptions.h"

#include <QSize>

#include <gst/gst.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace podsim {

class PodSnapshot;

struct ObjectUnref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using ObjectPtr = std::unique_ptr<T, ObjectUnref>;

/// Draws 30 pictures a second in a separate thread, while there is somebody to take them, and
/// hands them to the sources of the pipelines, with a tone of mu-law at 8 kHz for those that want
/// sound. Everything else may be called from any thread.
class PictureFeed
{
public:
    PictureFeed(const StreamOptions &options, const PodSnapshot &snapshot);
    ~PictureFeed();

    /// Pictures go to this appsrc from now on, and sound to the other one, which may be null.
    void attach(ObjectPtr<GstElement> camera, ObjectPtr<GstElement> microphone);
    /// The appsrc of pictures gets no more, and neither does the one that came with it.
    void detach(const ObjectPtr<GstElement> &camera);
    void setSize(const QSize &size);
    void setFrozen(bool isFrozen);

private:
    struct Source
    {
        ObjectPtr<GstElement> camera;
        ObjectPtr<GstElement> microphone;
        QSize size; ///< of the pictures that it got last
    };

    void run();
    GstBuffer *draw(const QSize &size);
    void push(const QSize &size, GstBuffer *picture);

    const PodSnapshot &m_snapshot;
    const bool m_hasStamp;
    quint32 m_number = 0; ///< of the last picture; the drawing thread's own
    std::mutex m_mutex;   ///< guards what follows
    std::condition_variable m_changed;
    std::vector<Source> m_sources;
    QSize m_size;
    bool m_isFrozen = false;
    bool m_isEnding = false;
    std::thread m_thread;
};

} // namespace podsim
