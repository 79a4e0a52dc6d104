#include "tools/check/runner.h"

#include "tools/check/judge.h"

#include <algorithm>

namespace check {

namespace {

constexpr qint64 kQuietTime = 120000; // microseconds, after which nothing more is on its way
constexpr qint64 kQuietLimit = 3000000;
constexpr qint64 kListenTime = 2200000;
constexpr int kVersionOffset = 4;
constexpr int kHardwareOffset = 38;

LocalText notOver(wire::LinkAddress::Kind kind)
{
    const char *const names[] = {"TCP", "TCP", "UDP", "serial"};
    const QString name = QLatin1String(names[kind]);
    return {QStringLiteral("%1链路上不适用").arg(name),
            QStringLiteral("doesn't apply over %1").arg(name)};
}

/// Whether a case takes any answer for that to its frame, or its absence for silence.
bool hangsOnSilence(const Case &each)
{
    return std::any_of(each.steps.begin(), each.steps.end(), [](const Step &step) {
        return step.kind == StepKind::Quiet ||
               (step.kind == StepKind::Answer && !hasCommand(step.writes.value(0)));
    });
}

/// The command that the next answer is to name; 0 for none.
char awaitedAfter(const QVector<Step> &steps, int number)
{
    const auto isAnswer = [](const Step &step) { return step.kind == StepKind::Answer; };
    const auto next = std::find_if(steps.begin() + number, steps.end(), isAnswer);
    return next == steps.end() ? '\0' : next->writes.value(0).mid(kFixedSize, 1).append('\0')[0];
}

} // namespace

/// Of a pod that sends all the time nobody can say what answers what.
Outcome talks()
{
    return {Judgement::NotJudged,
            {QStringLiteral("吊舱不经询问也发送数据"),
             QStringLiteral("the pod also sends without being asked")},
            {}};
}

Runner::Runner(PodLine &line, const Plan &plan, Watcher &watcher)
    : m_line(line), m_plan(plan), m_watcher(watcher)
{
}

void Runner::run(SessionResult &result)
{
    for (const Group &group : m_plan.groups)
        result.groups.append({group.id, group.title});
    for (const Group &group : m_plan.groups)
        runGroup(group, result);
    result.versions = m_versions;
    result.ending = m_line.isLost()      ? Ending::LinkLost
                    : m_line.isStopped() ? Ending::BrokenOff
                                         : Ending::Whole;
    result.lossReason = m_line.isLost() ? m_line.reason() : QString();
    for (const Group &group : m_plan.measured)
        for (const Measure &measure : group.measures)
            if (m_stats.contains(measure.key))
                result.series.append({measure.id, measure.name, m_stats[measure.key].answerTimes,
                                      m_stats[measure.key].periods});
}

void Runner::runGroup(const Group &group, SessionResult &result)
{
    m_watcher.groupBegins(group);
    m_effects = kStill;
    for (const Case &each : group.cases) {
        m_watcher.caseBegins(each);
        CaseResult done = runCase(each);
        done.group = group.id;
        m_watcher.caseEnds(done);
        result.cases.append(done);
    }
    leaveInOrder(group, result);
}

/// Why a case can't be judged, as far as that is known before.
Outcome Runner::whyNot() const
{
    const auto notJudged = [](const LocalText &why) {
        return Outcome{Judgement::NotJudged, why, {}};
    };
    if (m_line.isLost())
        return notJudged({QStringLiteral("链路已中断"), QStringLiteral("the link was lost")});
    if (m_line.isStopped())
        return notJudged({QStringLiteral("操作员中断"), QStringLiteral("broken off by the user")});
    if (!m_essential.isEmpty())
        return notJudged(m_essential);
    return {};
}

/// Until it doesn't fail, as often as the case allows; `count` says how often that was.
Outcome Runner::attempts(const Case &each, int &count)
{
    Outcome outcome;
    for (count = 0; count < each.attempts;) {
        ++count;
        outcome = attempt(each);
        if (outcome.judgement != Judgement::Failed || !m_line.isUsable())
            break;
    }
    return outcome;
}

void take(const Outcome &outcome, CaseResult &result)
{
    result.judgement = outcome.judgement;
    result.why = outcome.why;
    result.evidence = outcome.evidence;
}

CaseResult Runner::runCase(const Case &each)
{
    CaseResult result;
    result.id = each.id;
    result.name = each.name;
    result.reason = each.reason;
    QElapsedTimer timer;
    timer.start();
    result.isNeutral = !each.links.isEmpty() && !each.links.contains(m_line.kind());
    Outcome outcome =
        result.isNeutral ? Outcome{Judgement::NotJudged, notOver(m_line.kind()), {}} : whyNot();
    const bool isRun = outcome.judgement == Judgement::Passed;
    if (isRun)
        outcome = attempts(each, result.attempts);
    take(outcome, result);
    result.figures = m_figures;
    result.seconds = double(timer.nsecsElapsed()) * 1e-9;
    m_figures.clear();
    if (each.isEssential)
        m_essentialCase = &each;
    if (isRun && outcome.judgement == Judgement::Failed)
        lookForAnswers(each);
    return result;
}

/// After a failure: whether there is any sense in going on.
void Runner::lookForAnswers(const Case &failedCase)
{
    if (failedCase.isEssential)
        m_essential = {QStringLiteral("“%1”未通过").arg(failedCase.name.zh),
                       QStringLiteral("\"%1\" has failed").arg(failedCase.name.en)};
    else if (m_essentialCase && m_answer.bytes.isEmpty() &&
             attempt(*m_essentialCase).judgement == Judgement::Failed)
        m_essential = {QStringLiteral("吊舱不再应答"),
                       QStringLiteral("the pod doesn't answer any more")};
}

Outcome Runner::attempt(const Case &each)
{
    m_figures.clear();
    m_remembered.clear();
    m_sent = m_answer = {};
    if (each.steps.front().kind != StepKind::Measure)
        settle();
    if (hangsOnSilence(each) && isTalkative())
        return talks();
    for (int i = 0; i < each.steps.size(); ++i) {
        m_awaited = awaitedAfter(each.steps, i);
        const Outcome outcome = runStep(each.steps[i]);
        if (!m_line.isUsable())
            return broken();
        if (outcome.judgement != Judgement::Passed)
            return outcome;
    }
    return {};
}

/// A case under way when the line ended: failed by the pod, or not judged for the user's wish.
Outcome Runner::broken() const
{
    if (m_line.isLost())
        return failed({QStringLiteral("链路中断：%1").arg(m_line.reason()),
                       QStringLiteral("the link was lost: %1").arg(m_line.reason())});
    return {Judgement::NotJudged,
            {QStringLiteral("操作员中断"), QStringLiteral("broken off by the user")},
            {}};
}

/// Waits until nothing more comes of what was asked before. What a pod that talks sends has no end,
/// so that there all is waited for that may be on its way.
void Runner::settle()
{
    const qint64 quiet = kQuietTime + m_slowest;
    const qint64 limit = m_line.now() + (m_isTalkative ? quiet : kQuietLimit + m_slowest);
    const PodLine::Take any = [this](const wire::Record &record) {
        noteAnswer(record);
        return true;
    };
    while (m_line.isUsable() && m_line.now() < limit)
        if (!m_line.listen(m_line.now() + quiet, any))
            return;
    m_isTalkative = m_isTalkative || m_line.isUsable();
}

/// Whether the pod also sends without being asked. What comes seldom is heard only by who listens
/// for a while; that is done once, before the first judgement that hangs on it.
bool Runner::isTalkative()
{
    if (m_hasListened || m_isTalkative)
        return m_isTalkative;
    m_hasListened = true;
    settle();
    const bool isHeard =
        m_line.listen(m_line.now() + kListenTime, [this](const wire::Record &record) {
            noteAnswer(record);
            return isGoodAnswer(record);
        });
    m_isTalkative = m_isTalkative || isHeard;
    return m_isTalkative;
}

void Runner::noteAnswer(const wire::Record &record)
{
    if (!isGoodAnswer(record))
        return;
    m_answer = record;
    const int named = quint8(namedBy(record.bytes));
    if (named != 0 || m_named < 0)
        m_named = named;
    if (m_versions.areKnown)
        return;
    const QByteArray &bytes = record.bytes;
    m_versions = {true, quint8(bytes[kVersionOffset]), quint8(bytes[kHardwareOffset]),
                  quint8(bytes[kHardwareOffset + 1]), quint8(bytes[kHardwareOffset + 2])};
}

Outcome Runner::failed(const LocalText &why) const
{
    Outcome outcome{Judgement::Failed, why, {}};
    for (const wire::Record *record : {&m_sent, &m_answer})
        if (!record->bytes.isEmpty())
            outcome.evidence.append(*record);
    std::stable_sort(outcome.evidence.begin(), outcome.evidence.end(),
                     [](const wire::Record &a, const wire::Record &b) { return a.time < b.time; });
    return outcome;
}

} // namespace check
