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

} // namespace

StopSignal::StopSignal()
{
    if (pipe(stopPipe.data()) != 0)
        return;
    auto *notifier = new QSocketNotifier(stopPipe[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false);
        emit stopped();
    });
    m_listener = notifier;
    struct sigaction action = {};
    action.sa_handler = passOn;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}
