#include "tools/commandline/commandline.h"
#include "tools/commandline/stopsignal.h"
#include "tools/wire/inputs.h"
#include "tools/wire/linkrun.h"
#include "tools/wire/player.h"
#include "tools/wire/verbs.h"

#include <QFileInfo>

namespace wire {

namespace {

constexpr char kText[] =
    "Sends one side of a recording at its pace: what was sent, to a pod; over a link that listens\n"
    "what was received, so that it plays the pod to a bench, from the bench's connection on.\n"
    "`dump --help` lists what a link can be.\n"
    "\n"
    "  nacelle-wire replay run.pcapng tcp://192.168.144.121\n"
    "                      what was sent, to a pod\n"
    "  nacelle-wire replay run.pcapng tcp-listen://127.0.0.1:2332\n"
    "                      what was received, to a bench\n"
    "  nacelle-wire replay --side rx run.pcapng 'udp://127.0.0.1:2338?local=2337'\n"
    "                      the same by UDP, from now on\n"
    "  nacelle-wire replay --speed 10 --from 5min --to 6min --loop 3 run.pcapng "
    "tcp://192.168.144.121\n"
    "                      a minute three times, ten times as fast\n"
    "\n"
    "Each frame has its moment, counted from the first: one that is late doesn't delay the next.\n"
    "Times that go back count as no pause. A recording that comes by a pipe is played as it "
    "comes,\n"
    "and once. Ends with 1 when the link is lost or doesn't take all, with 130 when it is stopped\n"
    "before its end.";

void addOptions(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("side"), QStringLiteral("tx or rx: what is sent."),
                      QStringLiteral("direction")});
    parser.addOption({QStringLiteral("speed"), QStringLiteral("So many times as fast."),
                      QStringLiteral("factor"), QStringLiteral("1")});
    parser.addOption({QStringLiteral("gap"),
                      QStringLiteral("This pause between frames, whatever their times."),
                      QStringLiteral("time")});
    parser.addOption(
        {QStringLiteral("at-once"), QStringLiteral("As fast as the link takes them.")});
    parser.addOption({QStringLiteral("loop"), QStringLiteral("So often in all; 0 for ever."),
                      QStringLiteral("number")});
    parser.addOption({QStringLiteral("stats"), QStringLiteral("Say how late the frames were.")});
    addTimeOptions(parser);
    addReadOptions(parser);
}

struct Wanted
{
    QString path;
    LinkAddress address;
    ReadOptions options;
    Filter filter;
    Pace pace;
    int loops = 1;
};

bool readPace(const QCommandLineParser &parser, Wanted &wanted, QString &error)
{
    bool isGood = false;
    wanted.pace.speed = parser.value(QStringLiteral("speed")).toDouble(&isGood);
    wanted.pace.isAtOnce = parser.isSet(QStringLiteral("at-once"));
    if (!isGood || !(wanted.pace.speed >= 0.001 && wanted.pace.speed <= 1000000))
        error = QStringLiteral("--speed: a factor from 0.001 to 1000000 is needed");
    return error.isEmpty() && readDurationOption(parser, "gap", wanted.pace.gap, error);
}

/// Whether the recording can be read from its beginning again, as far as that is wanted.
bool readLoops(const QCommandLineParser &parser, Wanted &wanted, QString &error)
{
    const QFileInfo file(wanted.path);
    const bool isStream =
        wanted.path == QLatin1String("-") || (file.exists() && !file.isFile() && !file.isDir());
    if (!readCountOption(parser, "loop", 0, wanted.loops, error))
        return false;
    if (isStream && wanted.loops != 1)
        error = QStringLiteral("--loop: %1 can be read only once").arg(wanted.path);
    return error.isEmpty();
}

bool readSide(const QCommandLineParser &parser, Wanted &wanted, QString &error)
{
    const QString word = parser.value(QStringLiteral("side"));
    const bool isPod = wanted.address.kind == LinkAddress::TcpListen;
    wanted.filter.direction =
        word.isEmpty() ? (isPod ? Direction::Rx : Direction::Tx) : directionOf(word.toLatin1());
    if (*wanted.filter.direction == Direction::Unknown)
        error = QStringLiteral("--side %1: tx or rx").arg(word);
    return error.isEmpty();
}

bool readWanted(const QCommandLineParser &parser, const QStringList &words, Wanted &wanted,
                QString &error)
{
    wanted.path = words.value(0);
    if (words.size() != 2)
        error = QStringLiteral("a recording and a link are needed");
    return error.isEmpty() && readLinkAddress(words.at(1), wanted.address, error) &&
           readSide(parser, wanted, error) && readPace(parser, wanted, error) &&
           readLoops(parser, wanted, error) && readTimes(parser, wanted.filter, error) &&
           readReadOptions(parser, wanted.options, error);
}

/// The records of the recording that are wanted, from its beginning again where it loops.
class Loop
{
public:
    explicit Loop(Wanted wanted) : m_wanted(std::move(wanted)), m_left(m_wanted.loops) {}

    bool open()
    {
        m_filter = m_wanted.filter;
        m_reader = openInput(m_wanted.path, m_wanted.options, {}, m_error);
        m_count = 0;
        return m_reader != nullptr;
    }

    bool next(Record &record)
    {
        for (;;) {
            while (m_reader->next(record)) {
                ++m_count;
                if (m_filter.takes(record) && ++m_taken > 0)
                    return true;
            }
            if (m_error.isEmpty() && !m_reader->trouble().isEmpty())
                m_error = m_wanted.path + QStringLiteral(": ") + m_reader->trouble();
            const bool isLast = m_wanted.loops > 0 && --m_left == 0;
            if (isLast || m_count == 0 || m_taken == 0 || !open())
                return false;
        }
    }

    const QString &error() const { return m_error; }

    /// Once it has ended: whether all could be read; says what an operator should know of it.
    bool isWhole() const
    {
        sayRemark(m_wanted.path, m_filter);
        return m_error.isEmpty() || complain(m_error) == kExitDone;
    }

private:
    const Wanted m_wanted;
    int m_left;
    Filter m_filter;
    std::unique_ptr<RecordReader> m_reader;
    QString m_error;
    qint64 m_count = 0;
    qint64 m_taken = 0;
};

void sayLateness(const Player &player)
{
    complain(
        QStringLiteral("%1 frames in %2 s, late by at most %3 ms in the median, %4 ms in 99 of 100")
            .arg(player.count())
            .arg(double(player.elapsed()) / 1e6, 0, 'f', 3)
            .arg(double(player.lateness(0.5)) / 1e3)
            .arg(double(player.lateness(0.99)) / 1e3));
}

/// Has the player play from the link's opening on, at most as fast as the link takes it.
void tie(Link &link, Player &player, LinkRun &links)
{
    const auto isStarted = std::make_shared<bool>(false);
    QObject::connect(&link, &Link::opened, &player, [&player, isStarted] {
        if (!*isStarted)
            player.start();
        *isStarted = true;
    });
    QObject::connect(&link, &Link::written, &player, &Player::resume);
    QObject::connect(
        &player, &Player::finished, &links, [&] { links.endWhenSent(link); }, Qt::QueuedConnection);
}

int play(const Wanted &wanted, const std::shared_ptr<Loop> &loop, bool isMeasured)
{
    LinkRun links(false, [](const QString &text) { complain(text); });
    Link &link = links.add(wanted.address);
    const StopSignal stop;
    QObject::connect(&stop, &StopSignal::stopped, &links,
                     [&] { links.end(wanted.loops == 0 ? kExitDone : kExitStopped); });
    RecordFeed feed([loop](Record &record) { return loop->next(record); });
    Player player(
        wanted.pace, [&feed](Record &record) { return feed.take(record); },
        [&](const Record &record) {
            if (!link.send(record.bytes))
                links.endForNobody(link);
        },
        [&] { return !links.isEnded() && link.unsent() < kMuchUnsent; });
    tie(link, player, links);
    QObject::connect(&feed, &RecordFeed::ready, &player, &Player::resume);
    const int code = links.run();
    if (isMeasured && player.count() > 0)
        sayLateness(player);
    if (feed.isEnded() && !loop->isWhole())
        return kExitFailure;
    return player.count() == 0 && code == kExitDone
               ? complain(wanted.path + QStringLiteral(": there is nothing to send on that side"))
               : code;
}

int run(const QCommandLineParser &parser, const QStringList &words)
{
    Wanted wanted;
    QString error;
    if (!readWanted(parser, words, wanted, error))
        return complainOfUsage(error);
    const auto loop = std::make_shared<Loop>(wanted);
    if (!loop->open())
        return complain(loop->error());
    return play(wanted, loop, parser.isSet(QStringLiteral("stats")));
}

} // namespace

const Verb kReplayVerb{
    "replay", "<recording> <link>", "send a recording at its pace, or play the pod",
    kText,    addOptions,           run};

} // namespace wire
