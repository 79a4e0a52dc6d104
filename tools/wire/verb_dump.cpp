#include "tools/commandline/commandline.h"
#include "tools/commandline/stopsignal.h"
#include "tools/wire/decode.h"
#include "tools/wire/inputs.h"
#include "tools/wire/linkrun.h"
#include "tools/wire/verbs.h"

#include <QFileInfo>

namespace wire {

namespace {

constexpr char kText[] =
    "Listens on a link and writes each frame that is received: in the line form, or taken apart.\n"
    "\n"
    "  tcp://host:2332                    a pod that listens; 2332 may be left out\n"
    "  tcp-listen://address:2332          the pod's side, for a bench to connect to; one at a "
    "time,\n"
    "                                     another is refused meanwhile, with a word\n"
    "  udp://host:2337?local=2338         to the host's port, received on the local one\n"
    "  serial:///dev/ttyUSB0?baud=115200  parity=none, odd or even; data=8; on Windows "
    "serial:///COM3\n"
    "\n"
    "Frames are found by header and checksum; what stands between them is shown as it is. A pod\n"
    "that only answers has to be asked: see `send`.\n"
    "\n"
    "  nacelle-wire dump udp://192.168.144.121\n"
    "                      what the pod sends, a line a frame\n"
    "  nacelle-wire dump --json serial:///dev/ttyUSB0 | jq .fields.mode\n"
    "                      its work modes\n"
    "  nacelle-wire dump --crc bad --count 1 --for 10s tcp://192.168.144.121\n"
    "                      fails unless there is a wrong checksum in ten seconds\n"
    "\n"
    "Ends with 1 when the link is lost or can't be opened, with 3 when --for is over before\n"
    "--count, with 130 when it is stopped before.";

void addOptions(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("json"), QStringLiteral("A JSON object a line.")});
    parser.addOption({QStringLiteral("csv"), QStringLiteral("Comma-separated values.")});
    parser.addOption({QStringLiteral("text"), QStringLiteral("Field by field.")});
    parser.addOption({QStringLiteral("hex"), QStringLiteral("The digits alone.")});
    parser.addOption({QStringLiteral("count"), QStringLiteral("End after so many frames."),
                      QStringLiteral("number")});
    addListenOptions(parser);
    addLanguageOption(parser);
    addFilterOptions(parser);
    addOutputOption(parser);
}

std::unique_ptr<FrameFormat> formatOf(const QCommandLineParser &parser, Language language)
{
    if (parser.isSet(QStringLiteral("json")))
        return jsonFormat();
    if (parser.isSet(QStringLiteral("csv")))
        return csvFormat();
    if (parser.isSet(QStringLiteral("hex")))
        return hexFormat();
    return parser.isSet(QStringLiteral("text")) ? textFormat(language) : lineFormat();
}

bool checkForm(const QCommandLineParser &parser, QString &error)
{
    const QString path = parser.value(QStringLiteral("output"));
    int forms = 0;
    for (const char *form : {"json", "csv", "text", "hex"})
        forms += parser.isSet(QLatin1String(form));
    if (forms > 1)
        error = QStringLiteral("one of --json, --csv, --text and --hex");
    else if (QFileInfo(path).suffix().startsWith(QLatin1String("pcap"), Qt::CaseInsensitive))
        error = path + QStringLiteral(": `record` writes pcapng");
    return error.isEmpty();
}

struct Wanted
{
    LinkAddress address;
    Cut cut = Cut::Searching;
    Filter filter;
    Language language = Language::English;
    int count = 0;
    qint64 time = 0;
};

bool readWanted(const QCommandLineParser &parser, const QStringList &words, Wanted &wanted,
                QString &error)
{
    wanted.cut = cutOf(parser);
    if (words.size() != 1)
        error = QStringLiteral("one link is needed");
    return error.isEmpty() && checkForm(parser, error) &&
           readLinkAddress(words.first(), wanted.address, error) &&
           readFilter(parser, wanted.filter, error) &&
           readLanguage(parser, wanted.language, error) &&
           readCountOption(parser, "count", 0, wanted.count, error) &&
           readDurationOption(parser, "for", wanted.time, error);
}

int dump(LinkRun &run, Wanted &wanted, const FrameFormat &format, const QString &path,
         Output &output)
{
    const WireClock clock;
    int count = 0;
    FrameTap tap(wanted.cut, Direction::Unknown, clock, [&](const Record &record) {
        if (!wanted.filter.takes(record) || (wanted.count > 0 && count == wanted.count))
            return;
        format.add(record, output.buffer());
        if (++count == wanted.count)
            run.end(kExitDone);
    });
    Link &link = run.add(wanted.address);
    run.beginWith(link, [&] { return begin(output, path, format) && output.flush(); });
    QObject::connect(&link, &Link::opened, &run, [&tap] { tap.begin(); });
    QObject::connect(&link, &Link::received, &run, [&](const QByteArray &bytes) {
        tap.push(bytes);
        if (!output.flush())
            run.end(kExitFailure);
    });
    if (wanted.time > 0)
        run.limit(wanted.time, wanted.count > 0 ? kExitNoAnswer : kExitDone);
    const int code = run.run();
    tap.finish();
    return code == kExitNoAnswer && count == wanted.count ? int(kExitDone) : code;
}

int run(const QCommandLineParser &parser, const QStringList &words)
{
    Wanted wanted;
    QString error;
    if (!readWanted(parser, words, wanted, error))
        return complainOfUsage(error);
    Output output;
    const QString path = parser.value(QStringLiteral("output"));
    if (!output.hasFolder(path))
        return complain(output.error());
    const auto format = formatOf(parser, wanted.language);
    LinkRun links(parser.isSet(QStringLiteral("reconnect")),
                  [](const QString &text) { complain(text); });
    const StopSignal stop;
    QObject::connect(&stop, &StopSignal::stopped, &links,
                     [&] { links.end(wanted.count > 0 ? kExitStopped : kExitDone); });
    const int code = dump(links, wanted, *format, path, output);
    if (output.close())
        return code;
    return output.isUnread() ? kExitUnread : complain(output.error());
}

} // namespace

const Verb kDumpVerb{"dump", "<link>", "listen on a link", kText, addOptions, run};

} // namespace wire
