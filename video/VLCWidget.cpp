#include "video/VLCWidget.h"

#include "foundation/QGlobal.h"
#include "foundation/emissiongate.h"
#include "foundation/poolsleep.h"
#include "video/VideoCodec.h"
#include "video/pickframe.h"
#include "video/videoFrom.h"
#include "video/vlc.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFuture>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>
#include <QtConcurrent>

namespace {

constexpr int kTimerMs = 10;
constexpr qint64 kFrameGapMs = 50;
constexpr int kTearDownSliceMs = 100;
constexpr unsigned long kReopenSeconds = 1;
constexpr unsigned long kErrorReopenSeconds = 3;
constexpr float kEndOfMedia = 1.0f;

/// An error is not among them, on purpose: it starts nothing. A stream that stops is played again,
/// also where libVLC lets a stop follow an error.
constexpr libvlc_event_e kAttachedEvents[] = {
    libvlc_MediaPlayerTimeChanged, libvlc_MediaPlayerEndReached, libvlc_MediaPlayerStopped,
    libvlc_MediaPlayerPlaying,     libvlc_MediaPlayerPaused,
};

constexpr const char *kMediaOptions[] = {":network-caching=300", ":skip-frames",
                                         ":clock-synchro=0"};

/// A libVLC without the module that knows the second argument takes the first alone, and leaves the
/// transport to its other modules. There may be no instance at all: then the surface stays black.
libvlc_instance_t *makeInstance()
{
    constexpr const char *kArguments[] = {"--no-audio", "--rtsp-tcp"};
    if (!vlc::isThere())
        return nullptr;
    libvlc_instance_t *instance = vlc::libvlc_new(2, kArguments);
    return instance ? instance : vlc::libvlc_new(1, kArguments);
}

} // namespace

void VlcReleaser::operator()(libvlc_instance_t *instance) const
{
    vlc::libvlc_release(instance);
}

void VlcReleaser::operator()(libvlc_media_t *media) const
{
    vlc::libvlc_media_release(media);
}

void VlcReleaser::operator()(libvlc_media_player_t *player) const
{
    vlc::libvlc_media_player_release(player);
}

VLCWidget::VLCWidget(QWidget *parent)
    : QFrame(parent), m_timer(new QTimer(this)), m_closing(std::make_shared<EmissionGate>())
{
    // The rule is left open at its end, and stays so.
    setStyleSheet("QFrame{background-color:" + colourOf("player"));
    // The surface has no such slot, and no periodic work: the timer runs for nobody. Its one effect
    // is on Windows, where so short an interval keeps the system's clock at 1 ms, and the waits of
    // the whole process exact, for as long as a surface lives.
    connect(m_timer, SIGNAL(timeout()), this, SLOT(slotTimeOut()));
    m_timer->start(kTimerMs);
    connect(this, &VLCWidget::refresh, this, &VLCWidget::refreshRtsp);
    m_vlcInstance.reset(makeInstance());
}

VLCWidget::~VLCWidget()
{
    m_closing->close();
    m_url.clear();
    m_timer->stop();
    m_enginesGone = false;
    const QFuture<bool> released = QtConcurrent::run(this, &VLCWidget::release);
    while (!released.isFinished() || !m_enginesGone)
        QCoreApplication::processEvents(QEventLoop::AllEvents, kTearDownSliceMs);
    m_vlcInstance.reset();
}

void VLCWidget::setOwner(videoFrom *owner)
{
    m_owner = owner;
}

void VLCWidget::setUrl(const QString &url, bool ownWindow, int index, bool)
{
    m_url = url;
    m_index = index;
    m_ownWindow = ownWindow;
    if (!ownWindow)
        m_videoWindow = new QWidget; // without a parent: it lives to the end of the process
    if (!m_url.isEmpty())
        open();
}

bool VLCWidget::open()
{
    m_enginesGone = false;
    if (QGlobal::instance()->ffmpegEngine)
        return openCodec();
    if (m_vlcInstance)
        m_vlcMedia.reset(
            vlc::libvlc_media_new_location(m_vlcInstance.get(), m_url.toUtf8().constData()));
    if (m_vlcMedia)
        m_vlcPlayer.reset(vlc::libvlc_media_player_new_from_media(m_vlcMedia.get()));
    if (!m_vlcPlayer) {
        release();
        return false;
    }
    vlc::libvlc_media_parse(m_vlcMedia.get());
    attachEvents();
    bindWindow();
    // Mouse and keys are the toolkit's.
    vlc::libvlc_video_set_mouse_input(m_vlcPlayer.get(), 0);
    vlc::libvlc_video_set_key_input(m_vlcPlayer.get(), 0);
    vlc::libvlc_video_set_aspect_ratio(m_vlcPlayer.get(), "16:9");
    for (const char *option : kMediaOptions)
        vlc::libvlc_media_add_option(m_vlcMedia.get(), option);
    play();
    return true;
}

bool VLCWidget::openCodec()
{
    // The pictures cover all of it: the window's ground needn't be painted below each of them.
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_codec = new VideoCodec(m_url, QStringLiteral("tcp"), true);
    connect(m_codec, &VideoCodec::sig_GetOneFrame, this, &VLCWidget::slotGetOneFrame);
    m_codec->startDecoding();
    return true;
}

void VLCWidget::attachEvents()
{
    libvlc_event_manager_t *manager = vlc::libvlc_media_player_event_manager(m_vlcPlayer.get());
    for (const libvlc_event_e event : kAttachedEvents)
        vlc::libvlc_event_attach(manager, event, &VLCWidget::handleEvent, this);
}

/// Nobody shows the separate window: with it, what libVLC plays isn't seen. Shown, it would cover
/// the main window's controls, and it takes no picks.
void VLCWidget::bindWindow()
{
    QWidget *target = m_ownWindow ? this : m_videoWindow;
    if (!target)
        return;
#ifdef Q_OS_WIN
    vlc::libvlc_media_player_set_hwnd(m_vlcPlayer.get(), reinterpret_cast<void *>(target->winId()));
#else
    if (QGuiApplication::platformName() == QLatin1String("xcb"))
        vlc::libvlc_media_player_set_xwindow(m_vlcPlayer.get(), uint32_t(target->winId()));
    else // it would open another window on the screen
        vlc::libvlc_media_add_option(m_vlcMedia.get(), ":no-video");
#endif
}

void VLCWidget::play()
{
    if (!m_vlcPlayer)
        return;
    if (vlc::libvlc_media_get_state(m_vlcMedia.get()) == libvlc_Ended)
        stop();
    vlc::libvlc_media_player_play(m_vlcPlayer.get());
}

void VLCWidget::stop()
{
    if (m_vlcPlayer)
        vlc::libvlc_media_player_stop(m_vlcPlayer.get());
}

void VLCWidget::pause()
{
    if (m_vlcPlayer && vlc::libvlc_media_player_is_playing(m_vlcPlayer.get()) != 0)
        vlc::libvlc_media_player_set_pause(m_vlcPlayer.get(), 1);
}

void VLCWidget::seekToEnd()
{
    if (m_vlcPlayer)
        vlc::libvlc_media_player_set_position(m_vlcPlayer.get(), kEndOfMedia);
}

bool VLCWidget::release()
{
    if (m_enginesGone)
        return true;
    try {
        if (QGlobal::instance()->ffmpegEngine && m_codec)
            m_codec->requestStop(); // it ends by itself, sooner or later
        m_vlcPlayer.reset();
        m_vlcMedia.reset();
    } catch (...) {
    }
    m_enginesGone = true;
    return true;
}

void VLCWidget::handleEvent(const libvlc_event_t *event, void *surface)
{
    auto *widget = static_cast<VLCWidget *>(surface);
    if (!widget || widget->m_closing->isClosed())
        return;
    if (event->type == libvlc_MediaPlayerStopped)
        widget->reopenAfter(kReopenSeconds);
    else if (event->type == libvlc_MediaPlayerEncounteredError)
        widget->reopenAfter(kErrorReopenSeconds);
}

/// One task sleeps at a time: an attempt that fails may stop twice, once when it ends the lost
/// stream and once by itself, and a task for each would double their number with every second. A
/// task that sleeps when the surface goes is neither cancelled nor awaited.
void VLCWidget::reopenAfter(unsigned long seconds)
{
    if (m_reopening.exchange(true))
        return;
    QtConcurrent::run([this, gate = m_closing, seconds] {
        sleepInPool(seconds * 1000);
        gate->pass([this] {
            m_reopening = false;
            if (!m_url.isEmpty())
                emit refresh();
        });
    });
}

void VLCWidget::refreshRtsp()
{
    if (!m_closing->isClosed())
        play();
}

void VLCWidget::slotGetOneFrame(QImage img)
{
    if (m_frameBusy)
        return;
    m_frameBusy = true;
    // The guard stays set: after one empty picture the surface takes no more. It is kept so.
    if (img.isNull() || img.width() <= 0 || img.height() <= 0)
        return;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    if (now > m_lastFrameMs + kFrameGapMs) {
        m_image = img.scaled(width(), height(),
                             m_keepAspect ? Qt::KeepAspectRatio : Qt::IgnoreAspectRatio,
                             Qt::FastTransformation);
        update();
        m_lastFrameMs = now;
    }
    m_frameBusy = false;
}

void VLCWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (!QGlobal::instance()->ffmpegEngine)
        return;
    if (m_image.size() != size() || m_image.hasAlphaChannel())
        painter.fillRect(rect(), Qt::black);
    painter.drawImage((width() - m_image.width()) / 2, (height() - m_image.height()) / 2, m_image);
    if (m_dragging && m_owner && m_owner->rectangleMode())
        paintRubberBand(painter);
}

void VLCWidget::paintRubberBand(QPainter &painter)
{
    painter.setBrush(QColor(QStringLiteral("#00000000")));
    painter.setPen(QColor(QStringLiteral("#ff0000")));
    painter.drawRect(int(qMin(m_pressX, m_currentX)), int(qMin(m_pressY, m_currentY)),
                     int(qAbs(m_pressX - m_currentX)), int(qAbs(m_pressY - m_currentY)));
}

/// The next picture comes in the new size.
void VLCWidget::resizeEvent(QResizeEvent *) {}

/// The surface has none; a painter finds the window's while the surface is being painted.
QPaintEngine *VLCWidget::paintEngine() const
{
    return nullptr;
}

void VLCWidget::mousePressEvent(QMouseEvent *event)
{
    m_dragging = false;
    m_pressX = event->localPos().x();
    m_pressY = event->localPos().y();
    m_currentX = -1;
    m_currentY = -1;
}

void VLCWidget::mouseMoveEvent(QMouseEvent *event)
{
    m_dragging = true;
    m_currentX = event->localPos().x();
    m_currentY = event->localPos().y();
    update();
}

void VLCWidget::mouseReleaseEvent(QMouseEvent *event)
{
    m_currentX = event->localPos().x();
    m_currentY = event->localPos().y();
    if (m_owner)
        m_owner->showCoordinates(pickUnit(m_pressX, width()), pickUnit(m_pressY, height()),
                                 pickUnit(m_currentX, width()), pickUnit(m_currentY, height()));
    m_dragging = false;
    update();
}
