#pragma once

#include "tests/support/bench.h"
#include "video/VLCWidget.h"
#include "video/videoFrom.h"

#include <QLineEdit>
#include <QMouseEvent>

/// The bench with the console in front and its video window open.
class VideoBench : public Bench
{
public:
    VideoBench()
    {
        click("pushButton_2");
        openVideo();
    }
    ~VideoBench() { delete window()->videoWindow; }

    void openVideo()
    {
        click("pushButton_video");
        if (!QTest::qWaitForWindowExposed(video()))
            qFatal("the video window doesn't show");
    }

    videoFrom *video() { return window()->videoWindow; }

    template <typename T = QPushButton>
    T *part(const char *name)
    {
        T *found = video()->findChild<T *>(QLatin1String(name));
        if (!found)
            qFatal("no widget %s", name);
        return found;
    }

    void press(const char *button) { QTest::mouseClick(part(button), Qt::LeftButton); }
    VLCWidget *surface() { return video()->findChild<VLCWidget *>(QStringLiteral("vlc")); }

    /// Types an address and presses the play button.
    void play(const QString &url)
    {
        announceSurface();
        part<QLineEdit>("lineEdit")->setText(url);
        press("pushButton_Refresh");
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// What a surface says: its timer has no receiver, and its rule has no end, which it says again
    /// when the next surface takes its place.
    void announceSurface()
    {
        expectWarning("^QObject::connect: No such slot VLCWidget::slotTimeOut");
        expectWarning("^Could not parse stylesheet of object VLCWidget");
        if (surface())
            expectWarning("^Could not parse stylesheet of object VLCWidget");
    }

    /// Gives the picture area a size.
    void setArea(int width, int height)
    {
        const QWidget *area = part<QWidget>("widget");
        video()->resize(video()->size() + QSize(width, height) - area->size());
        if (!QTest::qWaitFor([&] { return area->size() == QSize(width, height); }))
            qFatal("the picture area doesn't take its size");
    }

    void mouse(QEvent::Type type, const QPoint &at)
    {
        QMouseEvent event(type, at, surface()->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(surface(), &event);
    }

    /// A drag from one point of the surface to another, which may lie beyond its edges.
    void drag(const QPoint &from, const QPoint &to)
    {
        mouse(QEvent::MouseButtonPress, from);
        if (from != to)
            mouse(QEvent::MouseMove, to);
        mouse(QEvent::MouseButtonRelease, to);
    }

    QString readouts()
    {
        QStringList texts;
        for (const char *name : {"label_X0", "label_Y0", "label_X1", "label_Y1"})
            texts << part<QLabel>(name)->text();
        return texts.join(QLatin1Char(' '));
    }
};
