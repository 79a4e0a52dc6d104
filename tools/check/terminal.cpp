#include "tools/check/terminal.h"

#include "tools/commandline/speech.h"

#include <cstdio>
#include <cstdlib>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

namespace check {

namespace {

constexpr int kIdWidth = 29;
constexpr qint64 kProgressAfter = 1000; // milliseconds
constexpr qint64 kProgressPause = 250;
constexpr const char *kColours[] = {"\x1b[32m", "\x1b[1;31m", "\x1b[33m"};
constexpr const char *kPlain = "\x1b[0m";

bool isTerminal(int descriptor)
{
#ifdef Q_OS_WIN
    return _isatty(descriptor) != 0;
#else
    return isatty(descriptor) != 0;
#endif
}

/// By the usual rules of terminal programs; a console of Windows may not know the sequences.
bool wantsColours()
{
#ifdef Q_OS_WIN
    return false;
#else
    return isTerminal(1) && !std::getenv("NO_COLOR");
#endif
}

/// Columns that a text takes: two a Chinese character.
int widthOf(const QString &text)
{
    int width = 0;
    for (const QChar c : text)
        width += c.unicode() >= 0x2E80 ? 2 : 1;
    return width;
}

QString padded(const QString &text, int width)
{
    return text + QString(qMax(1, width - widthOf(text)), QLatin1Char(' '));
}

QString figureText(const CaseResult &result)
{
    QStringList texts;
    for (const Figure &figure : result.figures)
        texts.append(QString::number(figure.value, 'g', 6) +
                     (figure.unit.isEmpty() ? QString() : QLatin1Char(' ') + figure.unit));
    return texts.isEmpty() ? QString()
                           : QStringLiteral("  [%1]").arg(texts.join(QStringLiteral(", ")));
}

void say(const QString &text)
{
    writeLine(stdout, text);
}

void listFrame(const QByteArray &bytes, const QString &times)
{
    say(QStringLiteral("    %1  %2")
            .arg(times, 10)
            .arg(QString::fromLatin1(bytes.toHex().toUpper())));
}

/// How often a step sends a frame that goes out again and again: at most so often.
qint64 mostOf(const Step &step)
{
    return (step.time + step.every - 1) / step.every;
}

bool isRepeated(const Step &step)
{
    return step.kind == StepKind::Ask || step.kind == StepKind::Hold ||
           step.kind == StepKind::Reach;
}

QString atMost(qint64 times)
{
    return QStringLiteral("<= %1 x").arg(times);
}

/// Once, so many times, or again and again for its time.
QString timesOf(const Step &step)
{
    return isRepeated(step) && !goesOutOnce(step) ? atMost(mostOf(step))
                                                  : QStringLiteral("%1 x").arg(step.times);
}

void listSteps(const QVector<Step> &steps)
{
    for (const Step &step : steps) {
        if (step.kind == StepKind::Answer)
            continue;
        for (const QByteArray &bytes : step.writes)
            listFrame(bytes, timesOf(step));
        if (isRepeated(step) && goesOutOnce(step))
            listFrame(idleFrame(), atMost(mostOf(step) - 1));
    }
}

/// How often each frame of a measure goes out.
QString timesOf(const Plan &plan, const Measure &measure)
{
    const qint64 all = cyclesOf(plan, measure);
    return QStringLiteral("%1 x").arg((all + measure.frames.size() - 1) / measure.frames.size());
}

/// What goes out beside the frames of the cases, wherever one asks for a command.
void listFramesBetween(wire::Language language)
{
    say(language == wire::Language::Chinese ? QStringLiteral("同一命令的两次询问之间：")
                                            : QStringLiteral("between two of one command:"));
    for (const QByteArray &frame : framesBetween())
        listFrame(frame, QStringLiteral("n x"));
}

} // namespace

bool isInputTerminal()
{
    return isTerminal(0);
}

Terminal::Terminal(wire::Language language)
    : m_language(language), m_hasColours(wantsColours()), m_hasProgress(isTerminal(2))
{
}

void Terminal::groupBegins(const Group &group)
{
    say(group.title.in(m_language) + QStringLiteral(" (%1)").arg(group.id));
}

void Terminal::caseBegins(const Case &each)
{
    m_name = each.id;
    m_clock.start();
    m_next = kProgressAfter;
}

void Terminal::progress(qint64 done, qint64 whole)
{
    if (!m_hasProgress || m_clock.elapsed() < m_next || whole <= 0)
        return;
    std::fprintf(stderr, "\r  %s %3d %%", m_name.toUtf8().constData(), int(100 * done / whole));
    std::fflush(stderr);
    m_isShown = true;
    m_next = m_clock.elapsed() + kProgressPause;
}

void Terminal::clear()
{
    if (m_isShown)
        std::fprintf(stderr, "\r%*s\r", int(m_name.size()) + 10, "");
    m_isShown = false;
}

QString Terminal::coloured(const QString &text, Judgement judgement) const
{
    return m_hasColours ? QLatin1String(kColours[int(judgement)]) + text + QLatin1String(kPlain)
                        : text;
}

void Terminal::caseEnds(const CaseResult &result)
{
    clear();
    QString line = QStringLiteral("  ") +
                   coloured(padded(wordOf(result.judgement).in(m_language), 11), result.judgement) +
                   padded(result.id, kIdWidth) + result.name.in(m_language) + figureText(result);
    if (result.attempts > 1)
        line += m_language == wire::Language::Chinese
                    ? QStringLiteral("（第 %1 次）").arg(result.attempts)
                    : QStringLiteral(" (attempt %1)").arg(result.attempts);
    if (!result.why.isEmpty())
        line += QStringLiteral(": ") + result.why.in(m_language);
    say(line);
    std::fflush(stdout);
}

void Terminal::leaves()
{
    clear();
    writeLine(stderr, m_language == wire::Language::Chinese
                          ? QStringLiteral("正在恢复吊舱；再按一次则不等待其应答。")
                          : QStringLiteral("The pod is being left in order; another press doesn't "
                                           "wait for its answers."));
}

void Terminal::sessionEnds(const SessionResult &result)
{
    const Judgement judgement = result.isPassed() ? Judgement::Passed : Judgement::Failed;
    QStringList counts;
    for (const Judgement each : {Judgement::Passed, Judgement::Failed, Judgement::NotJudged})
        counts.append(QStringLiteral("%1 %2")
                          .arg(result.count(each))
                          .arg(wordOf(each).in(m_language).toLower()));
    say(coloured(verdictOf(result).in(m_language), judgement) + QStringLiteral(" – ") +
        counts.join(QStringLiteral(", ")));
}

void listFrames(const Plan &plan, wire::Language language)
{
    listFramesBetween(language);
    for (const Group &group : plan.measured)
        for (const Measure &measure : group.measures) {
            if (!usesMeasure(plan, measure))
                continue;
            say(measure.id + QStringLiteral(": ") + measure.name.in(language));
            for (const QByteArray &frame : measure.frames)
                listFrame(frame, timesOf(plan, measure));
        }
    for (const Group &group : plan.groups) {
        for (const Case &each : group.cases) {
            say(each.id + QStringLiteral(": ") + each.name.in(language));
            listSteps(each.steps);
        }
        if (!group.after.isEmpty())
            say(group.id + (language == wire::Language::Chinese ? QStringLiteral("：结束时")
                                                                : QStringLiteral(": at its end")));
        listSteps(group.after);
    }
}

void listCases(const QVector<Group> &groups, wire::Language language)
{
    for (const Group &group : groups) {
        say(padded(group.id, kIdWidth) + group.title.in(language) +
            (group.warning.isEmpty() ? QString()
                                     : QStringLiteral(": ") + group.warning.in(language)));
        for (const Case &each : group.cases)
            say(QStringLiteral("  ") + padded(each.id, kIdWidth) + each.name.in(language));
    }
}

} // namespace check
