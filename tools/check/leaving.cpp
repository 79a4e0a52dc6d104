#include "tools/check/runner.h"

// What a pod is left with once a group has done something to it.

namespace check {

namespace {

constexpr qint64 kLeaveTime = 2000000; // microseconds for each acknowledgement
constexpr qint64 kLeavePace = 30000;   // microseconds from frame to frame, which every pod keeps up

CaseResult rowOf(const Group &group)
{
    CaseResult row;
    row.id = group.id + QStringLiteral(".after");
    row.group = group.id;
    row.name = {QStringLiteral("结束时恢复吊舱"), QStringLiteral("the pod is left in order")};
    row.reason = group.warning;
    row.judgement = Judgement::Passed;
    return row;
}

} // namespace

/// The last steps of a group go out at once, whatever is on its way, and are judged after that: a
/// pod that talks, or is slow, would go on with what it does for seconds. A stop that comes before
/// they have gone out is the first one, and cuts nothing short.
void Runner::leaveInOrder(const Group &group, SessionResult &result)
{
    if (m_effects == kStill || group.after.isEmpty())
        return;
    bool isStopped = m_line.isStopped();
    for (const Step &step : group.after) {
        m_line.resume();
        if (goesOutOnce(step)) // a second one would undo it
            continue;
        write(step.writes.front());
        m_line.rest(m_line.now() + kLeavePace);
        isStopped = isStopped || m_line.isStopped();
    }
    m_line.resume();
    if (isStopped)
        m_watcher.leaves();
    const CaseResult row = left(group, isStopped);
    if (isStopped)
        m_line.stop();
    if (row.judgement == Judgement::Passed)
        return;
    m_watcher.caseEnds(row);
    result.cases.append(row);
}

/// Whether the pod has taken what it was left with. Of steps that it hasn't taken the first is
/// shown; those after it are asked all the same.
CaseResult Runner::left(const Group &group, bool &isStopped)
{
    CaseResult row = rowOf(group);
    for (const Step &step : group.after) {
        const Outcome outcome = leave(step, isStopped);
        if (row.judgement == Judgement::Passed)
            take(outcome, row);
        if (!m_line.isUsable())
            break;
    }
    return row;
}

/// Asks for one of them, once more where the first wish to stop comes meanwhile.
Outcome Runner::leave(Step step, bool &isStopped)
{
    step.time = qMin(step.time, kLeaveTime) + m_slowest;
    Outcome outcome = ask(step);
    if (m_line.isStopped() && !isStopped) {
        isStopped = true;
        m_watcher.leaves();
        m_line.resume();
        outcome = ask(step);
    }
    return m_line.isUsable() ? outcome : unanswered();
}

/// Why nobody knows what the pod was left with.
Outcome Runner::unanswered() const
{
    if (m_line.isLost())
        return {Judgement::Failed,
                LocalText{QStringLiteral("链路中断，吊舱可能未恢复：%1"),
                          QStringLiteral("the link was lost, the pod may be left as it was: %1")}
                    .arg(m_line.reason()),
                {}};
    return {Judgement::NotJudged,
            {QStringLiteral("恢复帧已发出，操作员未等待应答"),
             QStringLiteral("the frames have gone out, the user didn't wait for the answers")},
            {}};
}

} // namespace check
