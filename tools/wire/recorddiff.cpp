#include "tools/wire/recorddiff.h"

#include "tools/wire/decode.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace wire {

namespace {

/// All that a frame shows, by id: its fields, and code, name, result and parameters of its area.
QMap<QString, QVariant> shownOf(const QByteArray &bytes)
{
    TextBuffer text;
    Record record;
    record.bytes = bytes;
    jsonFormat()->add(record, text);
    const QVariantMap frame = QJsonDocument::fromJson(text.bytes()).object().toVariantMap();
    QMap<QString, QVariant> shown = frame.value(QStringLiteral("fields")).toMap();
    shown.remove(QStringLiteral("crc")); // it follows from the others
    for (const char *key : {"command", "feedback"}) {
        const QVariantMap area = frame.value(QLatin1String(key)).toMap();
        if (area.contains(QStringLiteral("code")))
            shown.insert(QLatin1String(key),
                         area.value(QStringLiteral("name"), area.value(QStringLiteral("code"))));
        if (area.contains(QStringLiteral("state")))
            shown.insert(QStringLiteral("result"), area.value(QStringLiteral("state")));
        const QVariantMap params = area.value(QStringLiteral("params")).toMap();
        for (auto param = params.begin(); param != params.end(); ++param)
            shown.insert(QStringLiteral("param.") + param.key(), param.value());
    }
    for (const char *key : {"frame", "length"})
        shown.insert(QLatin1String(key), frame.value(QLatin1String(key)));
    shown.insert(QStringLiteral("verdict"), frame.value(QStringLiteral("crc")));
    return shown;
}

} // namespace

QVector<FieldChange> changesOf(const QByteArray &before, const QByteArray &after)
{
    const QMap<QString, QVariant> old = shownOf(before), made = shownOf(after);
    QStringList ids = old.keys();
    for (const QString &id : made.keys())
        if (!old.contains(id))
            ids << id;
    QVector<FieldChange> changes;
    for (const QString &id : ids)
        if (old.value(id) != made.value(id))
            changes.append({id.toUtf8(), old.value(id).toString().toUtf8(),
                            made.value(id).toString().toUtf8()});
    return changes;
}

void Timing::take(const Record &record)
{
    ++frames;
    if (record.time == kNoTime)
        return;
    if (first == kNoTime)
        first = record.time;
    else
        longestGap = qMax(longestGap, record.time - last);
    last = record.time;
    if (record.direction == Direction::Rx && m_sent != kNoTime) {
        ++answers;
        answerTime += record.time - m_sent;
        longestAnswer = qMax(longestAnswer, record.time - m_sent);
    }
    m_sent = record.direction == Direction::Tx ? record.time : kNoTime;
}

void RecordDiff::Side::fill()
{
    for (Record record; ahead.size() < kLookAhead && source(record);) {
        timing.take(record);
        ahead.push_back(record);
    }
}

Record RecordDiff::Side::take()
{
    Record record = ahead.front();
    ahead.pop_front();
    return record;
}

int RecordDiff::Side::find(const QByteArray &bytes) const
{
    for (std::size_t i = 0; i < ahead.size(); ++i)
        if (ahead[i].bytes == bytes)
            return int(i);
    return -1;
}

/// Whether the heads stand in each other's place: they have no equal on the other side, or only one
/// that is further away while the frames after them are equal.
bool RecordDiff::isChange(int added, int lost) const
{
    const std::deque<Record> &before = m_before.ahead, &after = m_after.ahead;
    const bool goesOn = before.size() > 1 && after.size() > 1 &&
                        before[1].bytes == after[1].bytes && added != 1 && lost != 1;
    return kindOf(before.front().bytes) == kindOf(after.front().bytes) &&
           ((added < 0 && lost < 0) || goesOn);
}

bool RecordDiff::next(Step &step)
{
    m_before.fill();
    m_after.fill();
    step = Step();
    const bool hasBefore = !m_before.ahead.empty(), hasAfter = !m_after.ahead.empty();
    bool isPair = false, isLost = hasBefore;
    if (hasBefore && hasAfter) {
        // Frames to be passed over until the next equal pair.
        const int added = m_after.find(m_before.ahead.front().bytes);
        const int lost = m_before.find(m_after.ahead.front().bytes);
        isPair = added == 0 || isChange(added, lost);
        isLost = added < 0 || (lost >= 0 && lost <= added);
    }
    step.hasBefore = hasBefore && (isPair || isLost);
    step.hasAfter = hasAfter && (isPair || !isLost);
    if (step.hasBefore)
        step.before = m_before.take();
    if (step.hasAfter)
        step.after = m_after.take();
    return hasBefore || hasAfter;
}

} // namespace wire
