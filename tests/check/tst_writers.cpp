#include "tests/support/strictmain.h"
#include "tools/check/percentile.h"
#include "tools/check/writers.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <limits>

Q_DECLARE_METATYPE(wire::Language)

using namespace check;

namespace {

using wire::Language;

/// An answer to Photo (0x20) that says failure, made by hand: mode Tracking, checksum 9B E0.
const QByteArray kAnswer = QByteArray::fromHex("8a5e49000117") + QByteArray(63, '\0') +
                           QByteArray::fromHex("2001") + QByteArray::fromHex("9be0");

CaseResult caseOf(const QString &group, const QString &id, Judgement judgement)
{
    CaseResult made;
    made.id = id;
    made.group = group;
    made.name = {QStringLiteral("名称 ") + id, QStringLiteral("name of ") + id};
    made.reason = {QStringLiteral("目的 ") + id, QStringLiteral("reason of ") + id};
    made.judgement = judgement;
    made.seconds = 1.25;
    return made;
}

CaseResult failedCase()
{
    CaseResult made = caseOf("link", "link.answers", Judgement::Failed);
    made.why = {QStringLiteral("应答 <迟> & \"晚\"\x01"), QStringLiteral("<late> & \"slow\"\x01")};
    made.attempts = 3;
    made.figures = {{"answer_p99", {"应答时间", "answer time"}, 61.25, "ms", "<= 40"},
                    {"lost", {"丢失", "lost"}, 2, "", ""},
                    {"ratio", {"比例", "ratio"}, std::numeric_limits<double>::quiet_NaN(), "", ""}};
    made.evidence = {{1763717412345678, wire::Direction::Rx, kAnswer},
                     {wire::kNoTime, wire::Direction::Unknown, QByteArray::fromHex("0102ff")}};
    return made;
}

SessionResult sample()
{
    SessionResult made;
    made.tool = "nacelle-check 9.8.7";
    made.link = "udp:10.0.0.1:2000";
    made.device = QStringLiteral("吊舱 17");
    made.inspector = QStringLiteral("王晓明");
    made.begin = QDateTime(QDate(2025, 11, 21), QTime(9, 30, 12), Qt::OffsetFromUTC, 8 * 3600);
    made.seconds = 754.4;
    made.versions = {true, 1, 22, 33, 44};
    made.cycles = {{"link/cycle", 6, 2000}, {"endurance/endurance", 120000, 0}};
    made.caseFiles = {{"soft.json", "0123456789abcdef0123456789abcdef"}};
    made.notRun = QStringList{"payload", "link.order"};
    made.groups = {{"unused", {"空", "Unused"}}, {"link", {"链路", "Link"}}};
    made.cases = {caseOf("extra", "extra.range", Judgement::NotJudged), failedCase(),
                  caseOf("link", "link.begin", Judgement::Passed)};
    made.cases[0].why = {QStringLiteral("没有测距仪"), QStringLiteral("no range finder")};
    made.series = {{"steady",
                    {"稳定", "steady run"},
                    {{5000, 1000, 4000, 2000, 3000}, {5, 31, 94, 9062, 9093}},
                    {{30000, 33000, 31000, 32000}, {31, 94, 9062, 9093}}}};
    return made;
}

/// Cases enough for several pages, the why of each between "first" and "last" and its number.
SessionResult longSample(int cases, int words)
{
    SessionResult made = sample();
    made.cases.clear();
    for (int i = 0; i < cases; ++i) {
        made.cases.append(caseOf("link", QStringLiteral("link.n%1").arg(i), Judgement::Failed));
        const QString number = QString::number(i);
        made.cases.last().why.en =
            "first" + number + QString(" word").repeated(words) + " last" + number;
    }
    return made;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What a program of the system makes of a file; null if it isn't there or fails.
QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished() && process.exitCode() == 0 ? process.readAllStandardOutput()
                                                                : QByteArray();
}

// `scripts/install-deps.sh papers`; Windows has no pdftotext.
#ifdef Q_OS_WIN
constexpr bool kReadsPapers = false;
#else
constexpr bool kReadsPapers = true;
#endif

bool isMissing(const char *program)
{
    return QStandardPaths::findExecutable(QLatin1String(program)).isEmpty();
}

/// Each element as "name attribute=value …", its text after it as "text …".
QStringList linesOf(const QByteArray &xml, QString &error)
{
    QStringList lines;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isCharacters() && !reader.isWhitespace())
            lines << "text " + reader.text();
        if (!reader.isStartElement())
            continue;
        QString line = reader.name().toString();
        for (const QXmlStreamAttribute &attribute : reader.attributes())
            line += ' ' + attribute.name() + '=' + attribute.value();
        lines << line;
    }
    error = reader.errorString();
    return lines;
}

/// "cases.1.figures.0.value" of a document.
QJsonValue at(QJsonValue value, const QString &path)
{
    for (const QString &step : path.split('.'))
        value = value.isArray() ? value.toArray().at(step.toInt()) : value.toObject().value(step);
    return value;
}

} // namespace

/// The files that an acceptance leaves, read back by those who know their forms.
class tst_writers : public QObject
{
    Q_OBJECT

private slots:
    void percentiles_data();
    void percentiles();
    void junit_data();
    void junit();
    void json_data();
    void json();
    void report_data();
    void report();
    void longReports_data();
    void longReports();
    void unwritable_data();
    void unwritable();

private:
    QString pathOf(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    QStringList pagesOf(const SessionResult &result, Language language) const;
    int papers() const;

    QTemporaryDir m_folder;
};

void tst_writers::percentiles_data()
{
    QTest::addColumn<QVector<int>>("sorted");
    QTest::addColumn<double>("share");
    QTest::addColumn<int>("value");
    QVector<int> hundred;
    for (int i = 1; i <= 100; ++i)
        hundred.append(i);
    QTest::newRow("none") << QVector<int>() << 0.5 << 0;
    QTest::newRow("one") << QVector<int>{7} << 0.99 << 7;
    QTest::newRow("median of even") << QVector<int>{1, 2, 3, 4} << 0.5 << 2;
    QTest::newRow("median of odd") << QVector<int>{1, 2, 3} << 0.5 << 2;
    QTest::newRow("99 of 100") << hundred << 0.99 << 99;
    QTest::newRow("99 of 99") << hundred.mid(0, 99) << 0.99 << 99;
    QTest::newRow("7 of 100") << hundred << 0.07 << 7; // 0.07 * 100 > 7
    QTest::newRow("worst") << hundred << 1.0 << 100;
    QTest::newRow("least") << hundred << 0.0 << 1;
}

void tst_writers::percentiles()
{
    QFETCH(QVector<int>, sorted);
    QFETCH(double, share);
    QTEST(percentile(sorted, share), "value");
}

void tst_writers::junit_data()
{
    QTest::addColumn<Language>("language");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("English")
        << Language::English
        << QStringList{
               "testsuites name=nacelle-check tests=3 failures=1 errors=0 skipped=1 time=754.400",
               "testsuite name=link tests=2 failures=1 errors=0 skipped=0 time=2.500",
               "testsuite name=extra tests=1 failures=0 errors=0 skipped=1 time=1.250",
               "time=1.250 timestamp=2025-11-21T01:30:12",
               "property name=link value=udp:10.0.0.1:2000",
               "property name=tool value=nacelle-check 9.8.7",
               "property name=cycles value=link/cycle 6 (2000), endurance/endurance 120000\n",
               "property name=case_files value=soft.json (SHA-256 0123456789abcdef…)",
               "property name=not_run value=payload, link.order",
               "property name=versions value=protocol 1, hardware 22, firmware 33, pod code 44",
               "testcase classname=nacelle-check.link name=link.begin time=1.250",
               "failure message=<late> & \"slow\"␁",
               "skipped message=no range finder",
               "answer time: 61.25 ms (≤ 40)",
               "\nlost: 2\nratio: –\n",
               "\n01 02 FF\n",
               "rx 8A 5E 49 00 01 17 00",
           };
    QTest::newRow("Chinese") << Language::Chinese
                             << QStringList{"failure message=应答 <迟> & \"晚\"␁",
                                            "skipped message=没有测距仪",
                                            "property name=title value=链路",
                                            "应答时间: 61.25 ms (≤ 40)", "目的 link.answers"};
}

void tst_writers::junit()
{
    QFETCH(Language, language);
    QFETCH(QStringList, lines);
    QString error;
    QVERIFY2(writeJunit(sample(), language, pathOf("junit.xml"), error), qPrintable(error));
    const QString all = linesOf(contentOf(pathOf("junit.xml")), error).join('\n') + '\n';
    QCOMPARE(error, QString());
    for (const QString &line : lines)
        QVERIFY2(all.contains(line), qPrintable(line + "\nisn't in\n" + all));
    QVERIFY(!all.contains("name=unused"));
    SessionResult open = sample();
    open.cases.remove(1);
    QVERIFY(writeJunit(open, Language::English, pathOf("junit.xml"), error));
    QVERIFY(contentOf(pathOf("junit.xml")).contains("\"verdict\" value=\"NOT PASSED"));
    if (!isMissing("xmllint"))
        QVERIFY(outputOf("xmllint", {pathOf("junit.xml")}).contains("</testsuites>"));
}

void tst_writers::json_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QJsonValue>("value");
    const auto row = [](const char *path, const QJsonValue &value) {
        QTest::newRow(path) << QString::fromLatin1(path) << value;
    };
    row("device", QStringLiteral("吊舱 17"));
    row("begin", "2025-11-21T09:30:12+08:00");
    row("seconds", 754.4);
    row("versions.firmware", 33);
    row("ending", "whole");
    row("cycles.0.cycles", 6);
    row("cycles.0.usual", 2000);
    row("case_files.0.sha256", "0123456789abcdef0123456789abcdef");
    row("not_run", "payload link.order");
    row("verdict", "failed");
    row("verdict_text.zh", QStringLiteral("不通过"));
    row("counts.not_judged", 1);
    row("groups.0.title.en", "Link");
    row("groups.1.id", "extra");
    row("cases.0.judgement", "not_judged");
    row("cases.0.figures", QJsonArray());
    row("cases.1.why.en", QStringLiteral("<late> & \"slow\"\x01"));
    row("cases.1.attempts", 3);
    row("cases.1.figures.0.value", 61.25);
    row("cases.1.figures.0.limit", "<= 40");
    row("cases.1.figures.2.value", QJsonValue::Null);
    row("cases.1.evidence.0.time", 1763717412.345678);
    row("cases.1.evidence.0.fields.mode", "track");
    row("cases.1.evidence.0.feedback.state", "failure");
    row("cases.1.evidence.1",
        QJsonObject{{"frame", "unknown"}, {"length", 3}, {"crc", "none"}, {"hex", "0102FF"}});
    row("series.0.answers_us", QJsonArray{5000, 1000, 4000, 2000, 3000});
    row("series.0.periods_us.1", 33000);
    row("series.0.periods_at_ms.3", 9093);
}

void tst_writers::json()
{
    QFETCH(QString, path);
    QString error;
    QVERIFY2(writeJson(sample(), pathOf("result.json"), error), qPrintable(error));
    QJsonParseError trouble;
    const auto document = QJsonDocument::fromJson(contentOf(pathOf("result.json")), &trouble);
    QCOMPARE(trouble.errorString(), QStringLiteral("no error occurred"));
    QTEST(at(document.object(), path), "value");
}

/// The pages' texts, their unbreakable blanks as plain ones.
QStringList tst_writers::pagesOf(const SessionResult &result, Language language) const
{
    QString error;
    if (!writeReport(result, language, pathOf("report.pdf"), error))
        qFatal("%s", qPrintable(error));
    QString text = QString::fromUtf8(outputOf("pdftotext", {"-layout", pathOf("report.pdf"), "-"}));
    return text.replace(QChar::Nbsp, QChar::Space).split('\f', Qt::SkipEmptyParts);
}

/// Pages of the report as its file counts them; 0 if that isn't whole.
int tst_writers::papers() const
{
    const QByteArray pdf = contentOf(pathOf("report.pdf"));
    const bool isWhole = pdf.startsWith("%PDF-1.") && pdf.trimmed().endsWith("%%EOF");
    return isWhole ? pdf.count("/Type /Page\n") : 0;
}

void tst_writers::report_data()
{
    QTest::addColumn<Language>("language");
    QTest::addColumn<QStringList>("words");
    QTest::newRow("English") << Language::English
                             << QStringList{"Pod acceptance report",
                                            "FAILED",
                                            "吊舱 17",
                                            "2025-11-21 09:30:12",
                                            "12 min 34 s",
                                            "firmware 33",
                                            "link/cycle 6 (2000), endurance/endurance 120000",
                                            "soft.json (SHA-256 0123456789abcdef…)",
                                            "payload, link.order",
                                            "3 cases: 1 passed, 1 failed, 1 not judged",
                                            "answer time: 61.25 ms (≤ 40)",
                                            "no range finder",
                                            "reason of link.answers",
                                            "Photo failed",
                                            "Tracking",
                                            "9B E0",
                                            "01 02 FF",
                                            "checksum passed",
                                            "median 3.00 ms",
                                            "99th pct 5.00 ms",
                                            "median 31.00 ms",
                                            "worst 33.00 ms",
                                            "Signature"};
    QTest::newRow("Chinese") << Language::Chinese
                             << QStringList{"吊舱验收报告",
                                            "不通过",
                                            "王晓明",
                                            "固件 33",
                                            "3 项用例：通过 1，不通过 1，未判定 1",
                                            "应答时间：61.25 ms (≤ 40)",
                                            "没有测距仪",
                                            "目的 link.answers",
                                            "校验通过",
                                            "中位数 3.00 ms",
                                            "最差 33.00 ms",
                                            "签字"};
}

void tst_writers::report()
{
    QFETCH(Language, language);
    QFETCH(QStringList, words);
    const QStringList pages = pagesOf(sample(), language);
    QVERIFY(papers() > 1);
    if (!kReadsPapers)
        return;
    QCOMPARE(papers(), pages.size());
    const QString all = pages.join('\n');
    for (const QString &each : words)
        QVERIFY2(all.contains(each), qPrintable(each + "\nisn't in\n" + all));
    for (int i = 0; i < pages.size(); ++i) {
        const QString foot = pages[i].trimmed().section('\n', -1).remove(' ');
        QCOMPARE(foot, QStringLiteral("2025-11-21·吊舱17%1/%2").arg(i + 1).arg(pages.size()));
    }
    QVERIFY(!contentOf(pathOf("report.pdf")).contains(m_folder.path().toUtf8()));
}

void tst_writers::longReports_data()
{
    QTest::addColumn<int>("cases");
    QTest::addColumn<int>("words");
    QTest::addColumn<bool>("isTorn");
    QTest::newRow("many rows") << 60 << 5 << false;
    QTest::newRow("tall rows") << 20 << 150 << false;
    QTest::newRow("a row longer than a page") << 1 << 1500 << true;
}

/// Each row is whole and on one page under the table's head, which every page of the table has.
void tst_writers::longReports()
{
    QFETCH(int, cases);
    QFETCH(int, words);
    QFETCH(bool, isTorn);
    QStringList pages = pagesOf(longSample(cases, words), Language::English);
    QVERIFY(papers() > 3);
    if (!kReadsPapers)
        return;
    while (!pages.isEmpty() && !pages.first().contains("All cases"))
        pages.removeFirst();
    const auto pageWith = [&pages](const QString &word) {
        const QRegularExpression whole("\\b" + word + "\\b");
        return int(std::find_if(pages.begin(), pages.end(),
                                [&](const QString &page) { return page.contains(whole); }) -
                   pages.begin());
    };
    for (int i = 0; i < cases; ++i) {
        const int first = pageWith(QStringLiteral("first%1").arg(i));
        const int last = pageWith(QStringLiteral("last%1").arg(i));
        QVERIFY(last < pages.size());
        QCOMPARE(first != last, isTorn);
        for (const int page : {first, last})
            QVERIFY2(pages[page].contains("Judgement"), qPrintable(pages[page]));
    }
    QVERIFY(pageWith(QStringLiteral("last%1").arg(cases - 1)) > 0);
}

void tst_writers::unwritable_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("no such folder") << m_folder.filePath("none/file");
    QTest::newRow("a folder") << m_folder.path();
}

void tst_writers::unwritable()
{
    QFETCH(QString, path);
    QString errors[3];
    QVERIFY(!writeJunit(sample(), Language::English, path, errors[0]));
    QVERIFY(!writeJson(sample(), path, errors[1]));
    QVERIFY(!writeReport(sample(), Language::English, path, errors[2]));
    for (const QString &error : errors)
        QVERIFY2(error.startsWith(path + ": "), qPrintable(error));
}

NACELLE_TEST_MAIN(tst_writers)
#include "tst_writers.moc"
