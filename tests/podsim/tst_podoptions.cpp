#include "tests/support/strictmain.h"
#include "tools/podsim/podoptions.h"

using Numbers = QVector<int>;

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
    QTest::addColumn<Numbers>("ports"); // TCP, UDP and reply; -1 for none
    QTest::newRow("--tcp --udp") << Numbers{2332, 2337, -1};
    QTest::newRow("--tcp 4000 --udp 0") << Numbers{4000, 0, -1};
    QTest::newRow("--tcp=4000 --udp=4001 --udp-reply=4002") << Numbers{4000, 4001, 4002};
    QTest::newRow("--udp --verbose --tcp --split 5") << Numbers{2332, 2337, -1};
#ifndef Q_OS_WIN
    QTest::newRow("--pty pod") << Numbers{-1, -1, -1};
#endif
}

void TestPodOptions::portsMayBeLeftOut()
{
    QFETCH(Numbers, ports);
    const QString line = QString("podsim ") + QTest::currentDataTag();
    const podsim::ParsedOptions parsed = podsim::parseOptions(line.split(' '));
    QCOMPARE(parsed.error, QString());
    const podsim::PodOptions &options = parsed.options;
    const auto port = [](const std::optional<quint16> &p) { return p ? int(*p) : -1; };
    QCOMPARE((Numbers{port(options.tcpPort), port(options.udpPort), port(options.udpReplyPort)}),
             ports);
}

/// Each number lands in its own field.
void TestPodOptions::takesFaults()
{
    const QString line("podsim --tcp --split 2 --coalesce 3 --delay 4 --drop 5 --noise 6 --seed 7 "
                       "--bad-crc 8 --result 9 --bad-length 10 --ack-after 11 --listen 127.0.0.2");
    const podsim::ParsedOptions parsed = podsim::parseOptions(line.split(' '));
    QCOMPARE(parsed.error, QString());
    const podsim::FaultOptions &f = parsed.options.faults;
    QCOMPARE((Numbers{f.split, f.coalesce, f.delay, f.drop, f.noise, int(f.seed), f.badCrc,
                      *f.result, f.badLength, f.ackAfter}),
             (Numbers{2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    QCOMPARE(parsed.options.address, QHostAddress("127.0.0.2"));
}

NACELLE_TEST_MAIN(TestPodOptions)
#include "tst_podoptions.moc"
