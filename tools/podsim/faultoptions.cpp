#include "tools/podsim/faultoptions.h"

#include "tools/podsim/optionreader.h"

#include <limits>
#include <variant>

namespace podsim {

namespace {

constexpr int kMostAnswers = 1000000;
constexpr int kMostMs = 60000;

using Target = std::variant<int FaultOptions::*, quint32 FaultOptions::*,
                            std::optional<quint8> FaultOptions::*, bool FaultOptions::*>;

/// An option, its text, its place, and the limits of a number.
struct FaultRow
{
    const char *name;
    const char *value; ///< name of the value, empty for a switch
    const char *text;
    Target target;
    qint64 least = 0;
    qint64 most = 0;
};

// clang-format off
constexpr FaultRow kFaults[] = {
    {"split", "bytes", "Write answers in pieces of so many bytes.",
     &FaultOptions::split, 1, 65535},
    {"coalesce", "count", "Write so many answers together.",
     &FaultOptions::coalesce, 1, 1000},
    {"delay", "ms", "Answer so many milliseconds late.",
     &FaultOptions::delay, 0, kMostMs},
    {"drop", "n", "Leave out every nth answer.",
     &FaultOptions::drop, 1, kMostAnswers},
    {"noise", "bytes", "Write so many bytes of noise before each answer.",
     &FaultOptions::noise, 0, 65535},
    {"bad-crc", "n", "Give every nth answer a wrong checksum.",
     &FaultOptions::badCrc, 1, kMostAnswers},
    {"bad-length", "n", "Give every nth answer a wrong length field.",
     &FaultOptions::badLength, 1, kMostAnswers},
    {"seed", "number", "Start the noise from this number: 1.",
     &FaultOptions::seed, 0, std::numeric_limits<quint32>::max()},
    {"result", "code", "Answer commands with this result, 0 to 255: 0 success, 1 failure, "
                       "any other executing. Only with 0 are they carried out.",
     &FaultOptions::result, 0, 255},
    {"ack-after", "n", "Answer a command n times with \"executing\" before its result.",
     &FaultOptions::ackAfter, 0, kMostAnswers},
    {"silent", "", "Read, never answer.",
     &FaultOptions::isSilent},
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
        if (const auto value = m_reader.number(m_row.name, m_row.least, m_row.most))
            m_faults.*field = static_cast<Number>(*value);
    }

    void operator()(bool FaultOptions::*field) const { m_faults.*field = true; }

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
