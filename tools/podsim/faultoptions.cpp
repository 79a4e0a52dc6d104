#include "tools/podsim/faultoptions.h"

#include "tools/podsim/optionreader.h"

#include <QStringList>

#include <limits>
#include <variant>

namespace podsim {

namespace {

constexpr int kMostAnswers = 1000000;
constexpr int kMostMs = 60000;
constexpr int kMostPad = 65000; // with all the rest, a datagram still holds it
constexpr double kFullTurn = 360;

/// A value that is no plain number: what takes it, false if it can't, and what is needed.
struct TextRule
{
    bool (*take)(const QString &text, FaultOptions &faults);
    const char *need;
};

using Target = std::variant<int FaultOptions::*, quint32 FaultOptions::*, double FaultOptions::*,
                            std::optional<quint8> FaultOptions::*, bool FaultOptions::*, TextRule>;

/// An option, its text, its place, and the limits of a number. A value called "hex" is read so.
struct FaultRow
{
    const char *name;
    const char *value; ///< name of the value, empty for a switch
    const char *text;
    Target target;
    double least = 0;
    double most = 0;
};

bool takeLate(const QString &text, FaultOptions &faults)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    faults.lateEvery = parts[0].toInt();
    faults.lateBy = parts.value(1).toInt();
    return parts.size() == 2 && faults.lateEvery >= 1 && faults.lateEvery <= kMostAnswers &&
           faults.lateBy >= 1 && faults.lateBy <= kMostMs;
}

bool takeFlags(const QString &text, FaultOptions &faults)
{
    const QByteArray bytes = QByteArray::fromHex(text.toLatin1());
    if (bytes.size() != 2 || bytes.toHex() != text.toLower().toLatin1())
        return false;
    faults.flags[0] = quint8(bytes[0]);
    faults.flags[1] = quint8(bytes[1]);
    return true;
}

bool takeIgnored(const QString &text, FaultOptions &faults)
{
    for (const QString &part : text.split(QLatin1Char(','))) {
        const int code = part.toInt(nullptr, 16);
        if (code < 1 || code > 0xFF)
            return false;
        faults.ignored.append(char(code));
    }
    return true;
}

constexpr TextRule kLateRule{takeLate,
                             "a count and milliseconds up to 60000 are needed, like 5:200"};
constexpr TextRule kFlagsRule{takeFlags, "four hexadecimal digits are needed"};
constexpr TextRule kIgnoreRule{takeIgnored, "codes from 1 to FF are needed, like 20,21"};

// clang-format off
constexpr FaultRow kFaults[] = {
    {"split", "bytes", "Write answers in pieces of so many bytes.",
     &FaultOptions::split, 1, 65535},
    {"coalesce", "count", "Write so many answers together.",
     &FaultOptions::coalesce, 1, 1000},
    {"delay", "ms", "Answer so many milliseconds late.",
     &FaultOptions::delay, 0, kMostMs},
    {"late", "n:ms", "Send every nth answer so many milliseconds late; those after it wait for it.",
     kLateRule},
    {"jitter", "ms", "Send each answer up to so many milliseconds late, at random, in order.",
     &FaultOptions::jitter, 1, kMostMs},
    {"drop", "n", "Leave out every nth answer.",
     &FaultOptions::drop, 1, kMostAnswers},
    {"double", "n", "Send every nth answer twice.",
     &FaultOptions::twice, 1, kMostAnswers},
    {"swap", "n", "Send every nth answer after the one that follows it.",
     &FaultOptions::swap, 1, kMostAnswers},
    {"noise", "bytes", "Write so many bytes of noise before each answer.",
     &FaultOptions::noise, 0, 65535},
    {"bad-crc", "n", "Give every nth answer a wrong checksum.",
     &FaultOptions::badCrc, 1, kMostAnswers},
    {"bad-length", "n", "Give every nth answer a wrong length field.",
     &FaultOptions::badLength, 1, kMostAnswers},
    {"seed", "number", "Start noise and jitter from this number: 1.",
     &FaultOptions::seed, 0, std::numeric_limits<quint32>::max()},
    {"version-byte", "hex", "Version byte of the answers: 1.",
     &FaultOptions::version, 0, 0xFF},
    {"lie-mode", "hex", "Mode byte of the answers, whatever the mode is.",
     &FaultOptions::mode, 0, 0xFF},
    {"flags", "hex", "Both flag bytes of the answers, as four digits.", kFlagsRule},
    {"reserved", "hex", "Fill both reserved ranges of the answers, 30-36 and 63-68, with this byte.",
     &FaultOptions::reserved, 0, 0xFF},
    {"no-subframe", "", "Leave the sub-frame out: its header and bytes 38-62 are 0.",
     &FaultOptions::noSubFrame},
    {"pad", "bytes", "Put so many zero bytes after the feedback, with length and checksum right.",
     &FaultOptions::pad, 1, kMostPad},
    {"result", "code", "Answer commands with this result, 0 to 255: 0 success, 1 failure, "
                       "any other executing. Only with 0 are they carried out.",
     &FaultOptions::result, 0, 255},
    {"ack-after", "n", "Answer a command n times with \"executing\" before its result.",
     &FaultOptions::ackAfter, 0, kMostAnswers},
    {"wrong-code", "", "Name another command in the feedback than the one that came: its code + 1.",
     &FaultOptions::wrongCode},
    {"no-ack", "", "Carry commands out, but give no feedback.",
     &FaultOptions::noAck},
    {"accept-unknown", "", "Answer commands that aren't known, or whose payload is too short, with "
                           "success.",
     &FaultOptions::acceptUnknown},
    {"ignore", "hex,hex", "Neither carry out nor acknowledge commands with these codes.",
     kIgnoreRule},
    {"angle-offset", "deg", "Add so many degrees to all angles of the answers but the absolute yaw.",
     &FaultOptions::angleOffset, -kFullTurn, kFullTurn},
    {"pitch-offset", "deg", "Add so many degrees to the absolute pitch of the answers.",
     &FaultOptions::pitchOffset, -kFullTurn, kFullTurn},
    {"drift", "deg/s", "Have the absolute yaw of the answers run away by so many degrees a second.",
     &FaultOptions::drift, -kFullTurn, kFullTurn},
    {"drift-pitch", "deg/s", "Have relative and absolute pitch of the answers run away by so many "
                             "degrees a second.",
     &FaultOptions::driftPitch, -kFullTurn, kFullTurn},
    {"stuck", "", "Keep all angles of the answers at those of the first answer.",
     &FaultOptions::stuck},
    {"slow", "factor", "Turn with so much of the gimbal's speed, 0.01 to 1.",
     &FaultOptions::speed, 0.01, 1},
    {"answer-broken", "", "Answer frames with a wrong checksum or length like idle ones.",
     &FaultOptions::answerBroken},
    {"deaf-after-broken", "", "Pass over the 3 good frames that follow a broken one or noise.",
     &FaultOptions::deafAfterBroken},
    {"no-reassembly", "", "Take only a whole frame at the beginning of what one read brings; "
                          "lose the rest.",
     &FaultOptions::noReassembly},
    {"silent", "", "Read, never answer.",
     &FaultOptions::isSilent},
    {"hang-after", "n", "Read on after n answers, but answer no more.",
     &FaultOptions::hangAfter, 1, kMostAnswers},
    {"leave-after", "n", "Close all links and end after n answers.",
     &FaultOptions::leaveAfter, 1, kMostAnswers},
};
// clang-format on

/// Puts the value of one row into its place.
class FaultTaker
{
public:
    FaultTaker(OptionReader &reader, FaultOptions &faults, const FaultRow &row)
        : m_reader(reader), m_faults(faults), m_row(row)
    {
    }

    template <typename Number>
    void operator()(Number FaultOptions::*field) const
    {
        const int base = QLatin1String(m_row.value) == QLatin1String("hex") ? 16 : 10;
        if (const auto value =
                m_reader.number(m_row.name, qint64(m_row.least), qint64(m_row.most), base))
            m_faults.*field = static_cast<Number>(*value);
    }

    void operator()(double FaultOptions::*field) const
    {
        m_faults.*field =
            m_reader.decimal(m_row.name, m_row.least, m_row.most).value_or(m_faults.*field);
    }

    void operator()(bool FaultOptions::*field) const { m_faults.*field = true; }

    void operator()(const TextRule &rule) const
    {
        if (!rule.take(m_reader.text(m_row.name), m_faults))
            m_reader.refuse(m_row.name, QLatin1String(rule.need));
    }

private:
    OptionReader &m_reader;
    FaultOptions &m_faults;
    const FaultRow &m_row;
};

} // namespace

void addFaultOptions(QCommandLineParser &parser)
{
    for (const FaultRow &row : kFaults)
        parser.addOption(
            {QLatin1String(row.name), QLatin1String(row.text), QLatin1String(row.value)});
}

void readFaults(OptionReader &reader, FaultOptions &faults)
{
    for (const FaultRow &row : kFaults)
        if (reader.has(row.name))
            std::visit(FaultTaker(reader, faults, row), row.target);
}

} // namespace podsim
