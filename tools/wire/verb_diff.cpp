#include "tools/commandline/commandline.h"
#include "tools/wire/decode.h"
#include "tools/wire/inputs.h"
#include "tools/wire/recorddiff.h"
#include "tools/wire/verbs.h"

#include <QMap>

namespace wire {

namespace {

constexpr char kText[] =
    "Compares two recordings frame by frame. Of what differs a line is written: - for a frame "
    "that\n"
    "the second hasn't, + for one that the first hasn't, ~ for one that has changed, with its\n"
    "fields. Frames are laid beside those that they have most in common with, whatever fields "
    "differ\n"
    "throughout. Then what came to how much, which fields changed in how many frames, and the\n"
    "timing, for which a clock that was set back is no pause.\n"
    "\n"
    "  nacelle-wire diff firmware1.pcapng firmware2.pcapng\n"
    "                      all that differs\n"
    "  nacelle-wire diff --summary --kind gcu before.pcapng after.pcapng\n"
    "                      which of the pod's fields differ\n"
    "\n"
    "Ends with 0 when all frames are equal, with 1 when they aren't or an input is damaged.";

void addOptions(QCommandLineParser &parser)
{
    parser.addOption(
        {QStringLiteral("summary"), QStringLiteral("Only the numbers, not each frame.")});
    addReadOptions(parser);
    addFilterOptions(parser);
    addOutputOption(parser);
}

/// Writes the lines of a comparison, and counts.
class Report
{
public:
    Report(Output &output, bool isShort) : m_output(output), m_isShort(isShort) {}

    void take(const RecordDiff::Step &step)
    {
        if (step.isEqual())
            ++m_equal;
        else if (!step.hasAfter)
            putFrame('-', step.before, m_lost);
        else if (!step.hasBefore)
            putFrame('+', step.after, m_added);
        else
            putChange(step);
    }

    bool isEqual() const { return m_lost + m_added + m_changed == 0; }

    void putCounts(const Timing &before, const Timing &after)
    {
        TextBuffer &out = m_output.buffer();
        out.put(QStringLiteral("%1 equal, %2 lost, %3 added, %4 changed\n")
                    .arg(m_equal)
                    .arg(m_lost)
                    .arg(m_added)
                    .arg(m_changed));
        for (auto field = m_fields.begin(); field != m_fields.end(); ++field)
            out.put(QStringLiteral("  %1 in %2\n")
                        .arg(QString::fromUtf8(field.key()))
                        .arg(field.value()));
        putTiming("first", before);
        putTiming("second", after);
    }

private:
    void putFrame(char sign, const Record &record, qint64 &count)
    {
        ++count;
        if (m_isShort)
            return;
        m_output.buffer().put(sign);
        m_output.buffer().put(' ');
        m_lines->add(record, m_output.buffer());
    }

    void putChange(const RecordDiff::Step &step)
    {
        ++m_changed;
        QByteArray text;
        for (const FieldChange &change : changesOf(step.before.bytes, step.after.bytes)) {
            ++m_fields[change.id];
            text += (text.isEmpty() ? " " : ", ") + change.id + ' ' + change.before + " -> " +
                    change.after;
        }
        if (m_isShort)
            return;
        TextBuffer &out = m_output.buffer();
        out.put("~ (");
        if (step.before.time != kNoTime)
            out.putTime(step.before.time);
        out.put(") ");
        out.put(wordOf(kindOf(step.before.bytes)));
        out.put(text);
        out.put('\n');
    }

    void putTiming(const char *name, const Timing &timing)
    {
        const auto seconds = [](qint64 micros) {
            return QString::number(double(micros) / 1e6, 'f', 6);
        };
        QString text = QStringLiteral("%1: %2 frames").arg(QLatin1String(name)).arg(timing.frames);
        if (timing.hasTimes)
            text += QStringLiteral(" in %1 s, longest gap %2 s")
                        .arg(seconds(timing.length), seconds(timing.longestGap));
        if (timing.answers > 0)
            text += QStringLiteral(", %1 answers after %2 s in the mean, %3 s at most")
                        .arg(timing.answers)
                        .arg(seconds(timing.answerTime / timing.answers),
                             seconds(timing.longestAnswer));
        m_output.buffer().put(text + QLatin1Char('\n'));
    }

    Output &m_output;
    bool m_isShort;
    const std::unique_ptr<FrameFormat> m_lines = lineFormat();
    qint64 m_equal = 0, m_lost = 0, m_added = 0, m_changed = 0;
    QMap<QByteArray, qint64> m_fields;
};

/// A reader with its filter, and the exit code that its troubles make.
struct Input
{
    std::unique_ptr<RecordReader> reader;
    Filter filter;

    bool open(const QString &word, const ReadOptions &options, QString &error)
    {
        reader = openInput(word, options, {}, error);
        return reader != nullptr;
    }

    bool next(Record &record)
    {
        while (reader->next(record))
            if (filter.takes(record))
                return true;
        return false;
    }
};

int compare(Input (&inputs)[2], const QStringList &words, Output &output, bool isShort)
{
    RecordDiff diff([&](Record &record) { return inputs[0].next(record); },
                    [&](Record &record) { return inputs[1].next(record); });
    Report report(output, isShort);
    for (RecordDiff::Step step; diff.next(step) && output.settle();)
        report.take(step);
    report.putCounts(diff.timingBefore(), diff.timingAfter());
    int code = report.isEqual() ? kExitDone : kExitFailure;
    for (int i = 0; i < 2; ++i) {
        sayRemark(words.at(i), inputs[i].filter);
        if (!inputs[i].reader->trouble().isEmpty())
            code = complain(words.at(i) + QStringLiteral(": ") + inputs[i].reader->trouble());
    }
    return output.close() ? code : complain(output.error());
}

int run(const QCommandLineParser &parser, const QStringList &words)
{
    ReadOptions options;
    Filter filter;
    QString error;
    if (!readReadOptions(parser, options, error) || !readFilter(parser, filter, error))
        return complainOfUsage(error);
    if (words.size() != 2)
        return complainOfUsage(QStringLiteral("two recordings are needed"));
    const QString target = parser.value(QStringLiteral("output"));
    if (!mayWrite(target, words, error))
        return complainOfUsage(error);
    Input inputs[2] = {{nullptr, filter}, {nullptr, filter}};
    for (int i = 0; i < 2; ++i)
        if (!inputs[i].open(words.at(i), options, error))
            return complain(error);
    // Only now: a mistyped name empties no file.
    Output output;
    if (!output.open(target))
        return complain(output.error());
    return compare(inputs, words, output, parser.isSet(QStringLiteral("summary")));
}

} // namespace

const Verb kDiffVerb{"diff", "<first> <second>", "what two recordings differ in",
                     kText,  addOptions,         run};

} // namespace wire
