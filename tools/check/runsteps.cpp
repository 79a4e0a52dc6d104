#include "tools/check/judge.h"
#include "tools/check/runner.h"

// What the steps of a case do.

namespace check {

namespace {

constexpr qint64 kLastAnswers = 1000000; // microseconds in which the last answers of a run come
constexpr qint64 kPieceGap = 2000;       // microseconds between the pieces of a split frame
constexpr qint64 kSlowestBelieved = 2000000;
constexpr double kMinute = 60e6; // microseconds
constexpr int kUsualCycles = 1000;

QString seconds(qint64 microseconds)
{
    return QString::number(double(microseconds) / 1e6, 'g', 6) + QStringLiteral(" s");
}

LocalText noneWithin(qint64 microseconds)
{
    return {QStringLiteral("%1 内没有应答").arg(seconds(microseconds)),
            QStringLiteral("no answer within %1").arg(seconds(microseconds))};
}

bool isWanted(Wanted wanted, Acknowledged acknowledged)
{
    switch (wanted) {
    case Wanted::Success:
        return acknowledged == Acknowledged::Success;
    case Wanted::Failure:
        return acknowledged == Acknowledged::Failure;
    case Wanted::Refused:
        return acknowledged != Acknowledged::Success;
    case Wanted::Any:
        break;
    }
    return acknowledged == Acknowledged::Success || acknowledged == Acknowledged::Failure;
}

LocalText notAcknowledged(Acknowledged acknowledged, qint64 time)
{
    switch (acknowledged) {
    case Acknowledged::Success:
        return {QStringLiteral("应被拒绝的命令得到“成功”"),
                QStringLiteral("success for a command that should have been refused")};
    case Acknowledged::Failure:
        return {QStringLiteral("吊舱应答“失败”"), QStringLiteral("the pod answers: failure")};
    case Acknowledged::Executing:
        return {QStringLiteral("%1 后仍为“执行中”").arg(seconds(time)),
                QStringLiteral("still executing after %1").arg(seconds(time))};
    case Acknowledged::Not:
        break;
    }
    return {QStringLiteral("%1 内命令未得到确认").arg(seconds(time)),
            QStringLiteral("the command isn't acknowledged within %1").arg(seconds(time))};
}

} // namespace

Outcome Runner::runStep(const Step &step)
{
    static constexpr Outcome (Runner::*kSteps[])(const Step &) = {
        &Runner::ask,  &Runner::send,  &Runner::answer,   &Runner::quiet,
        &Runner::hold, &Runner::reach, &Runner::remember, &Runner::measured,
    };
    m_hasMoved = m_hasMoved || (effectsOf(step) & kMoves) != 0;
    return (this->*kSteps[int(step.kind)])(step);
}

void Runner::write(const QByteArray &bytes)
{
    m_sent = m_line.send(bytes);
}

bool Runner::sendUntil(const Step &step, const PodLine::Take &take)
{
    const qint64 begin = m_line.now();
    const qint64 end = begin + step.time;
    for (qint64 next = begin; m_line.isUsable() && m_line.now() < end;) {
        write(step.writes.front());
        next += step.every;
        m_watcher.progress(m_line.now() - begin, step.time);
        if (m_line.listen(qMin(next, end), take))
            return true;
    }
    return false;
}

Outcome Runner::ask(const Step &step)
{
    const qint64 begin = m_line.now();
    Acknowledged acknowledged = Acknowledged::Not;
    bool hasAny = false;
    sendUntil(step, [&](const wire::Record &record) {
        if (!isGoodAnswer(record))
            return false;
        if (!hasAny)
            m_slowest = qBound(m_slowest, record.time - begin, kSlowestBelieved);
        hasAny = true;
        noteAnswer(record);
        const Acknowledged now = acknowledgementOf(step.writes.front(), record.bytes);
        acknowledged = now == Acknowledged::Not ? acknowledged : now;
        return now == Acknowledged::Success || now == Acknowledged::Failure;
    });
    if (!hasAny)
        return failed(noneWithin(step.time));
    if (!isWanted(step.wanted, acknowledged))
        return failed(notAcknowledged(acknowledged, step.time));
    const LocalText why = unmet(step.conditions, m_answer.bytes, m_remembered);
    return why.isEmpty() ? Outcome() : failed(why);
}

Outcome Runner::send(const Step &step)
{
    for (int i = 0; i < step.times && m_line.isUsable(); ++i) {
        for (int j = 0; j < step.writes.size(); ++j) {
            // No pause after the last one: its answer belongs to the next step.
            if (i + j > 0)
                m_line.rest(m_line.now() + (j > 0 ? kPieceGap : step.every));
            write(step.writes[j]);
        }
    }
    return {};
}

Outcome Runner::answer(const Step &step)
{
    const bool isThere = m_line.listen(m_line.now() + step.time, [&](const wire::Record &record) {
        noteAnswer(record);
        const QByteArray asked = step.writes.value(0);
        return isGoodAnswer(record) && acknowledgementOf(asked, record.bytes) != Acknowledged::Not;
    });
    if (!isThere)
        return failed(noneWithin(step.time));
    const LocalText why = unmet(step.conditions, m_answer.bytes, m_remembered);
    return why.isEmpty() ? Outcome() : failed(why);
}

Outcome Runner::quiet(const Step &step)
{
    if (m_isTalkative)
        return {Judgement::NotJudged,
                {QStringLiteral("吊舱不经询问也发送数据"),
                 QStringLiteral("the pod also sends without being asked")},
                {}};
    const bool isBroken =
        m_line.listen(m_line.now() + step.time, [this](const wire::Record &record) {
            noteAnswer(record);
            return isGoodAnswer(record);
        });
    return isBroken ? failed({QStringLiteral("不应有应答却收到应答"),
                              QStringLiteral("an answer to what shouldn't be answered")})
                    : Outcome();
}

Outcome Runner::hold(const Step &step)
{
    LocalText why;
    bool hasAny = false;
    sendUntil(step, [&](const wire::Record &record) {
        if (!isGoodAnswer(record))
            return false;
        hasAny = true;
        noteAnswer(record);
        why = unmet(step.conditions, record.bytes, m_remembered);
        return !why.isEmpty();
    });
    if (!hasAny)
        why = noneWithin(step.time);
    return why.isEmpty() ? Outcome() : failed(why);
}

Outcome Runner::reach(const Step &step)
{
    LocalText why = noneWithin(step.time);
    const bool isReached = sendUntil(step, [&](const wire::Record &record) {
        if (!isGoodAnswer(record))
            return false;
        noteAnswer(record);
        why = unmet(step.conditions, record.bytes, m_remembered);
        return why.isEmpty();
    });
    if (isReached)
        return {};
    return failed({QStringLiteral("%1 后：").arg(seconds(step.time)) + why.zh,
                   QStringLiteral("after %1: ").arg(seconds(step.time)) + why.en});
}

Outcome Runner::remember(const Step &step)
{
    double number = 0;
    if (!numberIn(m_answer.bytes, step.field, number))
        return {Judgement::NotJudged,
                {QStringLiteral("还没有应答可供比较"),
                 QStringLiteral("there is no answer yet to compare with")},
                {}};
    m_remembered.insert(step.name, number);
    return {};
}

const Measure *Runner::measureOf(const QString &id) const
{
    for (const Group &group : m_plan.measured)
        for (const Measure &measure : group.measures)
            if (measure.id == id)
                return &measure;
    return nullptr;
}

Outcome Runner::measured(const Step &step)
{
    const Measure *measure = measureOf(step.name);
    if (!measure)
        return {Judgement::NotJudged,
                {QStringLiteral("没有测量“%1”").arg(step.name),
                 QStringLiteral("there is no measure \"%1\"").arg(step.name)},
                {}};
    if (!m_stats.contains(step.name)) {
        settle();
        makeStats(*measure, m_stats[step.name]);
    }
    const CycleStats &stats = m_stats[step.name];
    const FigureRow &row = *figureRow(step.value);
    const double value = row.of(stats);
    m_figures.append(
        {step.value, row.name, value, QLatin1String(row.unit), limitText(step.least, step.most)});
    if (row.basis(stats) == 0)
        return {Judgement::NotJudged,
                {QStringLiteral("没有可供测量的应答，或本机未按时发送"),
                 QStringLiteral("there are no answers to measure, or this computer was too slow")},
                {}};
    if (value >= step.least && value <= step.most)
        return {};
    const QString shown = QString::number(value, 'g', 6);
    Outcome outcome = failed(
        {QStringLiteral("%1 %2，要求 %3").arg(row.name.zh, shown, limitText(step.least, step.most)),
         QStringLiteral("%1: %2, wanted %3")
             .arg(row.name.en, shown, limitText(step.least, step.most))});
    outcome.evidence = stats.evidence;
    return outcome;
}

void Runner::makeStats(const Measure &measure, CycleStats &stats)
{
    const auto byTime = qint64(m_plan.minutes * kMinute / double(measure.every));
    const qint64 usual = m_plan.cycles > 0 ? m_plan.cycles : measure.cycles;
    const qint64 cycles = measure.cycles > 0 ? usual : byTime > 0 ? byTime : kUsualCycles;
    stats.every = measure.every;
    const PodLine::Take take = [&](const wire::Record &record) {
        noteAnswer(record);
        stats.takeReceived(record);
        return false;
    };
    const qint64 begin = m_line.now();
    for (qint64 i = 0; i < cycles && m_line.isUsable(); ++i) {
        write(measure.frames[int(i % measure.frames.size())]);
        stats.takeSent(m_sent);
        m_watcher.progress(i, cycles);
        m_line.listen(begin + (i + 1) * measure.every, take);
    }
    m_line.listen(m_line.now() + kLastAnswers, [&](const wire::Record &record) {
        take(record);
        return stats.lost() <= 0;
    });
    for (const int time : qAsConst(stats.answerTimes))
        m_slowest = qBound<qint64>(m_slowest, time, kSlowestBelieved);
}

} // namespace check
