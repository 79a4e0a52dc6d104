#include "tools/podsim/picturefeed.h"

#include "tools/podsim/picturestamp.h"
#include "tools/podsim/podpainter.h"
#include "tools/podsim/podsnapshot.h"

#include <QImage>

#include <gst/app/gstappsrc.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace podsim {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRate = 30; // pictures a second
constexpr Clock::duration kPeriod = std::chrono::nanoseconds(1000000000 / kRate);
constexpr int kPixelSize = 4;   // bytes
constexpr gsize kWaveSize = 16; // samples, which is 500 Hz
constexpr guint8 kCrest = 0xDF; // quiet, and its opposite
constexpr guint8 kTrough = 0x5F;

void setCaps(GstElement *source, const QSize &size)
{
    GstCaps *caps = gst_caps_new_simple(
        "video/x-raw", "format", G_TYPE_STRING, "BGRx", "width", G_TYPE_INT, size.width(), "height",
        G_TYPE_INT, size.height(), "framerate", GST_TYPE_FRACTION, kRate, 1, nullptr);
    gst_app_src_set_caps(GST_APP_SRC(source), caps);
    gst_caps_unref(caps);
}

/// The sound of one picture's time: 800 samples in three pictures, cut between two waves.
GstBuffer *toneFor(quint32 picture)
{
    const gsize size = (picture % 3 == 0 ? 16 : 17) * kWaveSize;
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, size, nullptr);
    gst_buffer_memset(buffer, 0, kCrest, size);
    for (gsize at = 0; at < size; at += kWaveSize)
        gst_buffer_memset(buffer, at, kTrough, kWaveSize / 2);
    return buffer;
}

} // namespace

PictureFeed::PictureFeed(const StreamOptions &options, const PodSnapshot &snapshot)
    : m_snapshot(snapshot), m_hasStamp(options.hasStamp), m_size(options.size),
      m_thread([this] { run(); })
{
}

PictureFeed::~PictureFeed()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void PictureFeed::attach(ObjectPtr<GstElement> camera, ObjectPtr<GstElement> microphone)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_sources.push_back({std::move(camera), std::move(microphone), QSize()});
    m_changed.notify_all();
}

void PictureFeed::detach(const ObjectPtr<GstElement> &camera)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_sources.erase(std::remove_if(m_sources.begin(), m_sources.end(),
                                   [&](const Source &s) { return s.camera == camera; }),
                    m_sources.end());
}

void PictureFeed::setSize(const QSize &size)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_size = size;
}

void PictureFeed::setFrozen(bool isFrozen)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isFrozen = isFrozen;
    m_changed.notify_all();
}

void PictureFeed::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    Clock::time_point next = Clock::now();
    while (!m_isEnding) {
        m_changed.wait(lock, [this] { return m_isEnding || (!m_isFrozen && !m_sources.empty()); });
        next = std::max(next + kPeriod, Clock::now()); // late pictures aren't made up for
        m_changed.wait_until(lock, next, [this] { return m_isEnding; });
        if (m_isEnding)
            break;
        const QSize size = m_size;
        lock.unlock();
        GstBuffer *picture = draw(size);
        lock.lock();
        push(size, picture);
        gst_buffer_unref(picture);
    }
}

GstBuffer *PictureFeed::draw(const QSize &size)
{
    const int stride = size.width() * kPixelSize;
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, gsize(stride) * size.height(), nullptr);
    GstMapInfo map;
    gst_buffer_map(buffer, &map, GST_MAP_WRITE);
    QImage picture(map.data, size.width(), size.height(), stride, QImage::Format_RGB32);
    paintPicture(picture, m_snapshot.now(), ++m_number);
    if (m_hasStamp)
        writeStamp(picture, {stampClock(), m_number});
    gst_buffer_unmap(buffer, &map);
    return buffer;
}

/// Each source gets a copy with the same pixels, since it puts its own time on it.
/// A pipeline that is on its way to playing has a clock before it has a time to count from: a
/// picture that it takes meanwhile would be due in hours, and hold up all after it.
void PictureFeed::push(const QSize &size, GstBuffer *picture)
{
    if (m_isFrozen)
        return;
    for (Source &source : m_sources) {
        if (GST_STATE(source.camera.get()) != GST_STATE_PLAYING)
            continue;
        if (std::exchange(source.size, size) != size)
            setCaps(source.camera.get(), size);
        gst_app_src_push_buffer(GST_APP_SRC(source.camera.get()), gst_buffer_copy(picture));
        if (source.microphone)
            gst_app_src_push_buffer(GST_APP_SRC(source.microphone.get()), toneFor(m_number));
    }
}

} // namespace podsim
