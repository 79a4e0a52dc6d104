#pragma once

#include <QFrame>
#include <QImage>
#include <QString>

#include <atomic>
#include <memory>

class EmissionGate;
class QTimer;
class VideoCodec;
class videoFrom;
struct libvlc_event_t;
struct libvlc_instance_t;
struct libvlc_media_player_t;
struct libvlc_media_t;

/// Free libVLC's objects.
struct VlcReleaser
{
    void operator()(libvlc_instance_t *instance) const;
    void operator()(libvlc_media_t *media) const;
    void operator()(libvlc_media_player_t *player) const;
};

/// The surface that the picture is on: plays one address by libVLC or, where the saved file says
/// so, by a decoding thread whose pictures it paints, and reports what the mouse picks to its
/// owner. It lives in the GUI thread from one press of the play button to the next. libVLC calls
/// back from its own threads; the reopening of a stopped stream comes from a pool task.
class VLCWidget : public QFrame
{
    Q_OBJECT

public:
    explicit VLCWidget(QWidget *parent = nullptr);
    /// Keeps the window alive while the engines are taken down.
    ~VLCWidget() override;

    void setOwner(videoFrom *owner);

    /// Plays `url`, unless it is empty. Without `ownWindow` libVLC draws into a separate window.
    void setUrl(const QString &url, bool ownWindow, int index, bool unused);
    bool open();
    void play();
    void stop();
    void pause();
    void seekToEnd();
    /// Gives the engines up. Runs on a pool thread when the surface goes.
    bool release();

signals:
    void refresh();

public slots:
    void refreshRtsp();
    void slotGetOneFrame(QImage img);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    QPaintEngine *paintEngine() const override;

private:
    static void handleEvent(const libvlc_event_t *event, void *surface);
    bool openCodec();
    void attachEvents();
    void bindWindow();
    void reopenAfter(unsigned long seconds);
    void paintRubberBand(QPainter &painter);

    videoFrom *m_owner = nullptr;
    std::unique_ptr<libvlc_instance_t, VlcReleaser> m_vlcInstance;
    std::unique_ptr<libvlc_media_t, VlcReleaser> m_vlcMedia;
    std::unique_ptr<libvlc_media_player_t, VlcReleaser> m_vlcPlayer;
    QTimer *m_timer;
    qint64 m_lastFrameMs = 0; ///< since the epoch
    QString m_url;
    std::shared_ptr<EmissionGate> m_closing; ///< closed first thing in the destructor
    std::atomic<bool> m_reopening{false};    ///< a task sleeps before the next attempt
    /// Set by the task that gives the engines up, for the thread that waits for it.
    std::atomic<bool> m_enginesGone{false};
    bool m_ownWindow = false;
    // In pixels of the surface.
    double m_pressX = 0;
    double m_pressY = 0;
    double m_currentX = 0;
    double m_currentY = 0;
    VideoCodec *m_codec = nullptr;
    bool m_keepAspect = false; ///< nothing sets it
    QImage m_image;
    bool m_dragging = false;
    bool m_frameBusy = false;
    int m_index = 0; ///< nothing reads it
    QWidget *m_videoWindow = nullptr;
};
