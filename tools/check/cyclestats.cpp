#include "tools/check/cyclestats.h"

#include "protocol/fields.h"
#include "tools/check/percentile.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

namespace check {

namespace {

constexpr int kMostEvidence = 6;
constexpr qint64 kPunctual = 2000;    // microseconds
constexpr int kLatest = 16;           // frames after its own that an answer may come
constexpr double kUnnamedShare = 0.1; // of the answers; after them the others fall into place
constexpr std::size_t kMostWaiting = 4096;

quint8 codeOf(const wire::Record &record)
{
    const QByteArray &bytes = record.bytes;
    return bytes.size() > kFrameOverhead ? quint8(bytes[kFixedSize]) : quint8(0);
}

int boundedTime(qint64 time)
{
    return int(qMin<qint64>(time, std::numeric_limits<int>::max()));
}

double milliseconds(Times times, double share)
{
    std::sort(times.micros.begin(), times.micros.end());
    return percentile(times.micros, share) / 1000.0;
}

double percent(int part, int whole)
{
    return whole == 0 ? 0 : 100.0 * part / whole;
}

// What there has to be some of for a number to say something.
LocalText someOf(qint64 count)
{
    return count > 0 ? LocalText()
                     : LocalText{QStringLiteral("可供测量的数据太少"),
                                 QStringLiteral("there is too little to measure")};
}

LocalText framesSent(const CycleStats &stats)
{
    return someOf(stats.sent);
}

LocalText received(const CycleStats &stats)
{
    return someOf(stats.answers + stats.doubled + stats.badChecksum + stats.badLength);
}

LocalText anything(const CycleStats &stats)
{
    return stats.noiseBytes > 0 ? LocalText() : received(stats);
}

/// One answer more or less, and each of the others belongs to another frame.
LocalText named(const CycleStats &stats)
{
    const bool isKnown =
        stats.unnamed <= kUnnamedShare * stats.answers || (stats.lost() == 0 && stats.doubled == 0);
    return isKnown
               ? LocalText()
               : LocalText{QStringLiteral("应答不指明命令，且有丢失或重复，无法判断应答属于哪一帧"),
                           QStringLiteral("the answers name no command, and some are lost or "
                                          "doubled: nobody can say which frame each belongs to")};
}

LocalText answersTimed(const CycleStats &stats)
{
    const LocalText why = named(stats);
    return why.isEmpty() ? someOf(stats.answerTimes.micros.size()) : why;
}

/// Not worth much where most of them are missing.
LocalText periodsTimed(const CycleStats &stats)
{
    const LocalText why = named(stats);
    const int count = stats.periods.micros.size();
    if (!why.isEmpty() || 2 * count >= stats.answers - 1)
        return why.isEmpty() ? someOf(count) : why;
    return stats.missedPeriods <= count
               ? someOf(0)
               : LocalText{QStringLiteral("本计算机多数时候未能按时发送"),
                           QStringLiteral("this computer was too seldom on time with its frames")};
}

} // namespace

void CycleStats::takeSent(const wire::Record &frame)
{
    const Asked asked{sent, codeOf(frame), frame};
    m_begin = sent == 0 ? frame.time : m_begin;
    m_codes.set(asked.code);
    m_waiting.push_back(asked);
    ++sent;
    if (m_waiting.size() > kMostWaiting) { // a pod that fell silent
        keep(Amiss::Lost, m_waiting.front().frame);
        m_waiting.erase(m_waiting.begin());
    }
}

void CycleStats::takeReceived(const wire::Record &record)
{
    const bool isFrame = wire::kindOf(record.bytes) == wire::FrameKind::Gcu;
    const wire::Verdict verdict = wire::verdictOf(record.bytes);
    const bool isWhole =
        wire::lengthOf(record.bytes.constData(), record.bytes.size()) == record.bytes.size();
    if (!isFrame) {
        noiseBytes += record.bytes.size();
        return keep(Amiss::Noise, record);
    }
    if (isWhole && verdict == wire::Verdict::Ok) {
        takeGood(record);
    } else {
        ++(isWhole ? badChecksum : badLength);
        keep(isWhole ? Amiss::Checksum : Amiss::Length, record);
        takeBroken(record);
    }
    m_heardTime = record.time;
    m_heardCode = codeOf(record);
}

/// What a frame that names this command answers: what is sent after all that has been heard; else
/// it is the last one again, or the nearest in the order of sending, overtaken or waiting.
CycleStats::Match CycleStats::match(quint8 code) const
{
    const auto isOfCode = [code](const Asked &asked) { return asked.code == code; };
    const auto found = std::find_if(m_waiting.begin(), m_waiting.end(), isOfCode);
    const Match waiting{Place::Waiting, std::size_t(found - m_waiting.begin())};
    const bool isWaiting = found != m_waiting.end();
    if (isWaiting && (waiting.at == 0 || found->frame.time > m_heardTime))
        return waiting;
    if (m_heardCode == int(code))
        return {Place::Twice};
    const auto late = std::find_if(m_passed.rbegin(), m_passed.rend(), isOfCode);
    const bool isLate = late != m_passed.rend() && code != 0;
    if (isLate && (!isWaiting || m_newest - late->number <= int(waiting.at)))
        return {Place::Passed, std::size_t(m_passed.rend() - late) - 1};
    return isWaiting ? waiting : Match{Place::Nowhere};
}

/// Takes it out; those before it have been overtaken.
CycleStats::Asked CycleStats::takeWaiting(std::size_t at)
{
    const auto begin = m_waiting.begin(), end = begin + std::ptrdiff_t(at);
    m_passed.insert(m_passed.end(), begin, end);
    const Asked asked = *end;
    m_waiting.erase(begin, end + 1);
    m_newest = asked.number;
    // What comes later still is lost.
    const auto isOver = [this](const Asked &each) { return each.number + kLatest < m_newest; };
    for (const Asked &each : m_passed)
        if (isOver(each))
            keep(Amiss::Lost, each.frame);
    m_passed.erase(std::remove_if(m_passed.begin(), m_passed.end(), isOver), m_passed.end());
    return asked;
}

CycleStats::Asked CycleStats::takePassed(std::size_t at)
{
    const Asked asked = m_passed[at];
    m_passed.erase(m_passed.begin() + std::ptrdiff_t(at));
    return asked;
}

/// A broken frame has come in place of an answer, so that none is lost. Which one its code says, as
/// far as that isn't broken too.
void CycleStats::takeBroken(const wire::Record &record)
{
    const Match found = match(codeOf(record));
    if (found.place == Place::Twice || (found.place == Place::Nowhere && m_waiting.empty()))
        return;
    ++m_broken;
    if (found.place == Place::Passed)
        takePassed(found.at);
    else
        takeWaiting(found.at);
}

void CycleStats::takeGood(const wire::Record &record)
{
    const quint8 code = codeOf(record);
    const Match found = match(code);
    const bool isKnown = code != 0 && m_codes.test(code);
    if (found.place == Place::Passed) {
        ++reordered;
        keep(Amiss::Reordered, record);
        settle(takePassed(found.at), record);
    } else if (found.place == Place::Waiting || (!isKnown && !m_waiting.empty())) { // by its turn
        unnamed += isKnown ? 0 : 1;
        settle(takeWaiting(found.at), record);
    } else {
        ++doubled;
        keep(Amiss::Doubled, record);
    }
}

void CycleStats::settle(const Asked &asked, const wire::Record &answer)
{
    ++answers;
    const qint64 time = answer.time, took = time - asked.frame.time;
    answerTimes.add(boundedTime(took), momentOf(time));
    if (took > m_longest) {
        m_longest = took;
        evidence[int(Amiss::Late)] = {asked.frame, answer};
    }
    if (m_last.number >= 0 && asked.number == m_last.number + 1)
        addPeriod(asked, time);
    m_last = asked;
    m_lastTime = time;
}

/// A busy computer mustn't fail a pod.
void CycleStats::addPeriod(const Asked &asked, qint64 time)
{
    const qint64 sentApart = asked.frame.time - m_last.frame.time;
    if (every == 0 || std::abs(sentApart - every) <= kPunctual)
        periods.add(boundedTime(time - m_lastTime), momentOf(time));
    else
        ++missedPeriods;
}

int CycleStats::momentOf(qint64 time) const
{
    return boundedTime((time - m_begin) / 1000);
}

void CycleStats::keep(Amiss amiss, const wire::Record &record)
{
    QVector<wire::Record> &kept = evidence[int(amiss)];
    if (kept.size() < kMostEvidence)
        kept.append(record);
}

int CycleStats::lost() const
{
    return sent - answers - m_broken;
}

namespace {

using S = const CycleStats &;

constexpr std::array<FigureRow, 15> kFigureRows{{
    {"sent", "已发送帧数", "frames sent", "", false, Amiss::Nothing, framesSent,
     [](S s) { return double(s.sent); }},
    {"answers", "应答帧数", "answers", "", true, Amiss::Nothing, framesSent,
     [](S s) { return double(s.answers); }},
    {"lost", "丢失的应答", "answers lost", "", true, Amiss::Lost, framesSent,
     [](S s) { return double(s.lost()); }},
    {"lost_percent", "应答丢失率", "answers lost", "%", true, Amiss::Lost, framesSent,
     [](S s) { return percent(s.lost(), s.sent); }},
    {"doubled", "重复的应答", "answers doubled", "", true, Amiss::Doubled, received,
     [](S s) { return double(s.doubled); }},
    {"reordered", "乱序的应答", "answers out of order", "", true, Amiss::Reordered, received,
     [](S s) { return double(s.reordered); }},
    {"bad_checksum", "校验错误的帧", "frames with a wrong checksum", "", false, Amiss::Checksum,
     received, [](S s) { return double(s.badChecksum); }},
    {"bad_length", "长度错误的帧", "frames with a wrong length", "", false, Amiss::Length, received,
     [](S s) { return double(s.badLength); }},
    {"noise_bytes", "帧间杂散字节", "bytes between frames", "B", false, Amiss::Noise, anything,
     [](S s) { return double(s.noiseBytes); }},
    {"answer_median", "应答时间中位数", "answer time, median", "ms", true, Amiss::Late,
     answersTimed, [](S s) { return milliseconds(s.answerTimes, 0.5); }},
    {"answer_p99", "应答时间99百分位", "answer time, 99th percentile", "ms", true, Amiss::Late,
     answersTimed, [](S s) { return milliseconds(s.answerTimes, 0.99); }},
    {"answer_worst", "应答时间最大值", "answer time, worst", "ms", true, Amiss::Late, answersTimed,
     [](S s) { return milliseconds(s.answerTimes, 1); }},
    {"period_median", "应答周期中位数", "period of answers, median", "ms", true, Amiss::Nothing,
     periodsTimed, [](S s) { return milliseconds(s.periods, 0.5); }},
    {"period_p99", "应答周期99百分位", "period of answers, 99th percentile", "ms", true,
     Amiss::Nothing, periodsTimed, [](S s) { return milliseconds(s.periods, 0.99); }},
    {"period_worst", "应答周期最大值", "period of answers, worst", "ms", true, Amiss::Nothing,
     periodsTimed, [](S s) { return milliseconds(s.periods, 1); }},
}};

} // namespace

const FigureRow *figureRow(const QString &id)
{
    for (const FigureRow &row : kFigureRows)
        if (id == QLatin1String(row.id))
            return &row;
    return nullptr;
}

LocalText nameOf(const FigureRow &row)
{
    return {QString::fromUtf8(row.zh), QString::fromUtf8(row.en)};
}

} // namespace check
