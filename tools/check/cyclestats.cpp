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
constexpr qint64 kPunctual = 2000; // microseconds
constexpr int kLatest = 16;        // frames after its own that an answer may come
constexpr std::size_t kMostWaiting = 4096;

quint8 codeOf(const wire::Record &record)
{
    const QByteArray &bytes = record.bytes;
    return bytes.size() > kFrameOverhead ? quint8(bytes[kFixedSize]) : quint8(0);
}

double milliseconds(QVector<int> times, double share)
{
    std::sort(times.begin(), times.end());
    return percentile(times, share) / 1000.0;
}

double percent(int part, int whole)
{
    return whole == 0 ? 0 : 100.0 * part / whole;
}

// What there has to be some of for a number to say something.
int framesSent(const CycleStats &stats)
{
    return stats.sent;
}

int received(const CycleStats &stats)
{
    return stats.answers + stats.doubled + stats.badChecksum + stats.badLength;
}

int anything(const CycleStats &stats)
{
    return received(stats) + (stats.noiseBytes > 0 ? 1 : 0);
}

int answersTimed(const CycleStats &stats)
{
    return stats.answerTimes.size();
}

/// Not worth much where this side was seldom on time.
int periodsTimed(const CycleStats &stats)
{
    return 2 * stats.periods.size() >= stats.answers - 1 ? stats.periods.size() : 0;
}

} // namespace

void CycleStats::takeSent(const wire::Record &frame)
{
    m_waiting.push_back({sent, codeOf(frame), frame.time});
    ++sent;
    if (m_waiting.size() > kMostWaiting) // a pod that fell silent
        m_waiting.erase(m_waiting.begin());
}

void CycleStats::takeReceived(const wire::Record &record)
{
    const bool isFrame = wire::kindOf(record.bytes) == wire::FrameKind::Gcu;
    const wire::Verdict verdict = wire::verdictOf(record.bytes);
    const bool isWhole =
        wire::lengthOf(record.bytes.constData(), record.bytes.size()) == record.bytes.size();
    if (isFrame && isWhole && verdict == wire::Verdict::Ok)
        return takeGood(record);
    keep(record);
    if (!isFrame) {
        noiseBytes += record.bytes.size();
        return;
    }
    ++(isWhole ? badChecksum : badLength);
    takeBroken();
}

/// A broken frame has come in place of an answer, so that none is lost.
void CycleStats::takeBroken()
{
    if (m_waiting.empty())
        return;
    m_waiting.erase(m_waiting.begin());
    ++m_broken;
}

std::size_t CycleStats::waitingFor(quint8 code) const
{
    const auto found = std::find_if(m_waiting.begin(), m_waiting.end(),
                                    [code](const Asked &asked) { return asked.code == code; });
    return std::size_t(found - m_waiting.begin());
}

/// The answer to a frame that answers to later ones have overtaken.
bool CycleStats::takeLate(quint8 code, const wire::Record &record)
{
    // What comes later still is lost.
    const auto isOver = [this](const Asked &asked) { return asked.number + kLatest < sent; };
    m_passed.erase(std::remove_if(m_passed.begin(), m_passed.end(), isOver), m_passed.end());
    const auto late = std::find_if(m_passed.begin(), m_passed.end(),
                                   [code](const Asked &asked) { return asked.code == code; });
    if (late == m_passed.end() || code == 0)
        return false;
    ++reordered;
    keep(record);
    settle(*late, record.time);
    m_passed.erase(late);
    return true;
}

void CycleStats::takeGood(const wire::Record &record)
{
    const quint8 code = codeOf(record);
    std::size_t at = waitingFor(code);
    const bool isNext = at == 0 && !m_waiting.empty();
    if (!isNext && takeLate(code, record))
        return;
    if (m_waiting.empty() || (!isNext && m_lastCode == int(code))) {
        ++doubled;
        return keep(record);
    }
    if (at == m_waiting.size())
        at = 0; // it names none of those that wait
    m_passed.insert(m_passed.end(), m_waiting.begin(), m_waiting.begin() + std::ptrdiff_t(at));
    const Asked asked = m_waiting[at];
    m_waiting.erase(m_waiting.begin(), m_waiting.begin() + std::ptrdiff_t(at) + 1);
    m_lastCode = asked.code;
    settle(asked, record.time);
}

/// Whether the frame followed the one answered last, and at its pace: a busy computer mustn't fail
/// a pod.
bool CycleStats::isPunctual(const Asked &asked) const
{
    const qint64 sentApart = asked.time - m_last.time;
    return m_last.number >= 0 && asked.number == m_last.number + 1 &&
           (every == 0 || std::abs(sentApart - every) <= kPunctual);
}

void CycleStats::settle(const Asked &asked, qint64 time)
{
    constexpr qint64 kMost = std::numeric_limits<int>::max();
    ++answers;
    answerTimes.append(int(qMin(time - asked.time, kMost)));
    if (isPunctual(asked))
        periods.append(int(qMin(time - m_lastTime, kMost)));
    m_last = asked;
    m_lastTime = time;
}

void CycleStats::keep(const wire::Record &record)
{
    if (evidence.size() < kMostEvidence)
        evidence.append(record);
}

int CycleStats::lost() const
{
    return sent - answers - m_broken;
}

namespace {

using S = const CycleStats &;

constexpr std::array<FigureRow, 15> kFigureRows{{
    {"sent", "已发送帧数", "frames sent", "", false, framesSent,
     [](S s) { return double(s.sent); }},
    {"answers", "应答帧数", "answers", "", true, framesSent, [](S s) { return double(s.answers); }},
    {"lost", "丢失的应答", "answers lost", "", true, framesSent,
     [](S s) { return double(s.lost()); }},
    {"lost_percent", "应答丢失率", "answers lost", "%", true, framesSent,
     [](S s) { return percent(s.lost(), s.sent); }},
    {"doubled", "重复的应答", "answers doubled", "", true, received,
     [](S s) { return double(s.doubled); }},
    {"reordered", "乱序的应答", "answers out of order", "", true, received,
     [](S s) { return double(s.reordered); }},
    {"bad_checksum", "校验错误的帧", "frames with a wrong checksum", "", false, received,
     [](S s) { return double(s.badChecksum); }},
    {"bad_length", "长度错误的帧", "frames with a wrong length", "", false, received,
     [](S s) { return double(s.badLength); }},
    {"noise_bytes", "帧间杂散字节", "bytes between frames", "B", false, anything,
     [](S s) { return double(s.noiseBytes); }},
    {"answer_median", "应答时间中位数", "answer time, median", "ms", true, answersTimed,
     [](S s) { return milliseconds(s.answerTimes, 0.5); }},
    {"answer_p99", "应答时间99百分位", "answer time, 99th percentile", "ms", true, answersTimed,
     [](S s) { return milliseconds(s.answerTimes, 0.99); }},
    {"answer_worst", "应答时间最大值", "answer time, worst", "ms", true, answersTimed,
     [](S s) { return milliseconds(s.answerTimes, 1); }},
    {"period_median", "应答周期中位数", "period of answers, median", "ms", true, periodsTimed,
     [](S s) { return milliseconds(s.periods, 0.5); }},
    {"period_p99", "应答周期99百分位", "period of answers, 99th percentile", "ms", true,
     periodsTimed, [](S s) { return milliseconds(s.periods, 0.99); }},
    {"period_worst", "应答周期最大值", "period of answers, worst", "ms", true, periodsTimed,
     [](S s) { return milliseconds(s.periods, 1); }},
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
