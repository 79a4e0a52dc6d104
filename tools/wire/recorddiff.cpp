#include "tools/wire/recorddiff.h"

#include "tools/wire/decode.h"
#include "tools/wire/framefields.h"

#include <algorithm>

namespace wire {

namespace {

/// What a frame shows, in the order of its rows.
class Shown
{
public:
    explicit Shown(const QByteArray &bytes) : m_bytes(bytes)
    {
        const FrameKind kind = kindOf(bytes);
        for (const protocol::Field &field : fieldsOf(kind))
            addField(field, spanOf(field, kind, bytes.constData(), bytes.size()));
        if (kind == FrameKind::Unknown)
            addDigits("bytes", {0, bytes.size()});
        else if (lengthOf(bytes.constData(), bytes.size()) != bytes.size())
            add("bytes", QByteArray::number(bytes.size()));
    }

    QByteArray valueOf(const QByteArray &id) const
    {
        for (const auto &each : m_values)
            if (each.first == id)
                return each.second;
        return "-";
    }

    const QVector<QPair<QByteArray, QByteArray>> &values() const { return m_values; }

private:
    void addField(const protocol::Field &field, const Span &span)
    {
        if (field.kind == FieldKind::Crc)
            add("verdict", wordOf(verdictOf(m_bytes))); // its digits follow from all others
        else if (isVariable(field.kind) && span.size > 0)
            addArea(field, span);
        else if (span.size > 0)
            addWith(field.id, [&](TextBuffer &out) { putValue(field, at(span), out); });
    }

    void addArea(const protocol::Field &field, const Span &span)
    {
        const bool isHost = field.kind == FieldKind::Command;
        const CommandView view = commandIn(at(span), span.size);
        add(field.id, view.row ? QByteArray(view.row->id) : QByteArray::number(view.code));
        if (isHost && view.row)
            forEachParam(*view.row, at(span), span.size,
                         [this](const Param &param, const char *at) {
                             addWith(QByteArray("param.") + param.id,
                                     [&](TextBuffer &out) { putParam(param.kind, at, out); });
                         });
        if (!isHost && span.size > 1)
            add("result", resultWord(quint8(at(span)[1])));
        if (isHost ? !view.isExact : span.size > 2)
            addDigits("area", span);
    }

    void addDigits(const char *id, const Span &span)
    {
        addWith(id, [&](TextBuffer &out) { out.putHex(at(span), span.size); });
    }

    template <typename Put>
    void addWith(const QByteArray &id, Put put)
    {
        m_text.clear();
        put(m_text);
        add(id, m_text.bytes());
    }

    void add(const QByteArray &id, const QByteArray &value) { m_values.append({id, value}); }
    const char *at(const Span &span) const { return m_bytes.constData() + span.offset; }

    QByteArray m_bytes;
    TextBuffer m_text;
    QVector<QPair<QByteArray, QByteArray>> m_values;
};

/// Frames that are looked at together: two minutes of a console, so that a link may have been away.
constexpr int kAhead = 4096;

/// Times of a broken recording may lie centuries apart, again and again.
qint64 sumOf(qint64 sum, qint64 pause)
{
    constexpr qint64 kMost = qint64(1) << 62;
    return pause < kMost - sum ? sum + pause : kMost;
}

} // namespace

QVector<FieldChange> changesOf(const QByteArray &before, const QByteArray &after)
{
    const Shown old(before), made(after);
    QVector<FieldChange> changes;
    for (const auto &each : old.values())
        if (made.valueOf(each.first) != each.second)
            changes.append({each.first, each.second, made.valueOf(each.first)});
    for (const auto &each : made.values())
        if (old.valueOf(each.first) == "-")
            changes.append({each.first, "-", each.second});
    return changes;
}

void Timing::take(const Record &record)
{
    ++frames;
    if (record.time == kNoTime)
        return;
    const qint64 pause = hasTimes ? qMax<qint64>(0, record.time - m_last) : 0;
    length = sumOf(length, pause);
    longestGap = qMax(longestGap, pause);
    if (record.direction == Direction::Rx && m_isSent) {
        ++answers;
        answerTime = sumOf(answerTime, pause);
        longestAnswer = qMax(longestAnswer, pause);
    }
    hasTimes = true;
    m_last = record.time;
    m_isSent = record.direction == Direction::Tx;
}

void RecordDiff::Side::fill()
{
    for (Record record; ahead.size() < kAhead && source(record);) {
        timing.take(record);
        ahead.push_back({record, {}});
    }
}

Record RecordDiff::Side::take()
{
    Record record = ahead.front().record;
    ahead.pop_front();
    return record;
}

QVector<FrameMarks> RecordDiff::Side::marks()
{
    QVector<FrameMarks> all;
    for (Ahead &each : ahead) {
        if (!each.marks)
            each.marks = marksOf(each.record.bytes);
        all.append(*each.marks);
    }
    return all;
}

bool RecordDiff::isEqualNext() const
{
    return !m_before.ahead.empty() && !m_after.ahead.empty() &&
           m_before.ahead.front().record.bytes == m_after.ahead.front().record.bytes;
}

Place RecordDiff::nextPlace()
{
    if (m_places.isEmpty() && isEqualNext())
        return Place::Pair;
    if (m_places.isEmpty()) {
        const bool reachEnd = m_before.ahead.size() < kAhead && m_after.ahead.size() < kAhead;
        m_places = placesOf(m_before.marks(), m_after.marks(), reachEnd);
        std::reverse(m_places.begin(), m_places.end());
    }
    return m_places.takeLast();
}

bool RecordDiff::next(Step &step)
{
    m_before.fill();
    m_after.fill();
    step = Step();
    if (m_before.ahead.empty() && m_after.ahead.empty())
        return false;
    const Place place = nextPlace();
    step.hasBefore = place != Place::Added;
    step.hasAfter = place != Place::Lost;
    if (step.hasBefore)
        step.before = m_before.take();
    if (step.hasAfter)
        step.after = m_after.take();
    return true;
}

} // namespace wire
