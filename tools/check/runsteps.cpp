#include "protocol/fields.h"
#include "tools/check/judge.h"
#include "tools/check/runner.h"
#include "tools/wire/compose.h"

// What the steps of a case do.

namespace check {

namespace {

constexpr qint64 kLastAnswers = 1000000; // microseconds in which the last answers of a run come
constexpr qint64 kQuietTime = 120000;    // microseconds for what is still on its way
constexpr qint64 kPieceGap = 2000;       // microseconds between the pieces of a split frame
constexpr qint64 kSlowestBelieved = 2000000;
constexpr qint64 kNextGap = 10000; // microseconds, so that a read of the pod ends between
constexpr qint64 kForgetTime = 500000;
constexpr double kMillisecond = 1000; // microseconds
constexpr double kMinute = 60e6;      // microseconds
constexpr double kLeastShare = 0.5;   // of the frames of a step that are answered

QString seconds(qint64 microseconds)
{
    return QString::number(double(microseconds) / 1e6, 'g', 6) + QStringLiteral(" s");
}

Outcome notJudged(const LocalText &why)
{
    return {Judgement::NotJudged, why, {}};
}

/// The command of a host frame; 0 for none.
char codeOf(const QByteArray &frame)
{
    return frame.size() > kFixedSize + kCrcSize ? frame[kFixedSize] : '\0';
}

bool isIdle(const QByteArray &frame)
{
    return codeOf(frame) == '\0';
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
        return acknowledged == Acknowledged::Failure || acknowledged == Acknowledged::Not;
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

/// Microseconds; 0 where nobody knows.
qint64 slowestOf(const CycleStats &stats)
{
    const FigureRow &row = *figureRow(QStringLiteral("answer_worst"));
    return row.whyNot(stats).isEmpty() ? qint64(row.of(stats) * kMillisecond) : 0;
}

} // namespace

QVector<QByteArray> framesBetween()
{
    QVector<QByteArray> frames;
    for (const char *words : {"command=zoom_stop camera=1", "command=recognition state=0",
                              "command=image_flip state=0"})
        frames.append(
            wire::composePairs(wire::FrameKind::Host, QString::fromLatin1(words).split(' '))
                .record.bytes);
    return frames;
}

QByteArray idleFrame()
{
    return wire::composePairs(wire::FrameKind::Host, {}).record.bytes;
}

bool goesOutOnce(const Step &step)
{
    return (effectsOf(step) & kRecords) != 0;
}

Outcome Runner::runStep(const Step &step)
{
    static constexpr Outcome (Runner::*kSteps[])(const Step &) = {
        &Runner::ask,  &Runner::send,  &Runner::answer,   &Runner::quiet,
        &Runner::hold, &Runner::reach, &Runner::remember, &Runner::measured,
    };
    m_effects |= effectsOf(step);
    return (this->*kSteps[int(step.kind)])(step);
}

void Runner::write(const QByteArray &bytes)
{
    m_sent = m_line.send(bytes);
}

bool Runner::sendUntil(const Step &step, const PodLine::Take &take)
{
    const bool isOnce = goesOutOnce(step);
    const qint64 begin = m_line.now();
    const qint64 end = begin + step.time;
    for (qint64 next = begin; m_line.isUsable() && m_line.now() < end;) {
        write(isOnce && next > begin ? idleFrame() : step.writes.front());
        ++m_sentInStep;
        next = qMax(next + step.every, m_line.now());
        m_watcher.progress(m_line.now() - begin, step.time);
        if (m_line.listen(qMin(next, end), take))
            return true;
    }
    return false;
}

Outcome Runner::ask(const Step &step)
{
    if (!m_sent.bytes.isEmpty())
        settle(); // else an answer to what was asked before would do
    const Outcome forgotten = forget(codeOf(step.writes.front()));
    if (forgotten.judgement != Judgement::Passed)
        return forgotten;
    Step patient = step; // a slow pod's success comes late too
    patient.time += step.wanted == Wanted::Refused ? m_slowest : 0;
    return asked(patient);
}

/// True once the pod has said what became of the frame's command.
bool Runner::takeReply(const QByteArray &frame, const wire::Record &record, Reply &reply)
{
    noteAnswer(record);
    if (!isGoodAnswer(record))
        return false;
    reply.hasAny = true;
    const Acknowledged now = acknowledgementOf(frame, record.bytes);
    reply.acknowledged = now == Acknowledged::Not ? reply.acknowledged : now;
    return now == Acknowledged::Success || now == Acknowledged::Failure;
}

Outcome Runner::asked(const Step &step)
{
    const QByteArray &frame = step.writes.front();
    const qint64 begin = m_line.now();
    Reply reply;
    sendUntil(step, [&](const wire::Record &record) {
        if (!reply.hasAny && isGoodAnswer(record))
            m_slowest = qBound(m_slowest, record.time - begin, kSlowestBelieved);
        return takeReply(frame, record, reply);
    });
    if (!reply.hasAny && step.wanted != Wanted::Refused)
        return failed(noneWithin(step.time));
    if (m_isTalkative && isIdle(frame))
        return talks();
    return isWanted(step.wanted, reply.acknowledged)
               ? met(step)
               : failed(notAcknowledged(reply.acknowledged, step.time));
}

/// A pod may go on naming what it has done last, so that it would acknowledge the same command
/// without taking it. So another one is asked until the pod names that; a pod that names nothing
/// has nothing to forget.
Outcome Runner::forget(char code)
{
    if (code == '\0' || (m_named >= 0 && m_named != quint8(code)))
        return {};
    for (const QByteArray &frame : framesBetween()) {
        if (codeOf(frame) == code)
            continue;
        if (namesOther(frame, code))
            return {};
        if (m_named != quint8(code))
            return {}; // nothing, or none
    }
    return failed({QStringLiteral("吊舱只重复对上一命令的确认"),
                   QStringLiteral("the pod only repeats what it said of the command before")});
}

/// Asks for that frame's command until an answer names another one than `code`. Afterwards
/// `m_named` is the command named last meanwhile.
bool Runner::namesOther(const QByteArray &frame, char code)
{
    Step other;
    other.writes = {frame};
    other.time = kForgetTime + m_slowest;
    m_named = -1;
    return sendUntil(other, [&](const wire::Record &record) {
        noteAnswer(record);
        return m_named > 0 && m_named != quint8(code);
    });
}

/// Whether the newest answer meets a step's conditions.
Outcome Runner::met(const Step &step) const
{
    const LocalText why = unmet(step.conditions, m_answer.bytes, m_remembered);
    return why.isEmpty() ? Outcome() : failed(why);
}

/// Lets what was asked before come to its end, and the pod forget the command whose answer is
/// looked at next.
Outcome Runner::prepare()
{
    settle();
    if (m_awaited == '\0' || m_named != quint8(m_awaited))
        return {};
    const Outcome forgotten = forget(m_awaited);
    settle();
    return forgotten;
}

Outcome Runner::send(const Step &step)
{
    if (step.isAtOnce)
        m_line.rest(m_line.now() + kNextGap);
    else if (const Outcome ready = prepare(); ready.judgement != Judgement::Passed)
        return ready;
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
    const QByteArray asked = step.writes.value(0);
    if (m_isTalkative && isIdle(asked))
        return talks();
    Reply reply;
    const bool isAny = step.wanted == Wanted::Any; // even what isn't done yet
    m_line.listen(m_line.now() + step.time + m_slowest, [&](const wire::Record &record) {
        return takeReply(asked, record, reply) ||
               (isAny && reply.acknowledged != Acknowledged::Not);
    });
    if (reply.acknowledged == Acknowledged::Not && step.wanted != Wanted::Refused)
        return failed(noneWithin(step.time));
    return isAny || isWanted(step.wanted, reply.acknowledged)
               ? met(step)
               : failed(notAcknowledged(reply.acknowledged, step.time));
}

Outcome Runner::quiet(const Step &step)
{
    if (m_isTalkative)
        return talks();
    const qint64 until = m_line.now() + step.time + m_slowest;
    const bool isBroken = m_line.listen(until, [this](const wire::Record &record) {
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
    int answers = 0;
    const PodLine::Take take = [&](const wire::Record &record) {
        if (!isGoodAnswer(record))
            return false;
        ++answers;
        noteAnswer(record);
        why = unmet(step.conditions, record.bytes, m_remembered);
        return !why.isEmpty();
    };
    m_sentInStep = 0;
    if (!sendUntil(step, take))
        m_line.listen(m_line.now() + kQuietTime + m_slowest, take);
    if (why.isEmpty() && answers < kLeastShare * m_sentInStep)
        why = LocalText{QStringLiteral("%1 帧中只有 %2 帧得到应答"),
                        QStringLiteral("%1 frames were sent, %2 answers came")}
                  .arg(QString::number(m_sentInStep), QString::number(answers));
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
        return notJudged({QStringLiteral("还没有应答可供比较"),
                          QStringLiteral("there is no answer yet to compare with")});
    m_remembered.insert(step.name, number);
    return {};
}

const Measure &Runner::measureOf(const QString &key) const
{
    for (const Group &group : m_plan.measured)
        for (const Measure &measure : group.measures)
            if (measure.key == key)
                return measure;
    qFatal("no measure %s", qPrintable(key)); // `tieMeasures` has seen to it
}

Outcome Runner::measured(const Step &step)
{
    if (!m_stats.contains(step.name)) {
        settle();
        makeStats(measureOf(step.name), m_stats[step.name]);
    }
    const FigureRow &row = *figureRow(step.value);
    const CycleStats &stats = m_stats[step.name];
    return judged(row, stats, step);
}

/// A number that is beyond its limit may be so since the pod talks; of one that says nothing none
/// is shown.
Outcome Runner::judged(const FigureRow &row, const CycleStats &stats, const Step &step)
{
    const double value = row.of(stats);
    const bool isWithin = value >= step.least && value <= step.most;
    const bool isOpen = !isWithin || stats.unnamed > 0;
    if (row.isOfAnswers && (m_isTalkative || (isOpen && isTalkative())))
        return talks();
    if (const LocalText why = row.whyNot(stats); !why.isEmpty())
        return notJudged(why);
    const QString limit = limitText(step.least, step.most);
    m_figures.append({step.value, nameOf(row), value, QLatin1String(row.unit), limit});
    if (isWithin)
        return {};
    const LocalText name = nameOf(row);
    const QString unit = *row.unit ? QLatin1Char(' ') + QLatin1String(row.unit) : QString();
    const QString shown = QString::number(value, 'g', 6) + unit;
    const QString wanted = shownLimit(limit) + unit;
    Outcome outcome = failed({QStringLiteral("%1 %2，要求 %3").arg(name.zh, shown, wanted),
                              QStringLiteral("%1: %2, wanted %3").arg(name.en, shown, wanted)});
    outcome.evidence = stats.evidence[int(row.amiss)];
    return outcome;
}

bool usesMeasure(const Plan &plan, const Measure &measure)
{
    for (const Group &group : plan.groups)
        for (const Case &each : group.cases)
            for (const Step &step : each.steps)
                if (step.kind == StepKind::Measure && step.name == measure.key)
                    return true;
    return false;
}

qint64 cyclesOf(const Plan &plan, const Measure &measure)
{
    if (measure.cycles > 0)
        return plan.cycles > 0 ? plan.cycles : measure.cycles;
    return qMax<qint64>(1, qint64(plan.minutes * kMinute / double(measure.every)));
}

void Runner::makeStats(const Measure &measure, CycleStats &stats)
{
    const qint64 cycles = cyclesOf(m_plan, measure);
    stats.every = measure.every;
    const PodLine::Take take = [&](const wire::Record &record) {
        noteAnswer(record);
        stats.takeReceived(record);
        return false;
    };
    qint64 due = m_line.now();
    for (qint64 i = 0; i < cycles && m_line.isUsable(); ++i) {
        const QByteArray &frame = measure.frames[int(i % measure.frames.size())];
        m_effects |= effectsOf(frame);
        write(frame);
        stats.takeSent(m_sent);
        m_watcher.progress(i, cycles);
        due = qMax(due + measure.every, m_line.now()); // what was missed isn't made up for
        m_line.listen(due, take);
    }
    m_line.listen(m_line.now() + kLastAnswers, [&](const wire::Record &record) {
        take(record);
        return stats.lost() <= 0;
    });
    m_slowest = qBound(m_slowest, slowestOf(stats), kSlowestBelieved);
}

} // namespace check
