#include "tools/commandline/commandline.h"
#include "tools/commandline/stopsignal.h"
#include "tools/wire/inputs.h"
#include "tools/wire/linkrun.h"
#include "tools/wire/recorder.h"
#include "tools/wire/verbs.h"

namespace wire {

namespace {

constexpr char kText[] =
    "Records what is received on a link; with --bridge it sits between bench and pod, hands on "
    "all\n"
    "bytes at once and records both sides. `dump --help` lists what a link can be; the two sides "
    "of\n"
    "a bridge may be of different kinds.\n"
    "\n"
    "  nacelle-wire record -o night.pcapng --rotate-time 1h --keep 12 --reconnect "
    "serial:///dev/ttyUSB0\n"
    "                      a night, a file an hour\n"
    "  nacelle-wire record -o run.pcapng --bridge tcp-listen://127.0.0.1:2332 serial:///COM3\n"
    "                      the bench connects to 127.0.0.1, the pod is on a serial line\n"
    "  nacelle-wire record -o run.pcapng --bridge 'udp://127.0.0.1:2338?local=2347' "
    "'udp://192.168.144.121?local=2339'\n"
    "                      the bench sends to port 2347 of this machine\n"
    "\n"
    "The file's name says the form: .pcapng, .log, .hex, else the line form. What has been "
    "recorded is\n"
    "on the disk after a second at most. The file is begun once the pod's link is open, or "
    "listens.\n"
    "It goes on until Ctrl+C, --for, or the loss of a link.\n"
    "Files that follow one another are night-00001.pcapng and so on, after the highest number "
    "that\n"
    "is there already.\n"
    "A bridge drops what the bench sends while the pod's link is lost, and doesn't record it; it "
    "reads\n"
    "no more from a side while the other takes nothing.\n"
    "\n"
    "Ends with 1 when a link is lost, can't be opened or doesn't take all, or the file can't be\n"
    "written.";

constexpr int kFlushMs = 1000;
constexpr qint64 kMegabyte = 1000000;

void addOptions(QCommandLineParser &parser)
{
    parser.addOption(
        {QStringLiteral("bridge"), QStringLiteral("The bench's side."), QStringLiteral("link")});
    parser.addOption(
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("Write to this file, which has to be named; - is standard output."),
         QStringLiteral("file")});
    parser.addOption({QStringLiteral("rotate-size"),
                      QStringLiteral("Begin another file after so many megabytes."),
                      QStringLiteral("MB")});
    parser.addOption({QStringLiteral("rotate-time"),
                      QStringLiteral("Begin another file after this time."),
                      QStringLiteral("time")});
    parser.addOption(
        {QStringLiteral("keep"),
         QStringLiteral("Keep so many files of that name, the newest; those of earlier "
                        "runs count, and go first."),
         QStringLiteral("number")});
    parser.addOption({QStringLiteral("as"), QStringLiteral("pcapng, line, log or hex."),
                      QStringLiteral("form")});
    addListenOptions(parser);
    addLanguageOption(parser);
}

struct Wanted
{
    LinkAddress pod, bench;
    bool isBridge = false;
    Cut cut = Cut::Searching;
    Rotation rotation;
    qint64 time = 0;
    Language language = Language::English;
};

bool checkRotation(const QCommandLineParser &parser, const Rotation &rotation, QString &error)
{
    const bool isBySize = parser.isSet(QStringLiteral("rotate-size")),
               isByTime = parser.isSet(QStringLiteral("rotate-time"));
    if (isBySize && rotation.bytes < kMegabyte)
        error = QStringLiteral("--rotate-size: at least 1");
    else if (isByTime && rotation.microseconds < kFlushMs * 1000)
        error = QStringLiteral("--rotate-time: at least 1s"); // it is looked at with each flush
    else if (rotation.isWanted() && parser.value(QStringLiteral("output")) == QLatin1String("-"))
        error = QStringLiteral("standard output can't be rotated");
    else if (!rotation.isWanted() && parser.isSet(QStringLiteral("keep")))
        error = QStringLiteral("--keep needs --rotate-size or --rotate-time");
    return error.isEmpty();
}

bool readWanted(const QCommandLineParser &parser, const QStringList &words, Wanted &wanted,
                QString &error)
{
    const QString bench = parser.value(QStringLiteral("bridge"));
    wanted.isBridge = parser.isSet(QStringLiteral("bridge"));
    wanted.cut = cutOf(parser);
    int megabytes = 0;
    if (words.size() != 1)
        error = QStringLiteral("one link is needed");
    else if (parser.value(QStringLiteral("output")).isEmpty())
        error = QStringLiteral("-o and the name of a file are needed; - is standard output");
    const bool isGood =
        error.isEmpty() && readLinkAddress(words.first(), wanted.pod, error) &&
        (!wanted.isBridge || readLinkAddress(bench, wanted.bench, error)) &&
        readLanguage(parser, wanted.language, error) &&
        readDurationOption(parser, "for", wanted.time, error) &&
        readDurationOption(parser, "rotate-time", wanted.rotation.microseconds, error) &&
        readCountOption(parser, "rotate-size", 0, megabytes, error) &&
        readCountOption(parser, "keep", 0, wanted.rotation.keep, error);
    wanted.rotation.bytes = megabytes * kMegabyte;
    return isGood && checkRotation(parser, wanted.rotation, error);
}

/// Links, what hands their bytes on, and what writes them down.
class Session
{
public:
    Session(LinkRun &run, const Wanted &wanted, Recorder &recorder)
        : m_run(run), m_recorder(recorder), m_pod(run.add(wanted.pod)),
          m_bench(wanted.isBridge ? &run.add(wanted.bench, &m_pod) : nullptr),
          m_fromPod(wanted.cut, wanted.isBridge ? Direction::Rx : Direction::Unknown, m_clock,
                    [this](const Record &record) { take(record); }),
          m_fromBench(Cut::Searching, Direction::Tx, m_clock,
                      [this](const Record &record) { take(record); })
    {
        tie(m_pod, m_bench, m_fromPod);
        if (m_bench)
            tie(*m_bench, &m_pod, m_fromBench);
        QObject::connect(&m_timer, &QTimer::timeout, &run, [this] { flush(); });
        run.beginWith(m_pod, [this] {
            m_timer.start(kFlushMs);
            return m_recorder.open();
        });
    }

    void finish()
    {
        m_fromPod.finish();
        m_fromBench.finish();
    }

private:
    /// Bytes go on before they are looked at: the bridge shall cost no time.
    void tie(Link &from, Link *to, FrameTap &tap)
    {
        QObject::connect(&from, &Link::opened, &m_run, [&tap] { tap.begin(); });
        QObject::connect(&from, &Link::received, &m_run, [=, &from, &tap](const QByteArray &bytes) {
            if (!to || passOn(*to, bytes))
                tap.push(bytes);
            if (to)
                from.hold(to->unsent() > kMuchUnsent);
        });
        if (!to)
            return;
        const auto release = [to, &from] { from.hold(to->unsent() > kMuchUnsent); };
        QObject::connect(to, &Link::written, &m_run, release);
        QObject::connect(to, &Link::closed, &m_run, release);
    }

    /// Whether the bytes are to be recorded: those of the pod in any case, those of the bench if
    /// the pod takes them. That it doesn't is said once, until it takes something again.
    bool passOn(Link &to, const QByteArray &bytes)
    {
        const bool isTaken = to.send(bytes);
        if (&to != &m_pod)
            return true;
        if (!isTaken && m_isTaken)
            complain(m_pod.address().text +
                     QStringLiteral(": isn't there; what the bench sends is dropped"));
        m_isTaken = isTaken;
        return isTaken;
    }

    void take(const Record &record)
    {
        if (!m_recorder.take(record))
            m_run.end(kExitFailure);
    }

    void flush()
    {
        if (!m_recorder.flush())
            m_run.end(kExitFailure);
    }

    LinkRun &m_run;
    Recorder &m_recorder;
    const WireClock m_clock;
    Link &m_pod;
    Link *m_bench;
    FrameTap m_fromPod, m_fromBench;
    QTimer m_timer;
    bool m_isTaken = true;
};

int record(const QCommandLineParser &parser, const Wanted &wanted, Recorder &recorder)
{
    if (!recorder.hasFolder())
        return complain(recorder.error());
    LinkRun links(parser.isSet(QStringLiteral("reconnect")),
                  [](const QString &text) { complain(text); });
    Session session(links, wanted, recorder);
    const StopSignal stop;
    QObject::connect(&stop, &StopSignal::stopped, &links, [&links] { links.end(kExitDone); });
    if (wanted.time > 0)
        links.limit(wanted.time, kExitDone);
    const int code = links.run();
    session.finish();
    if (!recorder.hasBegun())
        return code == kExitDone ? complain(wanted.pod.text + QStringLiteral(": was never open"))
                                 : code;
    if (!recorder.close())
        return recorder.isUnread() ? kExitUnread : complain(recorder.error());
    complain(QStringLiteral("%1 frames recorded").arg(recorder.count()));
    return code;
}

int run(const QCommandLineParser &parser, const QStringList &words)
{
    Wanted wanted;
    QString error;
    if (!readWanted(parser, words, wanted, error))
        return complainOfUsage(error);
    const QString path = parser.value(QStringLiteral("output"));
    const Origin origin{wanted.isBridge
                            ? wanted.bench.text + QStringLiteral(" <> ") + wanted.pod.text
                            : wanted.pod.text,
                        wanted.pod.host, toolName()};
    const auto format =
        readForm(parser.value(QStringLiteral("as")), path, wanted.language, origin, error);
    if (!format)
        return complainOfUsage(error);
    Recorder recorder(path, *format, wanted.rotation);
    return record(parser, wanted, recorder);
}

} // namespace

const Verb kRecordVerb{"record", "<link>",   "record a link, or between bench and pod",
                       kText,    addOptions, run};

} // namespace wire
