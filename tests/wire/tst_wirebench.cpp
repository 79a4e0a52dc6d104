#include "foundation/QGlobal.h"
#include "tests/support/bench.h"
#include "tests/support/strictmain.h"
#include "tests/wire/wireprocess.h"
#include "tools/wire/compose.h"
#include "tools/wire/framefields.h"

#include <QFile>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QThreadPool>

namespace {

/// Asked of the system: who tried the port itself would be in the tool's way.
bool isListenedAt(quint16 port)
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

/// The frames of one side of a recording, or of both, a line each.
QByteArray digitsOf(const QString &recording, const QStringList &options = {})
{
    return run(QStringList{"convert", "--as", "hex", recording} + options).out;
}

/// Frames of the history, which has the newest first, as such lines.
QByteArray digitsOf(const QList<QByteArray> &newestFirst)
{
    QByteArray lines;
    for (const QByteArray &frame : newestFirst)
        lines.prepend(frame.toHex().toUpper() + '\n');
    return lines;
}

/// A parameter's text, different from its neighbours'.
QString textOf(ParamKind kind, int place)
{
    return kind == ParamKind::Byte         ? QString::number(200 + place)
           : kind == ParamKind::U16        ? QString::number(65530 + place)
           : kind == ParamKind::GeoDegrees ? QStringLiteral("-36.7364586")
           : kind == ParamKind::Metres     ? QStringLiteral("41.123")
                                           : QString::number(-300 - place);
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
    void composesWhatTheDialogBuilds();
    void recordsAndPlaysTheBench();
    void recordsAndPlaysTheConsole();

private:
    QStringList formPairs();
    void compare(const QStringList &pairs);
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
    for (const protocol::Field &field : wire::fieldsOf(wire::FrameKind::Host))
        if (id == QLatin1String(field.id))
            m_bench->find<QLineEdit>(field.valueObject)->setText(text);
    compare(formPairs());
}

/// What stands in the form's line edits, in words.
QStringList tst_wirebench::formPairs()
{
    QStringList pairs{QStringLiteral("flags=1")};
    for (const protocol::Field &field : wire::fieldsOf(wire::FrameKind::Host))
        if (QByteArray(field.valueObject).startsWith("lineEdit"))
            pairs << QLatin1String(field.id) + QLatin1Char('=') +
                         m_bench->find<QLineEdit>(field.valueObject)->text();
    return pairs;
}

void tst_wirebench::compare(const QStringList &pairs)
{
    m_bench->click("pushButton_Create");
    const QByteArray built = m_bench->find<QTextEdit>("textEdit_Send")->toPlainText().toLatin1();
    const wire::Composed made = wire::composePairs(wire::FrameKind::Host, pairs);
    QCOMPARE(made.error, QString());
    QCOMPARE(made.record.bytes.toHex(' ').toUpper() + ' ', built);
}

/// Each command that the operator can choose there, with its parameters typed.
void tst_wirebench::composesWhatTheDialogBuilds()
{
    const char *const edits[] = {"lineEdit_4", "lineEdit_5",  "lineEdit_6",
                                 "lineEdit_7", "lineEdit_10", "lineEdit_11"};
    int count = 0;
    for (const CommandRow &row : kCommands) {
        m_bench->click("pushButton_Cmd");
        QWidget *dialog = QApplication::activeModalWidget();
        QVERIFY(dialog);
        auto *box = dialog->findChild<QComboBox *>(QStringLiteral("comboBox_Cmd"));
        const bool isOffered = box->findText(QString::fromUtf8(row.name)) >= 0;
        box->setCurrentText(QString::fromUtf8(row.name));
        QStringList pairs = formPairs() << QStringLiteral("command=") + row.id;
        for (int i = 0; isOffered && i < paramCount(row); ++i) {
            const Param &param = row.params[std::size_t(i)];
            const QString text = textOf(param.kind, i);
            dialog->findChild<QLineEdit *>(QLatin1String(edits[i]))->setText(text);
            pairs << QStringLiteral("param.%1=%2").arg(QLatin1String(param.id), text);
        }
        QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("pushButton_Ok")),
                          Qt::LeftButton);
        if (isOffered)
            compare(pairs);
        count += isOffered;
    }
    QCOMPARE(count, 34); // external tracking and the lock on coordinates aren't
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
    Wire bridge({"record", "-o", recording, "--bridge", listening, tcpTo(pod.port("tcp"))});
    QVERIFY(isListenedAt(port));
    QVERIFY(m_bench->plug(QStringLiteral("TCP Client"), QString::number(port)));
    send(5);
    const QString log = m_bench->log();
    const QList<QByteArray> received = (*m_bench)->receivedFrames;
    bridge.stop();
    // The display's text, pasted, and the recording are the same frames in the same order.
    const QByteArray frames = digitsOf(recording);
    QCOMPARE(frames.count('\n'), 10);
    QCOMPARE(run({"convert", "--as", "hex"}, log.toUtf8()).out, frames);

    m_bench = std::make_unique<Bench>();
    // Of frames that a busy window reads at once, it takes one.
    Wire player({"replay", "--gap", "400ms", recording, listening});
    QVERIFY(isListenedAt(port));
    QVERIFY(m_bench->plug(QStringLiteral("TCP Client"), QString::number(port)));
    QTRY_COMPARE_WITH_TIMEOUT((*m_bench)->receivedFrames.size(), 5, kLimitMs);
    QCOMPARE((*m_bench)->receivedFrames, received);
    const QByteArray side =
        run({"convert", "--as", "log", "--language", "zh", "--dir", "rx", recording}).out;
    QCOMPARE(withoutTimes(m_bench->log() + '\n'), withoutTimes(QString::fromUtf8(side)));
    QCOMPARE(player.end().code, 0);
}

/// A run of the console through the bridge; then its frames to a pod, and the pod's to the bench.
void tst_wirebench::recordsAndPlaysTheConsole()
{
    const QTemporaryDir folder;
    const QString recording = folder.filePath(QStringLiteral("run.pcapng")),
                  again = folder.filePath(QStringLiteral("again.pcapng"));
    const quint16 port = freePort();
    const QString listening = QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port);
    PodProcess pod({"--tcp", "0"});
    const QString podLink = tcpTo(pod.port("tcp"));
    Wire bridge({"record", "-o", recording, "--bridge", listening, podLink});
    QVERIFY(isListenedAt(port));
    QVERIFY(m_bench->plug(QStringLiteral("TCP Client"), QString::number(port)));
    m_bench->click("pushButton_2");
    m_bench->click("pushButton_photo");
    m_bench->click("pushButton_start");
    QTRY_VERIFY_WITH_TIMEOUT((*m_bench)->receivedFrames.size() >= 5, kLimitMs);
    m_bench->click("pushButton_start");
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::sendPostedEvents();
    const QList<QByteArray> sent = (*m_bench)->sentFrames;
    // The pod answers each frame, and each answer is on the disk a second later.
    QTRY_COMPARE_WITH_TIMEOUT(digitsOf(recording, {"--dir", "rx"}).count('\n'), sent.size(),
                              kLimitMs);
    QCOMPARE(bridge.stop().code, 0);
    QCOMPARE(digitsOf(recording, {"--dir", "tx"}), digitsOf(sent));

    Wire second({"record", "-o", again, "--bridge", listening, podLink});
    QVERIFY(isListenedAt(port));
    QCOMPARE(run({"replay", recording, tcpTo(port)}).code, 0);
    QTRY_COMPARE_WITH_TIMEOUT(digitsOf(again, {"--dir", "rx"}).count('\n'), sent.size(), kLimitMs);
    QCOMPARE(second.stop().code, 0);
    QCOMPARE(digitsOf(again, {"--dir", "tx"}), digitsOf(sent));

    m_bench = std::make_unique<Bench>();
    Wire player({"replay", "--gap", "400ms", recording, listening});
    QVERIFY(isListenedAt(port));
    QVERIFY(m_bench->plug(QStringLiteral("TCP Client"), QString::number(port)));
    QTRY_COMPARE_WITH_TIMEOUT((*m_bench)->receivedFrames.size(), sent.size(), kLimitMs);
    QCOMPARE(digitsOf((*m_bench)->receivedFrames), digitsOf(recording, {"--dir", "rx"}));
    QCOMPARE(player.end().code, 0);
}

NACELLE_TEST_MAIN(tst_wirebench)
#include "tst_wirebench.moc"
