#include "tools/podsim/podoptions.h"
#include "tools/podsim/podserver.h"
#include "tools/podsim/stopsignal.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

int complain(const QString &text, int code)
{
    std::fprintf(stderr, "podsim: %s\n", qPrintable(text));
    return code;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("podsim"));

    const podsim::ParsedOptions parsed = podsim::parseOptions(QCoreApplication::arguments());
    if (!parsed.error.isEmpty())
        return complain(parsed.error + QStringLiteral(" (see --help)"), kExitUsage);
    if (!parsed.help.isEmpty()) {
        std::fputs(qPrintable(parsed.help), stdout);
        return 0;
    }

    const podsim::StopSignal stop;
    podsim::PodServer server(parsed.options);
    QObject::connect(&stop, &podsim::StopSignal::stopped, &application, &QCoreApplication::quit);
    const QString reason = server.open();
    if (!stop.isReady() || !reason.isEmpty())
        return complain(reason, kExitFailure);
    const int code = QCoreApplication::exec();
    server.close();
    return code;
}
