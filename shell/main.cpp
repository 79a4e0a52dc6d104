#include "shell/NacelleBench.h"
#include "video/VLCWidget.h"

#include <QApplication>
#include <QEvent>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

constexpr const char *kGlIntegration = "QT_XCB_GL_INTEGRATION";

/// While it lives, the toolkit's X11 part doesn't load the OpenGL libraries for the first window:
/// half of an empty window's start and memory, for nothing here draws with them. libVLC makes its
/// context by itself. What the operator has set stays, and a document's viewer inherits nothing.
class WithoutOpenGl
{
public:
    WithoutOpenGl() : m_isOurs(!qEnvironmentVariableIsSet(kGlIntegration))
    {
        if (m_isOurs)
            qputenv(kGlIntegration, "none");
    }
    ~WithoutOpenGl()
    {
        if (m_isOurs)
            qunsetenv(kGlIntegration);
    }

private:
    const bool m_isOurs;
};

constexpr int kLongestTearDownMs = 2000;

/// Some of libVLC's modules wait for a server that never answers, and whoever waits for their
/// player waits for ever: a surface that is being replaced when the window is closed, or that which
/// goes at the end. Both turn the event loop meanwhile, so that this limit is kept. The process
/// ends then with everything in place.
class EndLimit : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Close)
            QTimer::singleShot(kLongestTearDownMs, [] {
                std::fflush(nullptr);
                std::_Exit(EXIT_SUCCESS);
            });
        return false;
    }
};

VLCWidget *anySurface()
{
    for (QWidget *widget : QApplication::allWidgets())
        if (auto *surface = qobject_cast<VLCWidget *>(widget))
            return surface;
    return nullptr;
}

} // namespace

int main(int argc, char *argv[])
{
    auto start = std::make_unique<WithoutOpenGl>();
    QApplication application(argc, argv);
    NacelleBench window;
    EndLimit limit;
    window.installEventFilter(&limit);
    window.show();
    start.reset();
    const int code = QApplication::exec();
    // A closed window stops no player. One that still draws while its window and the graphics
    // libraries are taken down would bring the process down with them.
    while (VLCWidget *surface = anySurface())
        delete surface;
    return code;
}
