#include "foundation/QGlobal.h"
#include "tests/podsim/podprocess.h"
#include "tests/support/bench.h"
#include "tests/support/strictmain.h"
#include "tools/wire/compose.h"
#include "tools/wire/framefields.h"

#include <QLineEdit>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTextEdit>

#include <csignal>

namespace {

constexpr int kLimitMs = 20000;

quint16 freePort()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost) ? server.serverPort() : quint16(0);
}

/// The tool, which ends with the test.
class Wire
{
public:
    explicit Wire(const QStringList &arguments)
    {
        m_process.start(QStringLiteral(WIRE_PATH), arguments);
        m_process.waitForStarted(kLimitMs);
    }
    ~Wire() { stop(); }

    QByteArray stop()
    {
        if (m_process.state() != QProcess::NotRunning)
            ::kill(pid_t(m_process.processId()), SIGINT);
        m_process.waitForFinished(kLimitMs);
        return m_process.readAllStandardOutput();
    }

    /// Asked of the system: who tried the port itself would be in the tool's way.
    bool listensAt(quint16 port)
    {
        const QByteArray listener =
            QByteArray::number(port, 16).toUpper().rightJustified(4, '0') + " 00000000:0000 0A";
        return QTest::qWaitFor(
            [&listener] {
                QFile sockets(QStringLiteral("/proc/net/tcp"));
                return sockets.open(QIODevice::ReadOnly) && sockets.readAll().contains(listener);
            },
            kLimitMs);
    }

private:
    QProcess m_process;
};

QByteArray outputOf(const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    process.start(QStringLiteral(WIRE_PATH), arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(kLimitMs);
    return process.readAllStandardOutput();
}

/// The entries of the traffic log without their times.
QString withoutTimes(QString log)
{
    return log.replace(QRegularExpression(QStringLiteral("\\[[0-9:]+\\]")), QString());
}

} // namespace

/// The tool beside the real window.
class tst_wirebench : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QGlobal::instance()->languageChinese = true;
        m_bench = std::make_unique<Bench>();
    }
    void cleanup() { m_bench.reset(); }
    void composesWhatTheWorkbenchBuilds_data();
    void composesWhatTheWorkbenchBuilds();
    void recordsAndPlaysTheBench();

private:
    void send(int count);

    std::unique_ptr<Bench> m_bench;
};

void tst_wirebench::composesWhatTheWorkbenchBuilds_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("text");
    const char *const rows[][2] = {
        {"version", "-5"},           {"roll_control", "-18000"}, {"carrier_roll", "-179.07"},
        {"carrier_yaw", "359.29"},   {"velocity_up", "-0.07"},   {"subframe_request", "9"},
        {"longitude", "-0.0000007"}, {"latitude", "89.1234567"}, {"altitude", "1.001"},
        {"satellites", "255"},       {"gnss_ms", "4294967295"},  {"gnss_week", "-32767"},
        {"relative_height", "1.001"}};
    for (const auto &row : rows)
        QTest::newRow(row[0]) << row[0] << row[1];
}

void tst_wirebench::composesWhatTheWorkbenchBuilds()
{
    QFETCH(QString, id);
    QFETCH(QString, text);
    QStringList pairs{QStringLiteral("flags=1")};
    for (const protocol::Field &field : wire::fieldsOf(wire::FrameKind::Host)) {
        const bool isTyped = QByteArray(field.valueObject).startsWith("lineEdit");
        if (!isTyped)
            continue;
        auto *edit = m_bench->find<QLineEdit>(field.valueObject);
        if (id == QLatin1String(field.id))
            edit->setText(text);
        pairs << QLatin1String(field.id) + QLatin1Char('=') + edit->text();
    }
    m_bench->click("pushButton_Create");
    const QByteArray built = m_bench->find<QTextEdit>("textEdit_Send")->toPlainText().toLatin1();
    const wire::Composed made = wire::composePairs(wire::FrameKind::Host, pairs);
    QCOMPARE(made.error, QString());
    QCOMPARE(made.record.bytes.toHex(' ').toUpper() + ' ', built);
}

void tst_wirebench::send(int count)
{
    m_bench->click("pushButton_Create");
    for (int i = 1; i <= count; ++i) {
        m_bench->click("pushButton_Send");
        QTRY_COMPARE((*m_bench)->receivedFrames.size(), i);
    }
}

/// Through the bridge, and then with the recording in the pod's place.
void tst_wirebench::recordsAndPlaysTheBench()
{
    const QTemporaryDir folder;
    const QString recording = folder.filePath(QStringLiteral("run.pcapng"));
    const quint16 port = freePort();
    const QString listening = QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port);
    PodProcess pod({"--tcp", "0"});
    Wire bridge({"record", "-o", recording, "--bridge", listening,
                 QStringLiteral("tcp://127.0.0.1:%1").arg(pod.port("tcp"))});
    QVERIFY(bridge.listensAt(port));
    QVERIFY(m_bench->plug(QStringLiteral("TCP Client"), QString::number(port)));
    send(5);
    const QString log = m_bench->log();
    const QList<QByteArray> received = (*m_bench)->receivedFrames;
    bridge.stop();
    // The display's text, pasted, and the recording are the same frames in the same order.
    const QByteArray frames = outputOf({"convert", "--as", "hex", recording});
    QCOMPARE(frames.count('\n'), 10);
    QCOMPARE(outputOf({"convert", "--as", "hex"}, log.toUtf8()), frames);

    m_bench = std::make_unique<Bench>();
    // Of frames that a busy window reads at once, it takes one.
    Wire player({"replay", "--gap", "400ms", recording, listening});
    QVERIFY(player.listensAt(port));
    QVERIFY(m_bench->plug(QStringLiteral("TCP Client"), QString::number(port)));
    QTRY_COMPARE_WITH_TIMEOUT((*m_bench)->receivedFrames.size(), 5, 20000);
    QCOMPARE((*m_bench)->receivedFrames, received);
    const QByteArray side =
        outputOf({"convert", "--as", "log", "--language", "zh", "--dir", "rx", recording});
    QCOMPARE(withoutTimes(m_bench->log() + '\n'), withoutTimes(QString::fromUtf8(side)));
}

NACELLE_TEST_MAIN(tst_wirebench)
#include "tst_wirebench.moc"
