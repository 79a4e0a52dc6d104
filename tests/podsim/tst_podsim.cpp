#include "tests/podsim/podrig.h"
#include "tests/support/strictmain.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <csignal>

namespace {

/// What a pod with these options answers to `frames`, over TCP.
QByteArray answersTo(const QByteArray &frames, int size, const QStringList &options)
{
    Rig rig("tcp", options);
    rig.host->send(frames);
    return hex(rig.host->receive(size));
}

} // namespace

class TestPodsim : public QObject
{
    Q_OBJECT

private slots:
    void answersPiecesOfAnySize_data();
    void answersPiecesOfAnySize();
    void survivesBrokenFrames_data();
    void survivesBrokenFrames();
    void tellsHalfFrames();
    void repeatedCommandIsDoneOnce();
    void turnsWithControlInput();
    void remembersUdpPeers();
    void otherEndOfPtyComesAndGoes();
    void tcpClientsComeAndGo();
    void writesPieces_data();
    void writesPieces();
    void spoilsAnswers();
    void keepsAnswersBack();
    void givesWantedResult();
    void tellsExecutingFirst();
    void refusesOptions_data();
    void refusesOptions();
    void portInUse();
    void ptyLinkInUse();
    void endsOnSignal();
};

void TestPodsim::answersPiecesOfAnySize_data()
{
    QTest::addColumn<QByteArray>("kind");
    for (const char *kind : {"tcp", "udp", "pty"})
        QTest::newRow(kind) << QByteArray(kind);
}

void TestPodsim::answersPiecesOfAnySize()
{
    QFETCH(QByteArray, kind);
    Rig rig(kind, {});
    for (const char byte : kEmpty)
        rig.host->send(QByteArray(1, byte));
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kEmptyAnswer));
    rig.host->send(kEmpty + kIdle + kPhoto.left(20));
    rig.host->send(kPhoto.mid(20) + kEmpty); // the latter has no position block
    const QByteArray expected = kEmptyAnswer + kIdleAnswer + kPhotoAnswer + kIdleAnswer;
    QCOMPARE(hex(rig.host->receive(expected.size())), hex(expected));
}

void TestPodsim::survivesBrokenFrames_data()
{
    QTest::addColumn<QByteArray>("broken");
    QTest::addColumn<int>("noise"); // bytes; 0 where a frame is reported as broken
    const auto row = [](const char *line, const QByteArray &broken, int noise = 0) {
        QTest::newRow(line) << broken << noise;
    };
    const QByteArray head = kEmpty.left(70);
    row("bad checksum 0x28B3 instead of 0x28B2", head + bytes("28 B3"));
    row("bad checksum 0xB228 instead of 0x28B2", head + bytes("B2 28"));
    row("bad length 71", bytes("A8 E5 47 00 01") + zeros(67));
    row("bad length 513", bytes("A8 E5 01 02 01") + zeros(67));
    row("bad checksum 0xB2A8", head.left(60) + head.mid(61) + bytes("28 B2")); // a byte lost
    row("bad checksum 0x0028", head + bytes("00 28 B2"));
    row("bad checksum", head.left(15)); // the next header inside of it
    row("noise skipped: 70 bytes", bytes("0A 8E 54 80 00") + zeros(65), 70);
    row("noise skipped: 5 bytes", bytes("A8 A8 E4 E5 A8"), 5); // half headers
}

void TestPodsim::survivesBrokenFrames()
{
    QFETCH(QByteArray, broken);
    QFETCH(int, noise);
    Rig rig("tcp", {});
    rig.host->send(broken + kIdle);
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
    rig.pod->stop(SIGTERM);
    const QString &output = rig.pod->output();
    QVERIFY2(output.contains(QTest::currentDataTag()), qPrintable(output));
    const QString counts("%1 broken frames, %2 bytes of noise");
    QVERIFY2(output.contains(counts.arg(noise ? 0 : 1).arg(noise)), qPrintable(output));
}

void TestPodsim::tellsHalfFrames()
{
    Rig rig("tcp", {});
    rig.host->send(kIdle.left(50));
    QVERIFY(rig.pod->awaitLine("unfinished frame: 50 of 72 bytes"));
    rig.host->send(kIdle.mid(50));
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
}

/// A frame without it, or with another command, ends the repetition.
void TestPodsim::repeatedCommandIsDoneOnce()
{
    Rig rig("tcp", {});
    rig.host->send(kRecord + kRecord + kIdle + kRecord + kPhoto + kRecord);
    for (int i = 0; i < 2; ++i)
        QCOMPARE(hex(rig.host->receive(kFeedbackSize).mid(69, 2)), QByteArray("21 00"));
    rig.host->receive(3 * kFeedbackSize + kPlainSize);
    rig.pod->stop(SIGTERM);
    QCOMPARE(rig.pod->output().count("recording on"), 2);
    QCOMPARE(rig.pod->output().count("recording off"), 1);
    QVERIFY(rig.pod->output().contains("6 frames: 1 idle, 4 commands, 1 repeats"));
}

/// A yaw input of -1500 in Euler control: the answers come nearer to -15 degrees, 345 on the wire,
/// until they are there.
void TestPodsim::turnsWithControlInput()
{
    const QByteArray turn =
        bytes("A8 E5 48 00 01 00 00 00 00 24 FA 05") + kIdle.mid(12, 58) + bytes("97 E4");
    Rig rig("tcp", {"--start-mode", "14"});
    QByteArray frame;
    for (int i = 0; i < 1000000 && hex(frame.mid(22, 2)) != "C4 86"; ++i) {
        rig.host->send(turn);
        frame = rig.host->receive(kPlainSize);
        QCOMPARE(frame.size(), kPlainSize);
    }
    QCOMPARE(hex(frame.mid(16, 2)), QByteArray("24 FA"));
    QCOMPARE(hex(frame.mid(22, 2)), QByteArray("C4 86"));
    QCOMPARE(hex(frame.mid(5, 1)), QByteArray("14"));
}

/// Sixteen peers have room; a seventeenth takes the place of the one that was quiet the longest,
/// and not of one that has lately sent a part of a frame.
void TestPodsim::remembersUdpPeers()
{
    UdpHost first;
    PodProcess pod({"--udp", "0", "--udp-reply", QString::number(first.replyPort())});
    const quint16 port = pod.port("udp");
    first.setPort(port);
    first.send(kPhoto.left(20));
    QVERIFY(pod.awaitCount(": up", 1));
    std::vector<std::unique_ptr<UdpHost>> others;
    for (int i = 0; i < 16; ++i) {
        if (i == 15)
            first.send(kPhoto.mid(20, 20));
        others.push_back(std::make_unique<UdpHost>(2 + i));
        others.back()->setPort(port);
        others.back()->send(kIdle);
        QVERIFY(pod.awaitCount(": up", 2 + i));
    }
    QVERIFY(pod.awaitLine("udp 127.0.0.2: down"));
    // The rest comes from another port of the first machine, as the bench sends.
    UdpHost samePeer;
    samePeer.setPort(port);
    samePeer.send(kPhoto.mid(40));
    QCOMPARE(hex(first.receive(kFeedbackSize)), hex(kPhotoAnswer));
}

/// What one host leaves behind, sent or unread, doesn't meet the next one.
void TestPodsim::otherEndOfPtyComesAndGoes()
{
    const QTemporaryDir directory;
    const QString link = directory.filePath("pod");
    PodProcess pod({"--pty", link});
    QVERIFY(pod.awaitLine("listening on pty"));
    for (int i = 1; i <= 5; ++i) {
        {
            PtyHost host(link);
            QVERIFY(host.isOpen());
            host.send(kIdle);
            QCOMPARE(hex(host.receive(kPlainSize)), hex(kIdleAnswer));
            host.send(kPhoto + kIdle.left(10));
            QVERIFY(pod.awaitLine(QString("photo %1\n").arg(i)));
        }
        QVERIFY(pod.awaitCount(": down", i));
    }
    PtyHost(link).send(kPhoto);
    QVERIFY(pod.awaitLine("photo 6\n"));
    pod.stop(SIGTERM);
    QVERIFY(!QFileInfo(link).isSymLink());
}

void TestPodsim::tcpClientsComeAndGo()
{
    PodProcess pod({"--tcp", "0"});
    TcpHost slow(pod.port("tcp"));
    slow.send(kPhoto.left(40));
    for (int i = 0; i < 5; ++i) {
        TcpHost host(pod.port("tcp"));
        host.send(kIdle + kIdle.left(10));
        QCOMPARE(hex(host.receive(kPlainSize)), hex(kIdleAnswer));
    }
    QVERIFY(pod.awaitCount(": down", 5));
    slow.send(kPhoto.mid(40));
    QCOMPARE(hex(slow.receive(kFeedbackSize)), hex(kPhotoAnswer));
}

/// Over UDP, where each piece is a datagram.
void TestPodsim::writesPieces_data()
{
    QTest::addColumn<QVector<int>>("sizes"); // of the datagrams that answer three idle frames
    using Sizes = QVector<int>;
    QTest::newRow("--split 30") << Sizes{30, 30, 11, 30, 30, 11, 30, 30, 11};
    QTest::newRow("--coalesce 3") << Sizes{213};
    QTest::newRow("--coalesce 3 --split 100") << Sizes{100, 100, 13};
    QTest::newRow("--noise 7") << Sizes{7, 71, 7, 71, 7, 71};
    QTest::newRow("--delay 20") << Sizes{71, 71, 71};
    QTest::newRow("--drop 2") << Sizes{71, 71};
}

void TestPodsim::writesPieces()
{
    QFETCH(QVector<int>, sizes);
    Rig rig("udp", QString(QTest::currentDataTag()).split(' '));
    auto *host = static_cast<UdpHost *>(rig.host.get());
    host->send(kIdle + kIdle + kIdle);
    QByteArray answers;
    for (const int size : sizes) {
        const QByteArray piece = host->datagram();
        QCOMPARE(piece.size(), size);
        if (size != 7)
            answers += piece;
    }
    QCOMPARE(hex(answers), hex(kIdleAnswer.repeated(answers.size() / kPlainSize)));
}

void TestPodsim::spoilsAnswers()
{
    const int size = 3 * kPlainSize;
    QCOMPARE(answersTo(kIdle + kIdle + kIdle, size, {"--bad-crc", "2"}),
             hex(kIdleAnswer + answer("47", kPlace, "0C 6E") + kIdleAnswer));
    QCOMPARE(answersTo(kIdle + kIdle + kIdle, size, {"--bad-length", "2"}),
             hex(kIdleAnswer + answer("48", kPlace, "22 29") + kIdleAnswer));
    const QByteArray noise = answersTo(kIdle, 32, {"--noise", "32", "--seed", "5"});
    QCOMPARE(answersTo(kIdle, 32, {"--noise", "32", "--seed", "5"}), noise);
    QVERIFY(answersTo(kIdle, 32, {"--noise", "32", "--seed", "6"}) != noise);
}

void TestPodsim::keepsAnswersBack()
{
    for (const QString options :
         {"--silent", "--coalesce 2", "--delay 60000", "--drop 1", "--late 1:60000"}) {
        PodProcess pod(QStringList{"--tcp", "0"} + options.split(' '));
        TcpHost host(pod.port("tcp"));
        host.send(kPhoto);
        QVERIFY2(pod.awaitLine("photo 1"), qPrintable(options));
        pod.stop(SIGTERM);
        QCOMPARE(host.receiveAll(), QByteArray());
        QCOMPARE(pod.exitCode(), 0);
    }
}

void TestPodsim::givesWantedResult()
{
    for (const int result : {0, 1, 255}) {
        Rig rig("tcp", {"--result", QString::number(result)});
        rig.host->send(kPhoto);
        QCOMPARE(int(quint8(rig.host->receive(kFeedbackSize)[70])), result);
        rig.pod->stop(SIGTERM);
        QCOMPARE(rig.pod->output().contains("photo 1"), result == 0);
    }
}

/// The command goes on while the host sends idle frames, and is done with its result.
void TestPodsim::tellsExecutingFirst()
{
    Rig rig("tcp", {"--ack-after", "2"});
    rig.host->send(kPhoto + kIdle);
    QCOMPARE(hex(rig.host->receive(kFeedbackSize).mid(69, 2)), QByteArray("20 02"));
    QCOMPARE(hex(rig.host->receive(kFeedbackSize).mid(69, 2)), QByteArray("20 02"));
    QVERIFY(rig.pod->awaitLine("executing"));
    QVERIFY(!rig.pod->output().contains("photo 1"));
    rig.host->send(kIdle + kIdle);
    QCOMPARE(hex(rig.host->receive(kFeedbackSize).mid(69, 2)), QByteArray("20 00"));
    QCOMPARE(hex(rig.host->receive(kPlainSize)), hex(kIdleAnswer));
    QVERIFY(rig.pod->awaitLine("photo 1"));
}

void TestPodsim::refusesOptions_data()
{
    QTest::addColumn<QString>("reason");
    QTest::newRow("") << "give --tcp [port], --udp [port], --pty <link> or --rtsp";
    QTest::newRow("--silent") << "no link";
    QTest::newRow("--tpc") << "tpc";
    QTest::newRow("--tcp 0 here") << "unexpected: here";
    QTest::newRow("--tcp=65536") << "--tcp 65536: a number";
    QTest::newRow("--udp=any") << "--udp any: a number";
    QTest::newRow("--udp 0 --udp-reply 0") << "--udp-reply 0";
    QTest::newRow("--tcp 0 --udp-reply 5") << "there is no --udp";
    QTest::newRow("--tcp 0 --listen pod") << "--listen pod: not an IP address";
    QTest::newRow("--tcp 0 --start-mode 15") << "--start-mode 15";
    QTest::newRow("--tcp 0 --split 0") << "--split 0";
    QTest::newRow("--tcp 0 --result 256") << "--result 256";
    QTest::newRow("--tcp 0 --noise") << "noise";
    QTest::newRow("--tcp 0 --late 5") << "--late 5: a count and milliseconds";
    QTest::newRow("--tcp 0 --late 5:60001") << "--late 5:60001: a count and milliseconds";
    QTest::newRow("--tcp 0 --flags 011") << "--flags 011: four hexadecimal digits";
    QTest::newRow("--tcp 0 --ignore 20,,21") << "--ignore 20,,21: codes from 1 to FF";
    QTest::newRow("--tcp 0 --reserved 100") << "--reserved 100: a hexadecimal number from 0 to FF";
    QTest::newRow("--tcp 0 --drift nan") << "--drift nan: a number from -360 to 360";
    QTest::newRow("--tcp 0 --slow 0") << "--slow 0: a number from 0.01 to 1";
    QTest::newRow("--tcp 0 --rtsp-stamp") << "there is no --rtsp";
    QTest::newRow("--rtsp 0 --size 1281x720") << "--size 1281x720: even numbers";
}

void TestPodsim::refusesOptions()
{
    QFETCH(QString, reason);
    PodProcess pod(QString(QTest::currentDataTag()).split(' ', Qt::SkipEmptyParts));
    QCOMPARE(pod.exitCode(), 2);
    QCOMPARE(pod.output(), QString());
    const QString error = pod.errorText();
    QVERIFY2(error.startsWith("podsim: ") && error.contains(reason), qPrintable(error));
}

void TestPodsim::portInUse()
{
    for (const QString kind : {"tcp", "udp"}) {
        PodProcess first({"--" + kind, "0"});
        const QString port = QString::number(first.port(kind));
        PodProcess second({"--" + kind + "=" + port});
        QCOMPARE(second.exitCode(), 1);
        QVERIFY(second.errorText().contains("cannot listen on " + kind + " 127.0.0.1:" + port));
    }
}

/// Somebody's file or link stays; a link that a killed pod has left gives way.
void TestPodsim::ptyLinkInUse()
{
    const QTemporaryDir directory;
    const QString name = directory.filePath("pod");
    QFile file(directory.filePath("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.link(name));
    for (const QString &taken : {file.fileName(), name}) {
        PodProcess refused({"--pty", taken});
        QCOMPARE(refused.exitCode(), 1);
        QVERIFY(refused.errorText().contains("cannot open pty " + taken));
        QVERIFY(QFile::exists(taken));
    }
    QVERIFY(QFile::remove(name));

    PodProcess killed({"--pty", name});
    QVERIFY(killed.awaitLine("listening on pty"));
    killed.stop(SIGKILL);
    QVERIFY(QFileInfo(name).isSymLink());
    PodProcess next({"--pty", name});
    QVERIFY(next.awaitLine("listening on pty"));
    PtyHost host(name);
    host.send(kEmpty);
    QCOMPARE(hex(host.receive(kPlainSize)), hex(kEmptyAnswer));
}

void TestPodsim::endsOnSignal()
{
    for (const int signal : {SIGINT, SIGTERM}) {
        Rig rig("tcp", {});
        rig.host->send(kIdle + kPhoto);
        rig.host->receive(kPlainSize + kFeedbackSize);
        rig.pod->stop(signal);
        QCOMPARE(rig.pod->exitCode(), 0);
        QCOMPARE(rig.pod->output().count("2 frames: 1 idle, 1 commands, 0 repeats; 0 broken "
                                         "frames, 0 bytes of noise; 2 answers\n"),
                 1);
    }
}

NACELLE_TEST_MAIN(TestPodsim)
#include "tst_podsim.moc"
