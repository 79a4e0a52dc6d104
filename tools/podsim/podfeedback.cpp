#include "tools/podsim/podfeedback.h"

#include "tools/podsim/podcommands.h"

#include <utility>

namespace podsim {

namespace {

constexpr qint64 kRepeatMs = 200;

QByteArray feedbackOf(const QByteArray &area, quint8 result)
{
    return area.left(1) + char(result);
}

} // namespace

PodAnswer PodFeedback::take(PodState &state, const QByteArray &area, qint64 now)
{
    PodAnswer answer;
    const bool isIdle = area[0] == '\0';
    const bool isIgnored = m_options.ignored.contains(area[0]);
    const bool isRepeated = isRepeat(area, now);
    if (!isIdle)
        answer.kind = isRepeated ? PodAnswer::Repeat : PodAnswer::New;
    if (answer.kind == PodAnswer::New && isIgnored)
        answer.kind = PodAnswer::Ignored;
    if (answer.kind == PodAnswer::New) {
        m_pending = area;
        m_left = m_options.ackAfter;
    }
    if (!m_pending.isEmpty())
        answer.feedback = progress(state, &answer.isDone);
    else if (!isIdle && !isIgnored)
        answer.feedback = feedbackOf(area, m_result);
    return answer;
}

bool PodFeedback::isRepeat(const QByteArray &area, qint64 now)
{
    const bool isSame = std::exchange(m_lastArea, area) == area;
    return std::exchange(m_lastTime, now) + kRepeatMs >= now && isSame;
}

QByteArray PodFeedback::progress(PodState &state, bool *isDone)
{
    if (m_left > 0) {
        --m_left;
        return feedbackOf(m_pending, kExecuting);
    }
    const QByteArray area = std::exchange(m_pending, {});
    m_result = m_options.result.value_or(kSuccess);
    if (m_result == kSuccess) {
        const bool isWaved = m_options.acceptUnknown && !isKnown(area);
        const quint8 result = isWaved ? kSuccess : carryOut(state, area);
        m_result = m_options.result.value_or(result);
    }
    *isDone = true;
    return feedbackOf(area, m_result);
}

} // namespace podsim
