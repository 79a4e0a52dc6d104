#include "tools/commandline/commandline.h"
#include "tools/commandline/speech.h"
#include "tools/commandline/stopsignal.h"
#include "tools/podsim/podcontrol.h"
#include "tools/podsim/podoptions.h"
#include "tools/podsim/podserver.h"
#include "tools/podsim/podstream.h"

#include <QCoreApplication>

namespace {

int run(const podsim::PodOptions &options)
{
    const StopSignal stop;
    podsim::PodServer server(options);
    std::unique_ptr<podsim::PodStream> stream;
    std::optional<podsim::PodControl> control;
    if (options.stream.port) {
        stream = podsim::makeStream(options, server.shown());
        if (!stream)
            return complain(QStringLiteral("--rtsp: this build has no stream; it was made without "
                                           "GStreamer and its RTSP server"),
                            kExitUsage);
    }
    QObject::connect(&stop, &StopSignal::stopped, &QCoreApplication::quit);
    QObject::connect(&server, &podsim::PodServer::left, &QCoreApplication::quit);
    QString reason = server.open();
    if (reason.isEmpty() && stream)
        reason = stream->open();
    if (!stop.isReady() || !reason.isEmpty())
        return complain(reason);
    if (stream)
        server.log().line(QStringLiteral("listening on ") + stream->where());
    if (options.stream.hasControl)
        control.emplace(*stream, server.log());
    const int code = QCoreApplication::exec();
    server.close();
    return code;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("podsim"));

    const podsim::ParsedOptions parsed = podsim::parseOptions(QCoreApplication::arguments());
    if (!parsed.error.isEmpty())
        return complainOfUsage(parsed.error);
    if (!parsed.answer.isEmpty()) {
        writeLine(stdout, parsed.answer);
        return kExitDone;
    }
    return run(parsed.options);
}
