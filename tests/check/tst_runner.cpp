#include "tests/check/oddpod.h"
#include "tests/support/strictmain.h"
#include "tools/check/runner.h"

#include <QFile>

#include <algorithm>

Q_DECLARE_METATYPE(Oddity)

using namespace check;

namespace {

const QByteArray kMoving =
    R"("effects": ["moves", "lights", "records"], "warning": {"zh": "动", "en": "moves"},)"
    R"( "after": [{"ask": {"command": {"name": "follow"}}},)"
    R"( {"ask": {"command": {"name": "recentre"}}}],)";
const QByteArray kTurning = R"([{"hold": "60s", "frame": {"command": {"name": "angle_control"}}}])";

class Watching : public Watcher
{
public:
    void progress(qint64, qint64) override {}
    void caseEnds(const CaseResult &) override {}
    void leaves() override { ++leavings; }
    int leavings = 0;
};

/// One case against one pod: that of a file, or a shipped one by its id.
class Session
{
public:
    Session(const Oddity &oddity, const QByteArray &what, const QString &link = {}) : pod(oddity)
    {
        QString error;
        const bool isFile = what.startsWith('{');
        QFile shipped(
            QStringLiteral(":/nacelle_check/%1.json").arg(QString(what).section('.', 0, 0)));
        shippedFiles(); // they are there from then on
        const QByteArray file = isFile                              ? what
                                : shipped.open(QIODevice::ReadOnly) ? shipped.readAll()
                                                                    : QByteArray();
        if (!readGroup(file, "f.json", plan.groups, error) || !tieMeasures(plan.groups, error) ||
            !wire::readLinkAddress(link.isEmpty() ? pod.link() : link, m_address, error))
            qFatal("%s", qPrintable(error));
        plan.measured = plan.groups;
        plan.cycles = 40;
        auto &cases = plan.groups[0].cases;
        const auto isOther = [&](const Case &each) { return !isFile && each.id != what; };
        cases.erase(std::remove_if(cases.begin(), cases.end(), isOther), cases.end());
        line = std::make_unique<PodLine>(m_address);
    }

    void run()
    {
        if (line->open())
            Runner(*line, plan, watching).run(result);
    }

    /// "g.c passed, g.after failed".
    QString judgements() const
    {
        QStringList all;
        for (const CaseResult &each : result.cases)
            all.append(each.id + ' ' + wordOf(each.judgement).en.toLower());
        return all.join(", ");
    }

    OddPod pod;
    Plan plan;
    std::unique_ptr<PodLine> line;
    Watching watching;
    SessionResult result;

private:
    wire::LinkAddress m_address;
};

} // namespace

/// The runner against pods that no fault of the simulated one makes.
class tst_runner : public QObject
{
    Q_OBJECT

private slots:
    void stopsAtOnce();
    void anotherStop();
    void leavesTheRest();
    void lostInTheMiddle();
    void connectsAgain();
    void judges_data();
    void judges();
};

/// The pod gets what stops it before all that is still on its way from it.
void tst_runner::stopsAtOnce()
{
    Oddity oddity;
    oddity.beat = 5;
    Session session(oddity, fileWith(kTurning, kMoving));
    int heard = 0;
    bool isStopped = false, isLeft = false;
    session.pod.onFrame = [&](const QByteArray &code) {
        if (code == "10")
            session.line->stop();
        isStopped = isStopped || code == "10";
    };
    session.line->tap = [&](const wire::Record &record) {
        heard += isStopped && !isLeft ? 1 : 0;
        isLeft = isLeft || (record.direction == wire::Direction::Tx && record.bytes[69] == '\x03');
    };
    session.run();
    QVERIFY2(isLeft && heard < 25, qPrintable(QString::number(heard)));
    QCOMPARE(session.judgements(), QString("g.c not judged"));
    QCOMPARE(session.result.ending, Ending::BrokenOff);
    QCOMPARE(session.watching.leavings, 1);
}

/// Two stops at once are one; one more ends the waiting for the pod's answers, and says so.
void tst_runner::anotherStop()
{
    Session session({}, fileWith(kTurning, kMoving));
    session.pod.onFrame = [&session](const QByteArray &code) {
        const bool isFirst = code == "10" && !session.line->isStopped();
        if (isFirst)
            QTimer::singleShot(10, session.line.get(), &PodLine::stop);
        if (code == "10")
            session.line->stop();
        if (code == "10")
            session.pod.fallSilent();
        else if (session.pod.got.contains("03 ") && code != "03")
            session.line->stop();
    };
    session.run();
    QVERIFY2(session.pod.got.startsWith("10 12 03 24 "), session.pod.got);
    QCOMPARE(session.judgements(), QString("g.c not judged, g.after not judged"));
    QCOMPARE(session.result.ending, Ending::BrokenOff);
}

/// One step that the pod doesn't take keeps none of the others back; what toggles goes out once.
void tst_runner::leavesTheRest()
{
    Oddity oddity;
    oddity.ignored = QByteArray::fromHex("12");
    QByteArray file = fileWith(R"([{"ask": {"command": {"name": "lock"}}}])", kMoving);
    file.replace(R"({"name": "recentre"})", R"({"name": "record"})");
    Session session(oddity, file);
    session.run();
    QCOMPARE(session.judgements(), QString("g.c passed, g.after failed"));
    QCOMPARE(session.pod.got.count("21 "), 1);
}

void tst_runner::lostInTheMiddle()
{
    Session session({}, fileWith(kTurning, kMoving));
    session.pod.onFrame = [&session](const QByteArray &) { session.pod.hangUp(); };
    session.run();
    QCOMPARE(session.judgements(), QString("g.c failed, g.after failed"));
    QCOMPARE(session.result.ending, Ending::LinkLost);
}

/// A pod that has hung up isn't the pod that was checked so far, however soon it is back.
void tst_runner::connectsAgain()
{
    QTcpServer free;
    QVERIFY(free.listen(QHostAddress::LocalHost));
    const quint16 port = free.serverPort();
    free.close();
    Session session({}, fileWith(R"([{"send": {}}, {"quiet": "300ms"}])"),
                    QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port));
    QTcpSocket pod;
    connect(
        &pod, &QTcpSocket::disconnected, &pod,
        [&] { pod.connectToHost(QHostAddress::LocalHost, port); }, Qt::QueuedConnection);
    connect(&pod, &QTcpSocket::readyRead, &pod, [&] { pod.disconnectFromHost(); });
    QTimer::singleShot(0, &pod, [&] { pod.connectToHost(QHostAddress::LocalHost, port); });
    session.run();
    QCOMPARE(session.judgements(), QString("g.c failed"));
    QCOMPARE(session.result.ending, Ending::LinkLost);
}

void tst_runner::judges_data()
{
    QTest::addColumn<Oddity>("oddity");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("judgements");
    const QByteArray light = R"({"ask": {"command": {"name": "light", "params": {"state": 1}}}})";
    const QByteArray record = R"({"ask": {"command": {"name": "record"}}})";
    const QByteArray does =
        R"("effects": ["lights", "records"], "warning": {"zh": "光", "en": "lights"},)";
    const QByteArray off =
        does + R"("after": [{"ask": {"command": {"name": "light", "params": {"state": 0}}}}],)";
    const auto sticky = [](const char *codes, int taken) {
        Oddity oddity;
        oddity.isSticky = true;
        oddity.ignored = QByteArray::fromHex(codes);
        oddity.ignoredAfter = taken;
        return oddity;
    };
    const auto row = [](const char *name, const Oddity &oddity, const QByteArray &file,
                        const char *judgements) {
        QTest::newRow(name) << oddity << file << QString(judgements);
    };
    const auto beating = [](int beat, bool isMute) {
        Oddity oddity;
        oddity.beat = beat;
        oddity.isMute = isMute;
        return oddity;
    };
    row("mute, sends seldom", beating(1000, true), "link.answers", "link.answers failed");
    row("mute, sends at times", beating(150, true), "link.answers", "link.answers failed");
    row("sends and answers", beating(200, false), "protocol.wrong_checksum",
        "protocol.wrong_checksum not judged");
    row("sends seldom, and answers", beating(1000, false), "link.doubling",
        "link.doubling not judged");
    Oddity odd = beating(200, false);
    odd.isDeafToPieces = true;
    row("deaf to pieces", odd, "protocol.split", "protocol.split not judged");
    odd = {};
    odd.deafAfterBroken = 100;
    row("deaf for a moment", odd, "protocol.after_broken", "protocol.after_broken failed");
    odd = {};
    odd.lateSuccess = 600;
    row("calls anything a success", odd, "commands.unknown", "commands.unknown failed");
    odd = {};
    odd.silentTo = QByteArray::fromHex("FF");
    row("refuses in silence", odd, "commands.unknown", "commands.unknown passed");
    row("silent to all", beating(0, true), "commands.unknown", "commands.unknown failed");
    row("names the last one, and is good", sticky("", 0),
        fileWith('[' + record + ',' + record + ']', off), "g.c passed");
    row("records on", sticky("21", 1), fileWith('[' + record + ',' + record + ']', does),
        "g.c failed");
    row("lit from then on", sticky("80", 1), fileWith('[' + light + ']', off),
        "g.c passed, g.after failed");
}

void tst_runner::judges()
{
    QFETCH(Oddity, oddity);
    QFETCH(QByteArray, file);
    Session session(oddity, file);
    session.run();
    QTEST(session.judgements(), "judgements");
}

NACELLE_TEST_MAIN(tst_runner)
#include "tst_runner.moc"
