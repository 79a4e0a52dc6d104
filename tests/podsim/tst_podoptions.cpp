#include "tests/support/strictmain.h"
#include "tools/podsim/podoptions.h"

#include <QTest>

namespace {

constexpr int kNone = -1;

int portOf(const std::optional<quint16> &port)
{
    return port ? *port : kNone;
}

} // namespace

class TestPodOptions : public QObject
{
    Q_OBJECT

private slots:
    void portsMayBeLeftOut_data();
    void portsMayBeLeftOut();
    void takesFaults();
};

void TestPodOptions::portsMayBeLeftOut_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("tcp");
    QTest::addColumn<int>("udp");
    QTest::addColumn<int>("reply");
    QTest::newRow("tcp") << QStringList{"--tcp"} << 2332 << kNone << kNone;
    QTest::newRow("udp") << QStringList{"--udp"} << kNone << 2337 << kNone;
    QTest::newRow("both") << QStringList{"--tcp", "--udp"} << 2332 << 2337 << kNone;
    QTest::newRow("apart") << QStringList{"--tcp", "4000", "--udp", "0"} << 4000 << 0 << kNone;
    QTest::newRow("joined") << QStringList{"--tcp=4000", "--udp=4001", "--udp-reply=4002"} << 4000
                            << 4001 << 4002;
    QTest::newRow("before a switch")
        << QStringList{"--udp", "--verbose", "--tcp", "--split", "5"} << 2332 << 2337 << kNone;
    QTest::newRow("pty alone") << QStringList{"--pty", "pod"} << kNone << kNone << kNone;
}

void TestPodOptions::portsMayBeLeftOut()
{
    QFETCH(QStringList, options);
    QFETCH(int, tcp);
    QFETCH(int, udp);
    QFETCH(int, reply);
    const podsim::ParsedOptions parsed = podsim::parseOptions(QStringList{"podsim"} + options);
    QCOMPARE(parsed.error, QString());
    QCOMPARE(portOf(parsed.options.tcpPort), tcp);
    QCOMPARE(portOf(parsed.options.udpPort), udp);
    QCOMPARE(portOf(parsed.options.udpReplyPort), reply);
    QCOMPARE(parsed.options.address, QHostAddress(QHostAddress::LocalHost));
}

/// Each number lands in its own field.
void TestPodOptions::takesFaults()
{
    const podsim::ParsedOptions parsed = podsim::parseOptions(
        {"podsim",       "--tcp",    "--split",     "2",  "--coalesce", "3",
         "--delay",      "4",        "--drop",      "5",  "--noise",    "6",
         "--seed",       "7",        "--bad-crc",   "8",  "--result",   "9",
         "--bad-length", "10",       "--ack-after", "11", "--silent",   "--start-mode",
         "1C",           "--listen", "127.0.0.2"});
    QCOMPARE(parsed.error, QString());
    const podsim::FaultOptions &faults = parsed.options.faults;
    QCOMPARE((QVector<int>{faults.split, faults.coalesce, faults.delay, faults.drop, faults.noise,
                           int(faults.seed), faults.badCrc, *faults.result, faults.badLength,
                           faults.ackAfter}),
             (QVector<int>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    QVERIFY(faults.silent);
    QVERIFY(parsed.options.startMode == podsim::PodMode::Fpv);
    QCOMPARE(parsed.options.address, QHostAddress("127.0.0.2"));
}

NACELLE_TEST_MAIN(TestPodOptions)
#include "tst_podoptions.moc"
