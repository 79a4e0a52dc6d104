#include "tools/check/paper.h"
#include "tools/check/plot.h"
#include "tools/check/summary.h"
#include "tools/check/writers.h"
#include "tools/wire/decode.h"

#include <QBuffer>
#include <QPdfWriter>

namespace check {

namespace {

constexpr int kDotsInInch = 720;
/// Of one case; more of the same prove no more, and the other files have them all.
constexpr int kMostFrames = 8;
/// In millimetres: the four plots of two series have room on a page.
constexpr qreal kPlotHeight = 55;

constexpr Look kSmall{8, ink::kText};
constexpr Look kQuiet{8, ink::kQuiet};
constexpr Look kId{7.5, ink::kQuiet, true};
constexpr Look kDigits{7, ink::kText, true};

QRgb colourOf(Judgement judgement)
{
    return judgement == Judgement::Passed   ? ink::kGood
           : judgement == Judgement::Failed ? ink::kBad
                                            : ink::kOpen;
}

QRgb tintOf(QRgb colour)
{
    return colour == ink::kGood ? 0xFFE9F4EC : colour == ink::kBad ? 0xFFFBEBEA : 0xFFFBF3E3;
}

/// Seconds since the first frame of a run.
QVector<double> placesOf(const Times &times)
{
    QVector<double> places;
    for (const int moment : times.moments)
        places.append(moment / 1000.0);
    return places;
}

/// Puts a result on paper, from its title to the signatures.
class Report
{
public:
    Report(const SessionResult &result, wire::Language language, Paper &paper)
        : m_result(result), m_language(language), m_paper(paper)
    {
    }

    void write()
    {
        addTitle();
        addVerdict();
        addGroups();
        addCases();
        for (const Series &series : m_result.series)
            addSeries(series);
        addFailures();
        addSignatures();
    }

    QString title() const { return say("吊舱验收报告", "Pod acceptance report"); }
    /// What stands at each page's foot.
    QString foot() const
    {
        const QString device = m_result.device.isEmpty() ? m_result.link : m_result.device;
        return day() + QStringLiteral("  ·  ") + device; // what is too long loses its end
    }

private:
    QString say(const char *zh, const char *en) const
    {
        return QString::fromUtf8(m_language == wire::Language::Chinese ? zh : en);
    }
    QString say(const LocalText &text) const { return text.in(m_language); }
    QString day() const { return m_result.begin.toString(QStringLiteral("yyyy-MM-dd")); }

    void addHeading(const QString &text)
    {
        m_paper.leave(7);
        m_paper.addHeading({text, {13, ink::kAccent}});
        m_paper.leave(1.5);
    }

    /// Rows of a name and what it is; a row without the latter is left out.
    void addFacts(const QVector<QPair<QString, QString>> &facts, qreal points)
    {
        Table table;
        table.shares = {0.18, 0.82};
        for (const auto &fact : facts) {
            if (fact.second.isEmpty())
                continue;
            Row row;
            row.cells = {Cell{Words{fact.first, {points, ink::kQuiet}}},
                         Cell{Words{fact.second, {points}}}};
            table.rows.append(row);
        }
        table.together = table.rows.size();
        m_paper.addTable(table);
    }

    void addTitle()
    {
        m_paper.addHeading({title(), {22}});
        m_paper.leave(4);
        const QString begin = m_result.begin.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        const QString offset =
            m_result.begin.toOffsetFromUtc(m_result.begin.offsetFromUtc()).timeZoneAbbreviation();
        addFacts({{say("设备", "Device"), orDash(m_result.device)},
                  {say("链路", "Link"), m_result.link},
                  {say("版本", "Versions"), versionText(m_result.versions, m_language)},
                  {say("开始时间", "Started"), begin + QStringLiteral("  ") + offset},
                  {say("用时", "Duration"), durationText(m_result.seconds)},
                  {say("检验员", "Inspector"), orDash(m_result.inspector)},
                  {say("录制文件", "Recording"), m_result.recording},
                  {say("循环数", "Cycles"), cyclesText(m_result)},
                  {say("自备项目文件", "Own case files"), caseFilesText(m_result)},
                  {say("未运行", "Not run"), m_result.notRun.join(QStringLiteral(", "))},
                  {say("工具", "Tool"), m_result.tool}},
                 9.5);
    }

    static QString orDash(const QString &text)
    {
        return text.isEmpty() ? QStringLiteral("–") : text;
    }

    QString countsText() const
    {
        return say("%1 项用例：通过 %2，不通过 %3，未判定 %4",
                   "%1 cases: %2 passed, %3 failed, %4 not judged")
            .arg(m_result.cases.size())
            .arg(m_result.count(Judgement::Passed))
            .arg(m_result.count(Judgement::Failed))
            .arg(m_result.count(Judgement::NotJudged));
    }

    void addVerdict()
    {
        const Judgement judgement = m_result.isPassed()                    ? Judgement::Passed
                                    : m_result.ending == Ending::BrokenOff ? Judgement::NotJudged
                                                                           : Judgement::Failed;
        const QRgb colour = colourOf(judgement);
        Row row;
        row.fill = tintOf(colour);
        row.bar = colour;
        row.cells = {Cell{Words{say("结论", "Verdict"), kQuiet},
                          Words{say(verdictOf(m_result)), {22, colour}},
                          Words{countsText(), {10}}}};
        if (!m_result.lossReason.isEmpty())
            row.cells[0].append({m_result.lossReason, {9, ink::kQuiet}});
        Table table;
        table.isRuled = false;
        table.padding = 3;
        table.rows = {row};
        m_paper.leave(8);
        m_paper.addTable(table);
    }

    static Cell countCell(int count, QRgb colour)
    {
        return {{QString::number(count), {9, count > 0 ? colour : ink::kQuiet}}};
    }

    Row countsRow(const QString &title, const QVector<CaseResult> &cases) const
    {
        Row row;
        row.cells = {Cell{Words{title}}, countCell(cases.size(), ink::kText)};
        for (const Judgement each : {Judgement::Passed, Judgement::Failed, Judgement::NotJudged})
            row.cells.append(countCell(countOf(cases, each), colourOf(each)));
        return row;
    }

    void addGroups()
    {
        addHeading(say("汇总", "Summary"));
        Table table;
        table.shares = {0.48, 0.13, 0.13, 0.13, 0.13};
        table.head = {say("分组", "Group"), say("用例", "Cases"), say("通过", "Passed"),
                      say("不通过", "Failed"), say("未判定", "Not judged")};
        for (const GroupTitle &group : groupsOf(m_result))
            table.rows.append(countsRow(say(group.title), casesOf(m_result, group.id)));
        Row total = countsRow(say("合计", "Total"), m_result.cases);
        total.fill = ink::kShade;
        table.rows.append(total);
        m_paper.addTable(table);
    }

    /// A value's line doesn't end before its unit or in the brackets of its limit.
    static QString unbroken(QString text) { return text.replace(QLatin1Char(' '), QChar::Nbsp); }

    QString figuresText(const CaseResult &each) const
    {
        QStringList lines;
        for (const Figure &figure : each.figures)
            lines << say("%1：%2", "%1: %2").arg(say(figure.name), unbroken(measuredText(figure)));
        return lines.join(QLatin1Char('\n'));
    }

    Row caseRow(const CaseResult &each) const
    {
        Row row;
        row.cells = {Cell{Words{say(each.name)}, Words{each.id, kId}},
                     Cell{Words{say(wordOf(each.judgement)), {9, colourOf(each.judgement)}}},
                     Cell{Words{figuresText(each), kSmall}}, Cell{Words{say(each.why), kSmall}}};
        return row;
    }

    void addCases()
    {
        if (m_result.cases.isEmpty())
            return;
        m_paper.turnPage();
        addHeading(say("全部用例", "All cases"));
        Table table;
        table.shares = {0.34, 0.12, 0.27, 0.27};
        table.head = {say("用例", "Case"), say("判定", "Judgement"),
                      say("测量值（限值）", "Measured (limit)"), say("原因", "Why")};
        for (const GroupTitle &group : groupsOf(m_result)) {
            Row title;
            title.cells = {Cell{Words{say(group.title), {10, ink::kAccent}}}};
            title.staysWithNext = true;
            table.rows.append(title);
            for (const CaseResult &each : casesOf(m_result, group.id))
                table.rows.append(caseRow(each));
        }
        m_paper.addTable(table);
    }

    PlotWords plotWords(const QString &title, const QString &x, const QString &y) const
    {
        return {title,
                x,
                y,
                say("中位数", "median"),
                say("99 % 分位", "99th pct"),
                say("最差", "worst"),
                say("更大", "above"),
                say("没有数据", "no data")};
    }

    /// Histogram and run of times beside one another.
    void addPlots(const QString &title, const Times &times, bool staysWithNext)
    {
        const PlotWords histogram = plotWords(title, QStringLiteral("ms"), say("次数", "count"));
        const PlotWords run = plotWords(title + say("：过程", " over the run"), QStringLiteral("s"),
                                        QStringLiteral("ms"));
        m_paper.addDrawing(kPlotHeight, staysWithNext, [=](QPainter &painter, const QRectF &area) {
            const qreal width = area.width() * 0.47;
            const QSizeF size(width, area.height());
            drawHistogram(painter, {area.topLeft(), size}, times.micros, histogram);
            drawRun(painter, {area.topRight() - QPointF(width, 0), size}, placesOf(times),
                    times.micros, run);
        });
    }

    void addSeries(const Series &series)
    {
        if (series.answers.micros.isEmpty() && series.periods.micros.isEmpty())
            return;
        addHeading(say("时间：", "Times: ") + say(series.name));
        addPlots(say("应答时间", "Answer time"), series.answers, true);
        m_paper.leave(4);
        addPlots(say("应答周期", "Period"), series.periods, false);
    }

    void addFailures()
    {
        bool isFirst = true;
        for (const CaseResult &each : m_result.cases) {
            if (each.judgement != Judgement::Failed)
                continue;
            if (isFirst) {
                m_paper.turnPage();
                addHeading(say("不通过的用例", "Failed cases"));
            }
            addFailure(each);
            isFirst = false;
        }
    }

    void addFailureTitle(const CaseResult &each)
    {
        m_paper.leave(6);
        Table title;
        title.isRuled = false;
        title.padding = 1.8;
        Row row;
        row.fill = tintOf(ink::kBad);
        row.bar = ink::kBad;
        row.cells = {Cell{Words{say(each.name), {11}}, Words{each.id, kId}}};
        row.staysWithNext = true;
        title.rows = {row};
        m_paper.addTable(title);
    }

    void addFailure(const CaseResult &each)
    {
        addFailureTitle(each);
        addFacts({{say("目的", "Reason"), say(each.reason)},
                  {say("原因", "Why it failed"), say(each.why)},
                  {say("测量值", "Measured"), figuresText(each)},
                  {say("尝试次数", "Attempts"), QString::number(each.attempts)},
                  {say("用时", "Duration"), durationText(each.seconds)}},
                 9);
        for (int i = 0; i < qMin(each.evidence.size(), kMostFrames); ++i)
            addEvidence(each, i);
        if (each.evidence.size() > kMostFrames) {
            m_paper.leave(2);
            m_paper.addHeading({say("另有 %1 条，见 JSON 结果。", "%1 more are in the JSON result.")
                                    .arg(each.evidence.size() - kMostFrames),
                                kQuiet});
        }
    }

    /// A frame's name says which way it goes; a word is there for what goes another way.
    QString directionText(const wire::Record &record) const
    {
        const wire::Direction direction = record.direction;
        if (direction == wire::usualDirection(wire::kindOf(record.bytes)))
            return {};
        return direction == wire::Direction::Tx   ? say("发送", "sent")
               : direction == wire::Direction::Rx ? say("接收", "received")
                                                  : QString();
    }

    QString crcText(const wire::Record &record) const
    {
        switch (wire::verdictOf(record.bytes)) {
        case wire::Verdict::Ok:
            return say("校验通过", "checksum passed");
        case wire::Verdict::Bad:
            return say("校验不通过", "checksum FAILED");
        default:
            return say("没有校验", "no checksum");
        }
    }

    QString recordTitle(const CaseResult &each, int number) const
    {
        const wire::Record &record = each.evidence[number];
        const wire::FrameKind kind = wire::kindOf(record.bytes);
        const bool isFrame = kind != wire::FrameKind::Unknown;
        QStringList parts = {
            say("证据 %1 / %2", "Evidence %1 of %2").arg(number + 1).arg(each.evidence.size()),
            timeText(record),
            directionText(record),
            isFrame ? wire::nameOf(kind, m_language) : say("不是帧", "not a frame"),
            QStringLiteral("%1 B").arg(record.bytes.size()),
            isFrame ? crcText(record) : QString()};
        parts.removeAll(QString());
        return parts.join(QStringLiteral("  ·  "));
    }

    void addEvidence(const CaseResult &each, int number)
    {
        const wire::Record &record = each.evidence[number];
        m_paper.leave(4);
        m_paper.addHeading({recordTitle(each, number), {9, ink::kAccent}});
        if (wire::kindOf(record.bytes) == wire::FrameKind::Unknown)
            addDigits(record.bytes);
        else
            addFields(record.bytes);
    }

    void addDigits(const QByteArray &bytes)
    {
        Row row;
        row.cells = {Cell{Words{digitsText(bytes), kDigits}}};
        Table table;
        table.rows = {row};
        m_paper.addTable(table);
    }

    void addFields(const QByteArray &bytes)
    {
        Table table;
        table.padding = 0.5;
        table.together = 5;
        table.shares = {0.11, 0.31, 0.23, 0.08, 0.27};
        table.head = {say("字节", "Bytes"), say("字段", "Field"), say("值", "Value"),
                      say("单位", "Unit"), say("十六进制", "Digits")};
        for (const wire::ShownField &field : wire::shownFields(bytes, m_language)) {
            Row row;
            row.cells = {Cell{Words{field.place, {7, ink::kQuiet}}}, Cell{Words{field.name, {7.5}}},
                         Cell{Words{field.value, {7.5}}}, Cell{Words{field.unit, {7, ink::kQuiet}}},
                         Cell{Words{digitsText(field.bytes), kDigits}}};
            table.rows.append(row);
        }
        m_paper.addTable(table);
    }

    Row signatureRow(const QString &role, const QString &name) const
    {
        Row row;
        row.leastHeight = 17;
        row.cells = {Cell{Words{role}}, Cell{Words{name}}, Cell{}, Cell{}};
        return row;
    }

    void addSignatures()
    {
        addHeading(say("签字", "Signatures"));
        Table table;
        table.shares = {0.2, 0.27, 0.2, 0.33};
        table.head = {say("角色", "Role"), say("姓名", "Name"), say("日期", "Date"),
                      say("签字", "Signature")};
        table.rows = {signatureRow(say("检验员", "Inspector"), m_result.inspector),
                      signatureRow(say("审核", "Reviewed by"), {}),
                      signatureRow(say("接收方", "Accepted by"), {})};
        table.together = table.rows.size();
        m_paper.addTable(table);
    }

    const SessionResult &m_result;
    const wire::Language m_language;
    Paper &m_paper;
};

} // namespace

bool writeReport(const SessionResult &result, wire::Language language, const QString &path,
                 QString &error)
{
    QBuffer pdf;
    pdf.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&pdf);
        writer.setResolution(kDotsInInch);
        Paper paper(writer);
        Report report(result, language, paper);
        writer.setTitle(report.title() + QStringLiteral(": ") + report.foot());
        writer.setCreator(result.tool);
        report.write();
        if (!paper.print(report.foot())) {
            error = path + QStringLiteral(": the pages can't be painted");
            return false;
        }
    }
    return writeWhole(path, pdf.data(), error);
}

} // namespace check
