#include "tools/commandline/stopsignal.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>

#include <unistd.h>

namespace {

std::array<int, 2> stopPipe{-1, -1};

extern "C" void passOn(int)
{
    const int saved = errno;
    const char byte = 0;
    const ssize_t written = write(stopPipe[1], &byte, 1);
    static_cast<void>(written); // a full pipe says as much
    errno = saved;
}

void passSignal(int signal)
{
    struct sigaction action = {};
    action.sa_handler = passOn;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

bool isIgnored(int signal)
{
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

StopSignal::StopSignal()
{
    if (pipe(stopPipe.data()) != 0)
        return;
    auto *notifier = new QSocketNotifier(stopPipe[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char bytes[16];
        if (read(stopPipe[0], bytes, sizeof bytes) > 0)
            emit stopped();
    });
    m_listener = notifier;
    passSignal(SIGINT);
    passSignal(SIGTERM);
    if (!isIgnored(SIGHUP)) // else nohup's wish would be overruled
        passSignal(SIGHUP);
    std::signal(SIGPIPE, SIG_IGN);
}
