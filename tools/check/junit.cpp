#include "tools/check/summary.h"
#include "tools/check/writers.h"

#include <QXmlStreamWriter>

namespace check {

namespace {

QString secondsText(double seconds)
{
    return QString::number(seconds, 'f', 3);
}

/// Writes the XML of one result. Every text goes through `printable`: a pod's bytes or a user's
/// name could have characters that no XML may.
class JunitWriter
{
public:
    JunitWriter(const SessionResult &result, const LocalText &verdict, wire::Language language,
                QByteArray &out)
        : m_result(result), m_verdict(verdict), m_language(language), m_xml(&out)
    {
        m_xml.setAutoFormatting(true);
        m_xml.setAutoFormattingIndent(2);
    }

    void write()
    {
        m_xml.writeStartDocument();
        m_xml.writeStartElement(QStringLiteral("testsuites"));
        putCounts(QStringLiteral("nacelle-check"), m_result.cases);
        put("time", secondsText(m_result.seconds));
        for (const GroupTitle &group : groupsOf(m_result))
            putSuite(group);
        m_xml.writeEndElement();
        m_xml.writeEndDocument();
    }

private:
    void put(const char *attribute, const QString &text)
    {
        m_xml.writeAttribute(QLatin1String(attribute), printable(text));
    }

    void putCounts(const QString &name, const QVector<CaseResult> &cases)
    {
        put("name", name);
        put("tests", QString::number(cases.size()));
        put("failures", QString::number(countOf(cases, Judgement::Failed)));
        put("errors", QStringLiteral("0"));
        put("skipped", QString::number(countOf(cases, Judgement::NotJudged)));
    }

    void putSuite(const GroupTitle &group)
    {
        const QVector<CaseResult> cases = casesOf(m_result, group.id);
        double seconds = 0;
        for (const CaseResult &each : cases)
            seconds += each.seconds;
        m_xml.writeStartElement(QStringLiteral("testsuite"));
        putCounts(group.id, cases);
        put("time", secondsText(seconds));
        // The schema has no room for an offset.
        put("timestamp", m_result.begin.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")));
        putProperties(group);
        for (const CaseResult &each : cases)
            putCase(each);
        m_xml.writeEndElement();
    }

    void putProperties(const GroupTitle &group)
    {
        m_xml.writeStartElement(QStringLiteral("properties"));
        putProperty("title", group.title.in(m_language));
        putProperty("tool", m_result.tool);
        putProperty("link", m_result.link);
        putProperty("device", m_result.device);
        putProperty("inspector", m_result.inspector);
        putProperty("begin", beginText(m_result));
        putProperty("versions", versionText(m_result.versions, m_language));
        putProperty("verdict", m_verdict.in(m_language));
        putProperty("loss_reason", m_result.lossReason);
        putProperty("recording", m_result.recording);
        putProperty("cycles", cyclesText(m_result));
        putProperty("case_files", caseFilesText(m_result));
        putProperty("not_run", m_result.notRun.join(QStringLiteral(", ")));
        m_xml.writeEndElement();
    }

    void putProperty(const char *name, const QString &value)
    {
        if (value.isEmpty())
            return;
        m_xml.writeEmptyElement(QStringLiteral("property"));
        put("name", QLatin1String(name));
        put("value", value);
    }

    void putCase(const CaseResult &each)
    {
        m_xml.writeStartElement(QStringLiteral("testcase"));
        put("classname", QStringLiteral("nacelle-check.") + each.group);
        put("name", each.id);
        put("time", secondsText(each.seconds));
        if (each.judgement == Judgement::Passed)
            putOutput(each);
        else
            putTrouble(each);
        m_xml.writeEndElement();
    }

    void putTrouble(const CaseResult &each)
    {
        const bool isFailure = each.judgement == Judgement::Failed;
        m_xml.writeStartElement(isFailure ? QStringLiteral("failure") : QStringLiteral("skipped"));
        put("message", each.why.in(m_language));
        if (isFailure)
            m_xml.writeCharacters(printable(detailsOf(each)));
        m_xml.writeEndElement();
    }

    void putOutput(const CaseResult &each)
    {
        const QString text = figuresOf(each) + each.why.in(m_language);
        if (!text.isEmpty())
            m_xml.writeTextElement(QStringLiteral("system-out"), printable(text));
    }

    QString figuresOf(const CaseResult &each) const
    {
        QString text;
        for (const Figure &figure : each.figures)
            text += figure.name.in(m_language) + QStringLiteral(": ") + measuredText(figure) +
                    QLatin1Char('\n');
        return text;
    }

    QString detailsOf(const CaseResult &each) const
    {
        QString text = QLatin1Char('\n') + each.name.in(m_language) + QLatin1Char('\n') +
                       each.reason.in(m_language) + QLatin1Char('\n') + figuresOf(each);
        for (const wire::Record &record : each.evidence)
            text += QStringLiteral("%1 %2 %3")
                        .arg(timeText(record), QLatin1String(wire::wordOf(record.direction)),
                             digitsText(record.bytes))
                        .trimmed() +
                    QLatin1Char('\n');
        return text;
    }

    const SessionResult &m_result;
    const LocalText m_verdict; ///< of the session as it was
    const wire::Language m_language;
    QXmlStreamWriter m_xml;
};

/// A CI server looks at failures alone: a session that hasn't passed, though nothing has failed so
/// far, gets one.
SessionResult withEnding(SessionResult result)
{
    if (result.isPassed() || result.count(Judgement::Failed) > 0)
        return result;
    CaseResult ending;
    ending.id = QStringLiteral("session.whole");
    ending.group = QStringLiteral("session");
    ending.name = {QStringLiteral("验收是否完成"),
                   QStringLiteral("whether the acceptance is complete")};
    ending.judgement = Judgement::Failed;
    ending.why = verdictOf(result);
    result.groups.append({ending.group, {QStringLiteral("会话"), QStringLiteral("Session")}});
    result.cases.append(ending);
    return result;
}

} // namespace

bool writeJunit(const SessionResult &result, wire::Language language, const QString &path,
                QString &error)
{
    QByteArray xml;
    const SessionResult whole = withEnding(result);
    JunitWriter(whole, verdictOf(result), language, xml).write();
    return writeWhole(path, xml, error);
}

} // namespace check
