#include "tools/check/results.h"

#include <algorithm>

namespace check {

LocalText wordOf(Judgement judgement)
{
    switch (judgement) {
    case Judgement::Passed:
        return {QStringLiteral("通过"), QStringLiteral("passed")};
    case Judgement::Failed:
        return {QStringLiteral("不通过"), QStringLiteral("FAILED")};
    case Judgement::NotJudged:
        break;
    }
    return {QStringLiteral("未判定"), QStringLiteral("not judged")};
}

QString shownLimit(QString limit)
{
    limit.replace(QLatin1String("<="), QStringLiteral("≤"));
    return limit.replace(QLatin1String(">="), QStringLiteral("≥"));
}

int SessionResult::count(Judgement judgement) const
{
    return int(std::count_if(cases.begin(), cases.end(), [judgement](const CaseResult &result) {
        return result.judgement == judgement;
    }));
}

bool SessionResult::isPassed() const
{
    const bool isJudged = std::all_of(cases.begin(), cases.end(), [](const CaseResult &result) {
        return result.judgement != Judgement::NotJudged || result.isNeutral;
    });
    return ending == Ending::Whole && count(Judgement::Failed) == 0 &&
           count(Judgement::Passed) > 0 && isJudged;
}

LocalText verdictOf(const SessionResult &result)
{
    if (result.ending == Ending::BrokenOff)
        return {QStringLiteral("中断：验收未完成"),
                QStringLiteral("broken off: the acceptance isn't complete")};
    if (result.ending == Ending::LinkLost)
        return {QStringLiteral("不通过：链路中断"), QStringLiteral("FAILED: the link was lost")};
    if (!result.isPassed() && result.count(Judgement::Failed) == 0)
        return {QStringLiteral("未通过：有未判定的项目"),
                QStringLiteral("NOT PASSED: not all could be judged")};
    return wordOf(result.isPassed() ? Judgement::Passed : Judgement::Failed);
}

} // namespace check
