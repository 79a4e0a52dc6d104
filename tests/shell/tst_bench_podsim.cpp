#include "foundation/QGlobal.h"
#include "tests/podsim/podprocess.h"
#include "tests/support/bench.h"
#include "tests/support/strictmain.h"

#include <QComboBox>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QUdpSocket>

namespace {

/// Hexadecimal labels of the right form in the order of the frame.
const char *const kHexColumn[] = {
    "label34_2",  "label44_2",  "label54_2",  "label64_2",  "label74_2",  "label84_2",
    "label_84_2", "label94_2",  "label104_2", "label114_2", "label124_2", "label134_2",
    "label144_2", "label154_2", "label164_2", "label174_2", "label184_2", "label194_2",
    "label204_2", "label214_2", "label224_2", "label234_2", "label244_2", "label254_2",
    "label264_2", "label274_2", "label284_2", "label294_2", "label304_2", "label314_2"};

quint16 freeUdpPort()
{
    QUdpSocket socket;
    socket.bind(QHostAddress(QHostAddress::LocalHost));
    return socket.localPort();
}

} // namespace

/// The program and the simulated pod, whose codecs know nothing of each other.
class tst_bench_podsim : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void answersOnEveryLink_data();
    void answersOnEveryLink();
    void badAnswers_data();
    void badAnswers();

private:
    void sendCommand(const QString &name, const QString &parameter);
    QString text(const char *name)
    {
        return m_bench->find<QWidget>(name)->property("text").toString();
    }

    std::unique_ptr<Bench> m_bench;
};

void tst_bench_podsim::init()
{
    QGlobal::instance()->languageChinese = true;
    m_bench = std::make_unique<Bench>();
}

void tst_bench_podsim::cleanup()
{
    m_bench.reset();
}

/// By the dialog that the command row opens, as the operator does it.
void tst_bench_podsim::sendCommand(const QString &name, const QString &parameter)
{
    m_bench->click("pushButton_Cmd");
    QWidget *dialog = QApplication::activeModalWidget();
    QVERIFY(dialog);
    dialog->findChild<QComboBox *>(QStringLiteral("comboBox_Cmd"))->setCurrentText(name);
    if (!parameter.isEmpty())
        dialog->findChild<QLineEdit *>(QStringLiteral("lineEdit_4"))->setText(parameter);
    QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("pushButton_Ok")),
                      Qt::LeftButton);
    m_bench->click("pushButton_Create");
    m_bench->click("pushButton_Send");
}

void tst_bench_podsim::answersOnEveryLink_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("TCP") << "TCP Client";
    QTest::newRow("UDP") << "UDP";
    QTest::newRow("serial") << "pty";
}

void tst_bench_podsim::answersOnEveryLink()
{
    QFETCH(QString, link);
    QTemporaryDir folder;
    const QString pty = folder.filePath(QStringLiteral("pod"));
    const QString reply = QString::number(freeUdpPort());
    PodProcess pod({"--tcp", "0", "--udp", "0", "--udp-reply", reply, "--pty", pty});
    QVERIFY(pod.awaitLine(pty));
    if (link == QLatin1String("TCP Client")) {
        QVERIFY(m_bench->plug(link, QString::number(pod.port(QStringLiteral("tcp")))));
    } else if (link == QLatin1String("UDP")) {
        QVERIFY(m_bench->plug(link, QString::number(pod.port(QStringLiteral("udp"))), reply));
    } else {
        QVERIFY(m_bench->plug(pty));
    }

    sendCommand(QStringLiteral("锁定"), QString());
    QTRY_COMPARE((*m_bench)->receivedFrames.size(), 1);
    sendCommand(QStringLiteral("连续放大"), QStringLiteral("1"));
    QTRY_COMPARE((*m_bench)->receivedFrames.size(), 2);

    const QByteArray frame = (*m_bench)->receivedFrames.first();
    QCOMPARE(frame.size(), 73);
    QVERIFY(m_bench->log().endsWith(QStringLiteral("收->\n") + frame.toHex().toUpper()));
    const QString spaced = frame.toHex(' ').toUpper() + ' ';
    QCOMPARE(m_bench->find<QTextEdit>("textEdit_Rev")->toPlainText(), spaced);
    QString column = QStringLiteral("8A 5E ");
    for (const char *label : kHexColumn)
        column += text(label);
    QCOMPARE(column, spaced);
    QCOMPARE(text("label33_2"), QStringLiteral("73"));
    QCOMPARE(text("lineEdit53_2"), QStringLiteral("指向锁定模式"));
    QCOMPARE(text("label303_2"), QStringLiteral("连续放大成功"));
    QCOMPARE(text("label313_2"), QStringLiteral("通过"));
    for (const char *value :
         {"lineEdit_83_2", "lineEdit123_2", "lineEdit133_2", "lineEdit143_2", "lineEdit233_2",
          "lineEdit243_2", "lineEdit253_2", "lineEdit273_2", "lineEdit283_2"}) {
        bool isNumber = false;
        const double number = text(value).toDouble(&isNumber);
        QVERIFY2(isNumber && qIsFinite(number), value);
    }
    // The pod looks from above the bench's initial carrier position.
    QVERIFY(text("lineEdit243_2").startsWith(QStringLiteral("170.9")));
}

void tst_bench_podsim::badAnswers_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("verdict");
    QTest::addColumn<QString>("feedback");
    QTest::newRow("good") << QStringList() << QStringLiteral("通过") << QStringLiteral("拍照成功");
    QTest::newRow("wrong CRC") << QStringList{"--bad-crc", "1"} << QStringLiteral("不通过")
                               << QStringLiteral("拍照成功");
    QTest::newRow("failure") << QStringList{"--result", "1"} << QStringLiteral("通过")
                             << QStringLiteral("拍照失败");
    QTest::newRow("executing") << QStringList{"--ack-after", "9"} << QStringLiteral("通过")
                               << QStringLiteral("拍照执行中");
    QTest::newRow("in pieces") << QStringList{"--split", "7"} << QStringLiteral("通过")
                               << QStringLiteral("拍照成功");
}

void tst_bench_podsim::badAnswers()
{
    QFETCH(QStringList, options);
    PodProcess pod(QStringList{"--tcp", "0"} + options);
    QVERIFY(m_bench->plug(QStringLiteral("TCP Client"),
                          QString::number(pod.port(QStringLiteral("tcp")))));
    sendCommand(QStringLiteral("拍照"), QString());
    QTRY_COMPARE((*m_bench)->receivedFrames.size(), 1);
    QTEST(text("label313_2"), "verdict");
    QTEST(text("label303_2"), "feedback");
}

NACELLE_TEST_MAIN(tst_bench_podsim)
#include "tst_bench_podsim.moc"
