#include "shell/NacelleBench.h"
#include "video/VLCWidget.h"

#include <QApplication>

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
    window.show();
    start.reset();
    const int code = QApplication::exec();
    // A closed window stops no player. One that still draws while its window and the graphics
    // libraries are taken down would bring the process down with them.
    while (VLCWidget *surface = anySurface())
        delete surface;
    return code;
}
