#include "tools/check/summary.h"
#include "tools/check/writers.h"
#include "tools/wire/decode.h"
#include "tools/wire/jsonmembers.h"

#include <QLocale>

#include <cmath>

// One object:
//   tool, link, device, inspector, recording   texts, empty for what wasn't given
//   begin                   ISO 8601 with the offset from UTC;  seconds: a number
//   cycles                  [{measure, cycles, usual}]: link/cycle, 6, 2000 by its file or 0
//   case_files              [{name, sha256}], of the user's
//   not_run                 a text: ids of groups, and of cases of those that ran in part
//   versions                null, or {protocol, hardware, firmware, pod_code}
//   ending                  "whole", "broken_off", "link_lost";  loss_reason: a text
//   verdict                 "passed", "failed", "incomplete";  verdict_text: {zh, en}
//   counts                  {passed, failed, not_judged}
//   groups                  [{id, title}]
//   cases                   [{id, group, name, reason, judgement, why, seconds, attempts, figures,
//                           evidence}], judgement "passed", "failed" or "not_judged", figures [{id,
//                           name, value, unit, limit}], evidence the frames as `nacelle-wire decode
//                           --json` has them
//   series                  [{id, name, answers_us, answers_at_ms, periods_us, periods_at_ms}],
//                           lists of microseconds, and of milliseconds since the first frame
// Titles, names, reasons and the like are {zh, en}.

namespace check {

namespace {

using wire::Members;
using wire::TextBuffer;

const char *idOf(Judgement judgement)
{
    return judgement == Judgement::Passed   ? "passed"
           : judgement == Judgement::Failed ? "failed"
                                            : "not_judged";
}

const char *idOf(Ending ending)
{
    return ending == Ending::Whole       ? "whole"
           : ending == Ending::BrokenOff ? "broken_off"
                                         : "link_lost";
}

const char *verdictId(const SessionResult &result)
{
    if (result.ending == Ending::BrokenOff)
        return "incomplete";
    return result.isPassed() ? "passed" : "failed";
}

/// JSON has no word for what isn't a finite number.
void putReal(double value, TextBuffer &out)
{
    if (std::isfinite(value))
        out.put(QByteArray::number(value, 'g', QLocale::FloatingPointShortest));
    else
        out.put("null");
}

class JsonWriter
{
public:
    explicit JsonWriter(const SessionResult &result) : m_result(result) {}

    QByteArray bytes()
    {
        {
            Members all(m_out);
            putHead(all);
            putVerdict(all);
            putList(all, "groups", groupsOf(m_result),
                    [this](const GroupTitle &group) { putGroup(group); });
            putList(all, "cases", m_result.cases,
                    [this](const CaseResult &each) { putCase(each); });
            putList(all, "series", m_result.series,
                    [this](const Series &series) { putSeries(series); });
        }
        m_out.put('\n');
        return m_out.bytes();
    }

private:
    template <typename Rows, typename Put>
    void putList(Members &members, const char *name, const Rows &rows, Put put)
    {
        members.key(name);
        wire::putList(rows, m_out, put);
    }

    void putText(Members &members, const char *name, const LocalText &text)
    {
        members.key(name);
        Members(m_out).add("zh", text.zh.toUtf8()).add("en", text.en.toUtf8());
    }

    void putNumber(Members &members, const char *name, double value)
    {
        members.key(name);
        putReal(value, m_out);
    }

    void putHead(Members &all)
    {
        all.add("tool", m_result.tool.toUtf8()).add("link", m_result.link.toUtf8());
        all.add("device", m_result.device.toUtf8()).add("inspector", m_result.inspector.toUtf8());
        all.add("recording", m_result.recording.toUtf8());
        all.add("begin", beginText(m_result).toUtf8());
        putNumber(all, "seconds", m_result.seconds);
        putScope(all);
        all.key("versions");
        if (!m_result.versions.areKnown) {
            m_out.put("null");
            return;
        }
        Members versions(m_out);
        versions.add("protocol", m_result.versions.protocol)
            .add("hardware", m_result.versions.hardware);
        versions.add("firmware", m_result.versions.firmware)
            .add("pod_code", m_result.versions.podCode);
    }

    void putScope(Members &all)
    {
        putList(all, "cycles", m_result.cycles, [this](const CycleCount &each) {
            Members members(m_out);
            members.add("measure", each.measure.toUtf8());
            putNumber(members, "cycles", double(each.cycles));
            putNumber(members, "usual", each.usual);
        });
        putList(all, "case_files", m_result.caseFiles, [this](const CaseFile &file) {
            Members members(m_out);
            members.add("name", file.name.toUtf8()).add("sha256", file.sha256.toUtf8());
        });
        all.add("not_run", m_result.notRun.join(QLatin1Char(' ')).toUtf8());
    }

    void putVerdict(Members &all)
    {
        all.add("ending", idOf(m_result.ending)).add("loss_reason", m_result.lossReason.toUtf8());
        all.add("verdict", verdictId(m_result));
        putText(all, "verdict_text", verdictOf(m_result));
        all.key("counts");
        Members counts(m_out);
        for (const Judgement each : {Judgement::Passed, Judgement::Failed, Judgement::NotJudged})
            counts.add(idOf(each), m_result.count(each));
    }

    void putGroup(const GroupTitle &group)
    {
        Members members(m_out);
        members.add("id", group.id.toUtf8());
        putText(members, "title", group.title);
    }

    void putCase(const CaseResult &each)
    {
        Members members(m_out);
        members.add("id", each.id.toUtf8()).add("group", each.group.toUtf8());
        putText(members, "name", each.name);
        putText(members, "reason", each.reason);
        members.add("judgement", idOf(each.judgement));
        putText(members, "why", each.why);
        putNumber(members, "seconds", each.seconds);
        members.add("attempts", each.attempts);
        putList(members, "figures", each.figures,
                [this](const Figure &figure) { putFigure(figure); });
        putList(members, "evidence", each.evidence, [this](const wire::Record &record) {
            m_format->add(record, m_out);
            m_out.chop(1); // its line end
        });
    }

    void putFigure(const Figure &figure)
    {
        Members members(m_out);
        members.add("id", figure.id.toUtf8());
        putText(members, "name", figure.name);
        putNumber(members, "value", figure.value);
        members.add("unit", figure.unit.toUtf8()).add("limit", figure.limit.toUtf8());
    }

    void putSeries(const Series &series)
    {
        Members members(m_out);
        members.add("id", series.id.toUtf8());
        putText(members, "name", series.name);
        putTimes(members, "answers_us", series.answers.micros);
        putTimes(members, "answers_at_ms", series.answers.moments);
        putTimes(members, "periods_us", series.periods.micros);
        putTimes(members, "periods_at_ms", series.periods.moments);
    }

    void putTimes(Members &members, const char *name, const QVector<int> &times)
    {
        members.key(name);
        const char *before = "";
        m_out.put('[');
        for (const int time : times) {
            m_out.put(before);
            m_out.putNumber(time);
            before = ",";
        }
        m_out.put(']');
    }

    const SessionResult &m_result;
    const std::unique_ptr<wire::FrameFormat> m_format = wire::jsonFormat();
    TextBuffer m_out;
};

} // namespace

bool writeJson(const SessionResult &result, const QString &path, QString &error)
{
    return writeWhole(path, JsonWriter(result).bytes(), error);
}

} // namespace check
