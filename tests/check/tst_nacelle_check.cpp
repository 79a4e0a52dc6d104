#include "tests/podsim/podprocess.h"
#include "tests/support/strictmain.h"
#include "tests/support/toolrun.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

const QString kCheck = QStringLiteral(CHECK_PATH);

QStringList words(const QString &text)
{
    return text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QJsonObject jsonIn(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                          : QJsonObject();
}

/// Judgements by case.
QMap<QString, QString> judgementsIn(const QString &path)
{
    QMap<QString, QString> judgements;
    for (const auto &each : jsonIn(path).value("cases").toArray())
        judgements.insert(each.toObject().value("id").toString(),
                          each.toObject().value("judgement").toString());
    return judgements;
}

/// A file with a long group that lights: nothing that --minutes alone may run.
QString litFile(const QString &path)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(R"({"group": "lit", "long": true, "title": {"zh": "光", "en": "Light"},
            "effects": ["lights"], "warning": {"zh": "光", "en": "It lights."},
            "reason": {"zh": "光", "en": "light"},
            "cases": [{"id": "on", "steps": [
                {"ask": {"command": {"name": "light", "params": {"state": 1}}}}]}]})");
    return path;
}

double figureIn(const QString &path, const QString &id)
{
    for (const auto &each : jsonIn(path).value("cases").toArray())
        for (const auto &figure : each.toObject().value("figures").toArray())
            if (figure.toObject().value("id").toString() == id)
                return figure.toObject().value("value").toDouble();
    return -1;
}

struct Line
{
    double time;
    QByteArray direction;
    QByteArray digits;
};

/// A recording by way of another program.
QVector<Line> linesIn(const QString &recording)
{
    const Ended read =
        ToolRun(QStringLiteral(WIRE_PATH), {"convert", "--as", "line", recording}).end();
    QVector<Line> lines;
    for (const QByteArray &line : read.out.split('\n')) {
        const QList<QByteArray> parts = line.split(' ');
        if (parts.size() == 3)
            lines.append({parts[0].mid(1).chopped(1).toDouble(), parts[1], parts[2]});
    }
    return lines;
}

} // namespace

class tst_nacelle_check : public QObject
{
    Q_OBJECT

private slots:
    void goodPod_data();
    void goodPod();
    void commandLine_data();
    void commandLine();
    void nothingGoesOutUnasked();
    void stopped_data();
    void stopped();
    void nohup();
    void cutLink();
    void numbersOfTheRecording();
    void badPods_data();
    void badPods();
    void filesOfCases();

private:
    QString file(const char *name) const { return QDir(m_folder.path()).filePath(name); }

    QTemporaryDir m_folder;
};

void tst_nacelle_check::goodPod_data()
{
    QTest::addColumn<QString>("pod");
    QTest::addColumn<QString>("link");
    QTest::newRow("tcp") << "--tcp 0"
                         << "tcp://127.0.0.1:%1";
    QTest::newRow("udp") << "--udp 0 --udp-reply 42338"
                         << "udp://127.0.0.1:%1?local=42338";
    QTest::newRow("serial") << "--pty " + file("pod") << "serial://" + file("pod");
}

/// Times are left to the matrix, which isn't run on a machine that is busy with tests.
void tst_nacelle_check::goodPod()
{
    QFETCH(QString, pod);
    QFETCH(QString, link);
    PodProcess process(words(pod));
    const QString kind = QTest::currentDataTag();
    QVERIFY(process.awaitLine(kind == "serial" ? "pod" : "listening on " + kind));
    if (kind != "serial")
        link = link.arg(process.port(kind));
    const QString json = file("good.json");
    const Ended ended = ToolRun(kCheck, {link, "--group", "link,protocol,commands,motion,payload",
                                         "--motion", "--cycles", "40", "--json", json})
                            .end();
    QVERIFY2(ended.code == 0, ended.out + ended.error);
    const QMap<QString, QString> judgements = judgementsIn(json);
    QCOMPARE(judgements.value("link.loss"), QString("passed"));
    QCOMPARE(judgements.value("motion.look_down"), QString("passed"));
    QCOMPARE(judgements.value("protocol.split"), QString(kind == "udp" ? "not_judged" : "passed"));
    QCOMPARE(judgements.size(), 51);
}

void tst_nacelle_check::commandLine_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("said");
    QTest::newRow("no link") << "" << 2 << QByteArray("one link is needed");
    QTest::newRow("no such link") << "ftp://x" << 2 << QByteArray("ftp://x");
    QTest::newRow("motion unasked") << "tcp://h --group motion" << 2 << QByteArray("--motion");
    QTest::newRow("endless") << "tcp://h --group endurance" << 2 << QByteArray("--minutes");
    QTest::newRow("no such group") << "tcp://h --group nix" << 2 << QByteArray("\"nix\"");
    QTest::newRow("no such case") << "tcp://h --case link.nix" << 2 << QByteArray("\"link.nix\"");
    QTest::newRow("cycles") << "tcp://h --cycles 0" << 2 << QByteArray("--cycles");
    QTest::newRow("no such file") << "tcp://h --cases nix.json" << 2 << QByteArray("nix.json");
    QTest::newRow("nowhere to write")
        << "tcp://127.0.0.1:1 --junit /nowhere/r.xml" << 1 << QByteArray("/nowhere/r.xml");
    QTest::newRow("a folder for a report")
        << "tcp://127.0.0.1:1 --report " + m_folder.path() << 1 << QByteArray(": a folder");
    QTest::newRow("two into one") << "tcp://h --json r --junit ./r" << 2
                                  << QByteArray("is written already");
    QTest::newRow("nowhere at all") << "tcp://h --json=" << 2 << QByteArray("a file is needed");
    QTest::newRow("nobody there") << "tcp://127.0.0.1:1" << 3 << QByteArray("refused");
    QTest::newRow("no such port") << "serial:///dev/nix" << 3 << QByteArray("/dev/nix");
    QTest::newRow("help") << "--help" << 0 << QByteArray();
    QTest::newRow("list") << "--list" << 0 << QByteArray();
}

void tst_nacelle_check::commandLine()
{
    QFETCH(QString, arguments);
    QFETCH(int, code);
    QFETCH(QByteArray, said);
    const Ended ended = ToolRun(kCheck, words(arguments)).end();
    QVERIFY2(ended.code == code && ended.error.contains(said), ended.error);
    QCOMPARE(ended.out.isEmpty(), code != 0);
}

/// What the usual groups send, as the dry run lists it and as the pod gets it: no command that
/// moves it, zooms, lights or records, and nothing that the list doesn't name.
void tst_nacelle_check::nothingGoesOutUnasked()
{
    const QByteArray list = ToolRun(kCheck, {"--dry-run"}).end().out;
    QVERIFY(list.contains("  100 x  A8E549")); // 2,000 cycles of 20 frames in turn
    const QByteArray photo = ToolRun(kCheck, {"--dry-run", "--case", "payload.photo"}).end().out;
    QVERIFY2(photo.contains("   1 x  A8E549") && photo.contains("<= 66 x  A8E548"), photo);
    const QByteArray named =
        ToolRun(kCheck, {"--dry-run", "--group", "link", "--motion"}).end().out;
    QVERIFY(!named.contains("motion.angles"));
    const QByteArray lit =
        ToolRun(kCheck, {"--dry-run", "--minutes", "1", "--cases", litFile(file("lit.json"))})
            .end()
            .out;
    QVERIFY2(lit.contains("endurance.loss") && !lit.contains("lit.on"), lit);
    PodProcess pod({"--tcp", "0"});
    QVERIFY(pod.awaitLine("listening"));
    const QString recording = file("usual.pcapng");
    ToolRun(kCheck, {QStringLiteral("tcp://127.0.0.1:%1").arg(pod.port("tcp")), "--cycles", "8",
                     "--record", recording})
        .end();
    int count = 0;
    for (const Line &line : linesIn(recording)) {
        if (line.direction != "tx")
            continue;
        ++count;
        QVERIFY2(list.contains(line.digits), line.digits);
    }
    QVERIFY(count > 100);
    for (const QByteArray &code : QByteArray("01 03 10 11 12 13 14 20 21 22 23 25 26").split(' '))
        QVERIFY2(!pod.output().contains("command 0x" + code), code);
}

void tst_nacelle_check::stopped_data()
{
    QTest::addColumn<QVector<int>>("sent");
    QTest::newRow("Ctrl+C") << QVector<int>{SIGINT};
    QTest::newRow("Ctrl+C twice") << QVector<int>{SIGINT, SIGINT};
    QTest::newRow("the terminal is closed") << QVector<int>{SIGHUP};
    QTest::newRow("by a script, then the terminal") << QVector<int>{SIGTERM, SIGHUP};
}

void tst_nacelle_check::stopped()
{
    QFETCH(QVector<int>, sent);
    PodProcess pod({"--tcp", "0"});
    QVERIFY(pod.awaitLine("listening"));
    const QString json = file("stopped.json");
    QFile::remove(json);
    ToolRun check(kCheck, {QStringLiteral("tcp://127.0.0.1:%1").arg(pod.port("tcp")), "--group",
                           "motion", "--motion", "--json", json, "--report", file("stopped.pdf"),
                           "--junit", file("stopped.xml")});
    QVERIFY(pod.awaitLine("mode 0x10"));
    for (const int signal : sent)
        check.send(signal);
    const Ended ended = check.end();
    QCOMPARE(ended.code, 1);
    QVERIFY(ended.error.contains("The pod will move") || ended.error.contains("吊舱将运动"));
    QVERIFY(ended.error.contains("left in order") || ended.error.contains("正在恢复吊舱"));
    QCOMPARE(jsonIn(json).value("ending").toString(), QString("broken_off"));
    QVERIFY(QFile(file("stopped.pdf")).size() > 1000);
    QFile junit(file("stopped.xml"));
    QVERIFY(junit.open(QIODevice::ReadOnly) && junit.readAll().contains("<failure "));
    QVERIFY(pod.awaitLine("command 0x03 recentre: success"));
}

/// What nohup has started outlives its terminal.
void tst_nacelle_check::nohup()
{
    PodProcess pod({"--tcp", "0"});
    QVERIFY(pod.awaitLine("listening"));
    ToolRun check("nohup", {kCheck, QStringLiteral("tcp://127.0.0.1:%1").arg(pod.port("tcp")),
                            "--case", "motion.angles", "--motion"});
    QVERIFY(pod.awaitLine("mode 0x10"));
    QCOMPARE(check.stop(SIGHUP).code, 0);
}

void tst_nacelle_check::cutLink()
{
    PodProcess pod({"--tcp", "0", "--leave-after", "30"});
    QVERIFY(pod.awaitLine("listening"));
    const QString json = file("cut.json");
    const Ended ended = ToolRun(kCheck, {QStringLiteral("tcp://127.0.0.1:%1").arg(pod.port("tcp")),
                                         "--group", "link,commands", "--json", json})
                            .end();
    QCOMPARE(ended.code, 1);
    QCOMPARE(jsonIn(json).value("ending").toString(), QString("link_lost"));
    const QMap<QString, QString> judgements = judgementsIn(json);
    QCOMPARE(judgements.value("link.answers"), QString("passed"));
    QCOMPARE(judgements.values().count("failed"), 1);
    QCOMPARE(judgements.value("commands.osd"), QString("not_judged"));
}

/// The numbers of a session, from its recording by plain arithmetic.
void tst_nacelle_check::numbersOfTheRecording()
{
    PodProcess pod({"--tcp", "0", "--drop", "17", "--jitter", "12"});
    QVERIFY(pod.awaitLine("listening"));
    const QString json = file("numbers.json"), recording = file("numbers.pcapng");
    const QString cases = "link.loss,timing.answer_median,timing.answer_p99,timing.answer_worst";
    const Ended ended =
        ToolRun(kCheck, {QStringLiteral("tcp://127.0.0.1:%1").arg(pod.port("tcp")), "--case", cases,
                         "--cycles", "150", "--json", json, "--record", recording})
            .end();
    QCOMPARE(ended.code, 1);
    const QVector<Line> lines = linesIn(recording);
    int sent = 0;
    std::vector<int> times;
    QMap<QString, double> asked; // by the code, for a busy machine hears an answer late
    for (const Line &line : lines) {
        const QString code = line.digits.mid(138, 2);
        // The first of the four commands that the cycles send in turn.
        if (sent == 0 && !(line.direction == "tx" && code == "24"))
            continue;
        if (line.direction == "tx") {
            ++sent;
            asked[code] = line.time;
        } else {
            times.push_back(int(std::lround((line.time - asked[code]) * 1e6)));
        }
    }
    std::sort(times.begin(), times.end());
    QCOMPARE(sent, 150);
    const auto n = times.size();
    QCOMPARE(figureIn(json, "lost"), double(150 - int(n)));
    QCOMPARE(figureIn(json, "answer_worst"), times.back() / 1000.0);
    QCOMPARE(figureIn(json, "answer_median"), times[(n + 1) / 2 - 1] / 1000.0);
    QCOMPARE(figureIn(json, "answer_p99"), times[(99 * n + 99) / 100 - 1] / 1000.0);
}

void tst_nacelle_check::badPods_data()
{
    QTest::addColumn<QString>("pod");
    QTest::addColumn<QString>("cases");
    QTest::addColumn<QString>("judgements"); // in the order of the cases
    QTest::newRow("silent, nothing else asked") << "--silent"
                                                << "protocol.wrong_checksum"
                                                << "failed";
    QTest::newRow("slow to answer what is broken") << "--answer-broken --delay 350"
                                                   << "protocol.wrong_length"
                                                   << "failed";
    QTest::newRow("answers the first frames only") << "--hang-after 25"
                                                   << "link.answers,protocol.mode"
                                                   << "passed failed";
    QTest::newRow("accepts after a while") << "--accept-unknown --ack-after 100"
                                           << "commands.unknown"
                                           << "failed";
    QTest::newRow("stuck where it starts") << "--stuck"
                                           << "motion.still,motion.recentre"
                                           << "failed failed";
    QTest::newRow("sinks") << "--drift-pitch 0.3"
                           << "motion.still"
                           << "failed";
    QTest::newRow("follows all the time") << "--lie-mode 12"
                                          << "motion.follow"
                                          << "failed";
    QTest::newRow("slow, but good") << "--delay 400"
                                    << "payload.record,payload.light,protocol.wrong_checksum"
                                    << "passed passed passed";
}

/// One case alone finds its fault too, and a slow pod isn't a bad one.
void tst_nacelle_check::badPods()
{
    QFETCH(QString, pod);
    QFETCH(QString, cases);
    QFETCH(QString, judgements);
    PodProcess process(words("--tcp 0 " + pod));
    QVERIFY(process.awaitLine("listening"));
    const QString json = file("bad.json");
    ToolRun(kCheck, {QStringLiteral("tcp://127.0.0.1:%1").arg(process.port("tcp")), "--case", cases,
                     "--motion", "--json", json})
        .end();
    const QMap<QString, QString> found = judgementsIn(json);
    QStringList got;
    for (const QString &id : cases.split(','))
        got.append(found.value(id));
    QCOMPARE(got.join(' '), judgements);
}

void tst_nacelle_check::filesOfCases()
{
    PodProcess pod({"--tcp", "0"});
    QVERIFY(pod.awaitLine("listening"));
    const QString link = QStringLiteral("tcp://127.0.0.1:%1").arg(pod.port("tcp"));
    QVERIFY(ToolRun(kCheck, {"--export", m_folder.path()}).end().code == 0);
    QVERIFY(QFile::exists(file("link.json")));
    QCOMPARE(ToolRun(kCheck, {"--export", m_folder.path()}).end().code, 1);
    const QString json = file("own.json");
    QCOMPARE(ToolRun(kCheck,
                     {link, "--cases", file("link.json"), "--case", "link.version", "--json", json})
                 .end()
                 .code,
             0);
    const QJsonObject own = jsonIn(json).value("case_files").toArray().at(0).toObject();
    QCOMPARE(own.value("name").toString(), QString("link.json"));
    const QByteArray sum = ToolRun("sha256sum", {file("link.json")}).end().out;
    QCOMPARE(own.value("sha256").toString().toLatin1(), sum.left(64));
    QCOMPARE(jsonIn(json).value("not_run").toString(),
             QString("link.answers link.size link.checksum link.length link.noise link.loss "
                     "link.doubling link.order timing protocol commands payload motion endurance"));
}

NACELLE_TEST_MAIN(tst_nacelle_check)
#include "tst_nacelle_check.moc"
