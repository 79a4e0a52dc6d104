#include "console/commandframe.h"
#include "tools/commandline/commandline.h"
#include "tools/commandline/stopsignal.h"
#include "tools/wire/framefields.h"
#include "tools/wire/inputs.h"
#include "tools/wire/linkrun.h"
#include "tools/wire/verbs.h"

#include <QVector>

namespace wire {

namespace {

constexpr char kText[] =
    "Sends frames over a link, one after another: digits on the command line, or the records of\n"
    "standard input. `dump --help` lists what a link can be. Over UDP each leaves from a fresh "
    "port\n"
    "and answers are received on the local one, as with the bench.\n"
    "\n"
    "With --count, --for or --until-answer they are sent again every 30 ms unless --every says\n"
    "otherwise.\n"
    "\n"
    "With --until-answer the last of them is sent until the pod answers its command, and the "
    "answer\n"
    "is written; an empty command is answered by any frame with a right checksum. It ends with\n"
    "0 when the answer says success, with 1 when it says failure, and with 3 when there is none "
    "in\n"
    "time, or none but \"executing\". Stopped before it is done it ends with 130.\n"
    "\n"
    "  nacelle-wire compose command=photo | nacelle-wire send --until-answer "
    "tcp://192.168.144.121\n"
    "                      a command, with its answer awaited\n"
    "  nacelle-wire compose roll_control=100 flags=4 | nacelle-wire send --every 30ms --for 2s "
    "udp://192.168.144.121\n"
    "                      two seconds of control inputs\n"
    "  nacelle-wire send serial:///dev/ttyUSB0 A8E5480001000000000000…\n"
    "                      the digits of a frame";

constexpr qint64 kUsualTimeout = 3000000;
constexpr qint64 kUsualPause = 30000;
constexpr int kMostFrames = 100000;

void addOptions(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("every"),
                      QStringLiteral("Send again and again with this pause; 30ms where another "
                                     "option has them sent again."),
                      QStringLiteral("time")});
    parser.addOption(
        {QStringLiteral("count"), QStringLiteral("Send each so often."), QStringLiteral("number")});
    parser.addOption(
        {QStringLiteral("for"), QStringLiteral("Send for this time."), QStringLiteral("time")});
    parser.addOption(
        {QStringLiteral("until-answer"), QStringLiteral("Send until the pod answers.")});
    parser.addOption({QStringLiteral("timeout"), QStringLiteral("Wait so long for an answer: 3s."),
                      QStringLiteral("time")});
}

struct Wanted
{
    LinkAddress address;
    QVector<QByteArray> frames;
    qint64 every = 0; ///< microseconds, 0 for one round alone
    qint64 time = 0;
    qint64 timeout = kUsualTimeout;
    int count = 0;
    bool isAnswered = false;

    /// True where only the user ends it.
    bool isEndless() const { return every > 0 && time == 0 && count == 0 && !isAnswered; }
};

bool readFrames(const QStringList &words, QVector<QByteArray> &frames, QString &error)
{
    for (const QString &word : words.isEmpty() ? QStringList{QStringLiteral("-")} : words) {
        const auto reader = openInput(word, {}, {}, error);
        if (!reader)
            return false;
        for (Record record; frames.size() <= kMostFrames && reader->next(record);)
            frames.append(record.bytes);
        error = frames.size() > kMostFrames
                    ? QStringLiteral("more than %1 frames; `replay` sends them").arg(kMostFrames)
                    : reader->trouble();
        if (!error.isEmpty())
            return false;
    }
    if (frames.isEmpty())
        error = QStringLiteral("there is no frame to send");
    return !frames.isEmpty();
}

bool readWanted(const QCommandLineParser &parser, const QStringList &words, Wanted &wanted,
                QString &error)
{
    const bool isCounted = parser.isSet(QStringLiteral("count"));
    wanted.isAnswered = parser.isSet(QStringLiteral("until-answer"));
    if (isCounted || wanted.isAnswered || parser.isSet(QStringLiteral("for")))
        wanted.every = kUsualPause;
    if (words.isEmpty())
        error = QStringLiteral("a link is needed");
    return !words.isEmpty() && readLinkAddress(words.first(), wanted.address, error) &&
           readDurationOption(parser, "every", wanted.every, error) &&
           readDurationOption(parser, "for", wanted.time, error) &&
           readDurationOption(parser, "timeout", wanted.timeout, error) &&
           readCountOption(parser, "count", isCounted ? 1 : 0, wanted.count, error);
}

/// Sends what is wanted and looks at what comes back.
class Sender
{
public:
    Sender(LinkRun &run, const Wanted &wanted, Output &output)
        : m_run(run), m_wanted(wanted), m_output(output), m_link(run.add(wanted.address)),
          m_tap(Cut::Searching, Direction::Rx, m_clock,
                [this](const Record &record) { take(record); })
    {
        QObject::connect(&m_link, &Link::opened, &run, [this] { begin(); });
        QObject::connect(&m_link, &Link::received, &run,
                         [this](const QByteArray &bytes) { m_tap.push(bytes); });
        QObject::connect(&m_timer, &FarTimer::timeout, &run, [this] { sendRound(); });
        QObject::connect(&m_patience, &FarTimer::timeout, &run, [&run] { run.end(kExitNoAnswer); });
    }

private:
    void begin()
    {
        if (m_wanted.isAnswered)
            m_patience.start(m_wanted.timeout);
        if (m_wanted.time > 0)
            m_run.limit(m_wanted.time, m_wanted.isAnswered ? kExitNoAnswer : kExitDone);
        sendRound();
        if (m_wanted.every > 0 && !m_isDone)
            m_timer.repeat(m_wanted.every);
    }

    void sendRound()
    {
        if (m_link.unsent() > kMuchUnsent)
            return;
        // Once it is under way, the last frame is what is waited for.
        const int from = m_wanted.isAnswered && m_rounds > 0 ? m_wanted.frames.size() - 1 : 0;
        for (int i = from; i < m_wanted.frames.size(); ++i) {
            if (!m_link.send(m_wanted.frames.at(i)))
                return m_run.endForNobody(m_link);
        }
        ++m_rounds;
        const int most = m_wanted.count > 0 ? m_wanted.count : m_wanted.every > 0 ? 0 : 1;
        if (most == 0 || m_rounds < most)
            return;
        m_timer.stop();
        m_isDone = true;
        if (!m_wanted.isAnswered)
            m_run.endWhenSent(m_link);
    }

    void take(const Record &record)
    {
        const QByteArray &sent = m_wanted.frames.last();
        const bool isIdle = sent.size() <= kFixedSize || sent[kFixedSize] == 0;
        const bool isMine =
            isIdle ? kindOf(record.bytes) == FrameKind::Gcu : isAnswer(sent, record.bytes);
        if (m_isOver || !m_wanted.isAnswered || !isMine || verdictOf(record.bytes) != Verdict::Ok)
            return;
        const quint8 result = isIdle ? 0 : quint8(record.bytes[kFeedbackOffset + 1]);
        if (result > 1)
            return;
        m_isOver = true; // more of them may come with it
        hexFormat()->add(record, m_output.buffer());
        m_run.end(result == 0 ? int(kExitDone)
                              : complain(QStringLiteral("the pod answers: failure")));
    }

    LinkRun &m_run;
    const Wanted &m_wanted;
    Output &m_output;
    const WireClock m_clock;
    Link &m_link;
    FrameTap m_tap;
    FarTimer m_timer, m_patience;
    int m_rounds = 0;
    bool m_isDone = false;
    bool m_isOver = false;
};

int run(const QCommandLineParser &parser, const QStringList &words)
{
    Wanted wanted;
    QString error;
    if (!readWanted(parser, words, wanted, error))
        return complainOfUsage(error);
    if (!readFrames(words.mid(1), wanted.frames, error))
        return complain(error);
    Output output;
    if (!output.open(QString()))
        return complain(output.error());
    LinkRun links(false, [](const QString &text) { complain(text); });
    Sender sender(links, wanted, output);
    const StopSignal stop;
    QObject::connect(&stop, &StopSignal::stopped, &links,
                     [&] { links.end(wanted.isEndless() ? kExitDone : kExitStopped); });
    int code = links.run();
    if (code == kExitNoAnswer)
        code = complain(QStringLiteral("no answer from ") + wanted.address.text, kExitNoAnswer);
    if (output.close())
        return code;
    return output.isUnread() ? kExitUnread : complain(output.error());
}

} // namespace

const Verb kSendVerb{"send", "<link> [frame...]", "send frames over a link, and wait for an answer",
                     kText,  addOptions,          run};

} // namespace wire
