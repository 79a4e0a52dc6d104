#include "tools/commandline/stopsignal.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>

#include <atomic>

#include <windows.h>

namespace {

/// Hears the message that QProcess::terminate posts to the main thread.
class CloseFilter : public QObject, public QAbstractNativeEventFilter
{
public:
    explicit CloseFilter(StopSignal *signal) : QObject(signal), m_signal(signal) {}

    bool nativeEventFilter(const QByteArray &, void *message, long *) override
    {
        if (static_cast<MSG *>(message)->message != WM_CLOSE)
            return false;
        emit m_signal->stopped();
        return true;
    }

private:
    StopSignal *m_signal;
};

std::atomic<StopSignal *> stopSignal{nullptr};

/// On a thread of the system's own. Of a closed console, a logoff or a shutdown the return is the
/// end of the program: as long as the handler stays the main thread has the system's few seconds.
BOOL WINAPI passOn(DWORD event)
{
    QMetaObject::invokeMethod(stopSignal, &StopSignal::stopped, Qt::QueuedConnection);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(INFINITE);
    return TRUE;
}

} // namespace

StopSignal::StopSignal()
{
    auto *filter = new CloseFilter(this);
    QCoreApplication::instance()->installNativeEventFilter(filter);
    stopSignal = this;
    if (SetConsoleCtrlHandler(passOn, TRUE))
        m_listener = filter;
}
