#pragma once

#include "foundation/framelessrules.h"

#include <QCursor>
#include <QPointer>
#include <QWidget>

#include <optional>

class QMouseEvent;

/// A window without the system's frame that the window manager still treats like a framed one: its
/// edges resize it, and its title bar moves it. On Windows it answers the native hit test;
/// elsewhere a press in the same zones starts the system's move or resize.
class FramelessWidget : public QWidget
{
    Q_OBJECT

public:
    explicit FramelessWidget(QWidget *parent = nullptr);

public slots:
    /// Width of the edge zone in pixels.
    void setPadding(int padding);
    void setMoveEnable(bool moveEnable);
    /// Lasts until the next change of the window's state.
    void setResizeEnable(bool resizeEnable);
    /// The area that drags the window, which has to lie at its top left.
    void setTitleBar(QWidget *titleBar);

signals:
    /// Never emitted: the double click itself reaches the window, which would act twice if this
    /// came too.
    void titleDblClick();
    void windowStateChange(bool max);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    bool nativeEvent(const QByteArray &eventType, void *message, long *result) override;

private:
    HitZone zoneAt(const QPoint &point) const;
    bool answerMessage(MessageAction action, const QPoint &globalPoint, long *result);
    void followWindowState();
    bool answerPointer(QEvent *event);
    bool pointAt(const QMouseEvent &event);
    bool press(const QMouseEvent &event);
    bool dragCaption(const QPoint &point);
    bool doubleClick();
    void leaveEdges();

    Qt::WindowFlags flags;
    int padding = 8;
    bool moveEnable = true;
    bool resizeEnable = true;
    QPointer<QWidget> titleBar;
    // Nothing reads these six.
    bool mousePressed = false;
    QPoint mousePoint;
    QRect mouseRect;
    QList<bool> pressedArea = {false, false, false, false, false, false, false, false};
    QList<QRect> pressedRect = {{}, {}, {}, {}, {}, {}, {}, {}};
    bool isMin = false;

    std::optional<QPoint>
        m_captionPress; ///< set from a press on the title bar to its drag or release
    std::optional<QCursor> m_cursorInside; ///< set while the pointer shows an edge's shape
};
