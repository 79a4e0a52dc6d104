#include "tests/support/strictmain.h"
#include "tests/wire/wireprocess.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

/// The program over real files, sockets and pseudo-terminals, with the simulated pod.
class tst_nacelle_wire : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void refusesItsCommandLine_data();
    void refusesItsCommandLine();
    void helps();
    void pipes();
    void endsByTheAnswer_data();
    void endsByTheAnswer();
    void endsUnanswered_data();
    void endsUnanswered();
    void saysWhatIsNotTaken();
    void sendsFromFreshPorts();
    void bridgesAndReplays();
    void recordsWhatReachesThePod();
    void makesTheBenchWait();
    void recordsUntilKilled();
    void rotates();
    void reconnects();
    void servesOneAtATime();
    void failsOnFiles();

private:
    QString path(const char *name) const { return m_folder->filePath(QLatin1String(name)); }

    QStringList serialPod() const
    {
        return kHasSerial ? QStringList{"--pty", path("pty")} : QStringList();
    }
    QString serialLink() const { return "serial://" + path("pty"); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_nacelle_wire::refusesItsCommandLine_data()
{
    QTest::addColumn<QString>("words");
    for (const char *words : {"",
                              "play",
                              "decode --json --csv x",
                              "decode --crc maybe",
                              "decode --from soon",
                              "decode --from 2025-11-21T10:30:00x",
                              "decode --to @5min",
                              "decode --date 2025-11-21x",
                              "decode --mode fast",
                              "convert --as xml",
                              "fields all",
                              "compose command=no",
                              "compose --frame pod",
                              "send",
                              "send pod A8E5",
                              "send --every x tcp://pod A8E5",
                              "send --count 0 tcp://pod A8E5",
                              "dump",
                              "dump --for 0 tcp://pod",
                              "dump --json --hex tcp://pod",
                              "dump --date 2025-11-21 tcp://pod",
                              "dump -o x.pcapng tcp://pod",
                              "record tcp://pod",
                              "record -o x --rotate-size 1 --keep -1 tcp://pod",
                              "record -o x --keep 1 tcp://pod",
                              "record -o x --rotate-size 0 tcp://pod",
                              "record -o x --rotate-time 999ms tcp://pod",
                              "record -o x.pcap tcp://pod",
                              "record -o - --rotate-time 1h tcp://pod",
                              "replay x",
                              "replay --speed 0 x tcp://pod",
                              "replay --loop 2 - tcp://pod",
                              "diff x",
                              "replay --side up x tcp://pod",
                              "decode --language fr"})
        QTest::newRow(words) << words;
}

void tst_nacelle_wire::refusesItsCommandLine()
{
    QFETCH(QString, words);
    const Ended refused = run(words.split(' ', Qt::SkipEmptyParts));
    QCOMPARE(refused.code, 2);
    QVERIFY2(refused.error.contains("--help"), refused.error);
    QVERIFY(refused.out.isEmpty());
}

void tst_nacelle_wire::helps()
{
    const QByteArray help = run({"--help"}).out;
    for (const char *verb :
         {"compose", "decode", "send", "dump", "record", "replay", "convert", "diff", "fields"}) {
        QVERIFY(help.contains(QByteArray("\n  ") + verb + ' '));
        const Ended own = run({verb, "--help"});
        QCOMPARE(own.code, 0);
        QVERIFY2(own.out.contains(QByteArray("\n  nacelle-wire ") + verb), verb);
    }
}

void tst_nacelle_wire::pipes()
{
    const QByteArray line =
        run({"compose", "carrier_roll=-1.15", "command=zoom_ratio", "camera=1", "zoom=20"}).out;
    QCOMPARE(line.size(), 2 * 75 + 1);
    const Ended decoded = run({"decode", "--json"}, line);
    QVERIFY(decoded.out.contains("\"carrier_roll\":-1.15"));
    QVERIFY(decoded.out.contains("\"params\":{\"camera\":1,\"zoom\":20}"));
    QCOMPARE(run({"compose", "--json"}, decoded.out).out, line);
    const QByteArray timed = "(1.500000) rx " + line;
    const Ended whole =
        run({"compose", "--json", "--as", "line"}, run({"decode", "--json"}, timed).out);
    QCOMPARE(whole.out, timed);
    const Ended broken = run({"compose", "--json"}, "{\n" + decoded.out);
    QCOMPARE(broken.code, 1);
    QCOMPARE(broken.out, line);
    QVERIFY(broken.error.contains("line 1"));
}

void tst_nacelle_wire::endsByTheAnswer_data()
{
    QTest::addColumn<QStringList>("pod");
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("code");
    QTest::newRow("success") << QStringList() << "photo" << 0;
    QTest::newRow("an empty command") << QStringList() << "idle" << 0;
    QTest::newRow("failure") << QStringList{"--result", "1"} << "photo" << 1;
    QTest::newRow("executing, then success") << QStringList{"--ack-after", "3"} << "photo" << 0;
    QTest::newRow("executing for ever") << QStringList{"--result", "2"} << "photo" << 3;
    QTest::newRow("silent") << QStringList{"--silent"} << "photo" << 3;
    QTest::newRow("wrong checksums") << QStringList{"--bad-crc", "1"} << "photo" << 3;
    QTest::newRow("in pieces, after noise")
        << QStringList{"--split", "10", "--noise", "50"} << "photo" << 0;
}

void tst_nacelle_wire::endsByTheAnswer()
{
    QFETCH(QStringList, pod);
    QFETCH(QString, word);
    QFETCH(int, code);
    const quint16 local = freePort(true);
    PodProcess process(
        QStringList{"--tcp", "0", "--udp", "0", "--udp-reply", QString::number(local)} +
        serialPod() + pod);
    const QString tcp = tcpTo(process.port("tcp"));
    const QString udp =
        QStringLiteral("udp://127.0.0.1:%1?local=%2").arg(process.port("udp")).arg(local);
    const QString limit = code == 3 ? "300ms" : "15s";
    QStringList links{tcp, udp};
    if (kHasSerial && process.awaitLine("pty"))
        links << serialLink();
    for (const QString &link : qAsConst(links)) {
        const Ended sent =
            run({"send", "--until-answer", "--timeout", limit, link}, command(qPrintable(word)));
        QVERIFY2(sent.code == code, qPrintable(link) + sent.error);
        QCOMPARE(sent.out.count('\n'), code == 3 ? 0 : 1);
    }
}

void tst_nacelle_wire::endsUnanswered_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<bool>("isStopped");
    QTest::addColumn<int>("code");
    QTest::newRow("sent, time over") << "send --until-answer --for 50ms" << false << 3;
    QTest::newRow("sent, stopped") << "send --until-answer" << true << 130;
    QTest::newRow("sent, time far off")
        << "send --until-answer --timeout 600h --for 700h" << true << 130;
    QTest::newRow("sent so often, stopped") << "send --every 1ms --count 1000000" << true << 130;
    QTest::newRow("sent for ever, stopped") << "send --every 1ms" << true << 0;
    QTest::newRow("awaited, time over") << "dump --count 1 --for 50ms" << false << 3;
    QTest::newRow("awaited, stopped") << "dump --count 1" << true << 130;
    QTest::newRow("listened, stopped") << "dump" << true << 0;
    // The pipe is open still, and says no more.
    QTest::newRow("played, stopped") << "replay -" << true << 130;
}

void tst_nacelle_wire::endsUnanswered()
{
    QFETCH(QString, words);
    QFETCH(bool, isStopped);
    QFETCH(int, code);
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    Wire wire(words.split(' ') << tcpTo(silent.serverPort()), command("photo"),
              words == "replay -");
    QVERIFY(silent.waitForNewConnection(kLimitMs));
    QTcpSocket *client = silent.nextPendingConnection();
    while (isStopped && words.startsWith("send") && client->bytesAvailable() < 3 * 73)
        QVERIFY(client->waitForReadyRead(kLimitMs));
    const Ended ended = isStopped ? wire.stop(SIGINT) : wire.end();
    QVERIFY2(ended.code == code, ended.error);
}

/// A pod that has stopped to read gets a part, perhaps of a frame.
void tst_nacelle_wire::saysWhatIsNotTaken()
{
    QTcpServer pod; // never takes the connection, so that nothing reads
    QVERIFY(pod.listen(QHostAddress::LocalHost));
    const Ended ended = run({"send", "--for", "50ms", tcpTo(pod.serverPort())},
                            command("photo").repeated(100000)); // more than all buffers on the way
    QCOMPARE(ended.code, 1);
    QVERIFY2(ended.error.contains("bytes weren't taken"), ended.error);
}

/// As the bench sends: a pod that looked at the port would see as many ports as datagrams.
void tst_nacelle_wire::sendsFromFreshPorts()
{
    QUdpSocket pod;
    QVERIFY(pod.bind(QHostAddress::LocalHost));
    const QString link = QStringLiteral("udp://127.0.0.1:%1?local=0").arg(pod.localPort());
    QCOMPARE(run({"send", "--count", "8", link}, command("photo")).code, 0);
    QSet<quint16> ports;
    for (int i = 0; i < 8; ++i) {
        QVERIFY(pod.hasPendingDatagrams() || pod.waitForReadyRead(kLimitMs));
        quint16 port = 0;
        QByteArray bytes(100, '\0');
        QCOMPARE(int(pod.readDatagram(bytes.data(), 100, nullptr, &port)), 73);
        ports.insert(port);
    }
    QVERIFY(ports.size() > 6); // a port that is free again may be taken again
}

/// Bench by TCP, pod by serial where that is; then each side is played to the other.
void tst_nacelle_wire::bridgesAndReplays()
{
    PodProcess pod(serialPod() + QStringList{"--tcp", "0", "--verbose"});
    const QString podLink = tcpTo(pod.port("tcp"));
    const quint16 port = freePort();
    Wire bridge({"record", "-o", path("run.pcapng"), "--bridge",
                 QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port),
                 kHasSerial ? serialLink() : podLink});
    QTcpSocket bench;
    QVERIFY(joins(bench, port));
    QByteArray sent, received;
    for (const char *word : {"photo", "lock", "idle", "0x40"}) {
        const QByteArray frame = QByteArray::fromHex(command(word));
        const int before = received.size();
        bench.write(frame);
        sent += frame;
        while (received.size() < before + 71 && bench.waitForReadyRead(kLimitMs))
            received += bench.readAll();
    }
    QCOMPARE(bridge.stop(SIGINT).code, 0);
    const QByteArray lines = run({"convert", path("run.pcapng")}).out;
    QCOMPARE(QByteArray::fromHex(framesOf(lines, "tx")), sent);
    QCOMPARE(QByteArray::fromHex(framesOf(lines, "rx")), received);

    Wire asPod({"replay", "--at-once", path("run.pcapng"),
                QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port)});
    QTcpSocket listener;
    QVERIFY(joins(listener, port));
    QByteArray played;
    while (listener.waitForReadyRead(kLimitMs))
        played += listener.readAll();
    QCOMPARE(asPod.end().code, 0);
    QCOMPARE(played, received);

    Wire recorder({"record", "-o", path("again.log"), "--bridge",
                   QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port), podLink});
    QVERIFY(succeeds({"replay", "--speed", "10", path("run.pcapng"), tcpTo(port)}));
    QVERIFY(pod.awaitCount("0x40", 2));
    QCOMPARE(recorder.stop().code, 0);
    QCOMPARE(QByteArray::fromHex(framesOf(run({"convert", path("again.log")}).out, "tx")), sent);
    const Ended compared = run({"diff", "--dir", "tx", path("run.pcapng"), path("again.log")});
    QVERIFY2(compared.out.startsWith("4 equal, 0 lost, 0 added, 0 changed\n"), compared.out);
    QCOMPARE(compared.code, 0);
    QCOMPARE(run({"diff", "--kind", "host", path("run.pcapng"), command("photo").trimmed()}).code,
             1);
}

/// What the bench sends while the pod's link is lost isn't in the recording.
void tst_nacelle_wire::recordsWhatReachesThePod()
{
    QTcpServer pod;
    QVERIFY(pod.listen(QHostAddress::LocalHost));
    const quint16 port = freePort(), podPort = pod.serverPort();
    Wire bridge({"record", "-o", path("run.hex"), "--reconnect", "--bridge",
                 QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port), tcpTo(podPort)});
    QVERIFY(pod.waitForNewConnection(kLimitMs));
    QTcpSocket bench;
    QVERIFY(joins(bench, port));
    const std::unique_ptr<QTcpSocket> before(pod.nextPendingConnection());
    pod.close();
    before->disconnectFromHost();
    QVERIFY(bridge.says("closed"));
    bench.write(QByteArray::fromHex(command("photo")));
    QVERIFY(bench.waitForBytesWritten(kLimitMs) && bridge.says("dropped"));
    QVERIFY(pod.listen(QHostAddress::LocalHost, podPort) && pod.waitForNewConnection(kLimitMs));
    QTcpSocket *link = pod.nextPendingConnection();
    const QByteArray lock = QByteArray::fromHex(command("lock"));
    bench.write(lock);
    QVERIFY(bench.waitForBytesWritten(kLimitMs));
    QVERIFY(link->waitForReadyRead(kLimitMs));
    QCOMPARE(link->readAll(), lock);
    QCOMPARE(bridge.stop().code, 0);
    QCOMPARE(run({"convert", "--as", "hex", path("run.hex")}).out, command("lock"));
}

/// A pod that reads nothing doesn't fill the bridge's memory; and all comes once it reads.
void tst_nacelle_wire::makesTheBenchWait()
{
    constexpr int kSize = 12 << 20; // more than all buffers on the way, of which two are small
    QTcpServer pod;
    QVERIFY(pod.listen(QHostAddress::LocalHost));
    const quint16 port = freePort();
    Wire bridge({"record", "-o", path("run.pcapng"), "--bridge",
                 QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port), tcpTo(pod.serverPort())});
    QVERIFY(pod.waitForNewConnection(kLimitMs));
    QTcpSocket *link = pod.nextPendingConnection();
    link->setReadBufferSize(1);
    link->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 65536);
    QTcpSocket bench;
    QVERIFY(joins(bench, port));
    bench.setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, 65536);
    bench.write(QByteArray(kSize, '\x11'));
    while (bench.bytesToWrite() > 0 && bench.waitForBytesWritten(1000)) {
    }
    QVERIFY(bench.bytesToWrite() > 0);
    int count = 0;
    const auto read = [&] { count += link->readAll().size(); };
    connect(link, &QTcpSocket::readyRead, this, read);
    link->setReadBufferSize(0);
    read();
    QTRY_COMPARE_WITH_TIMEOUT(count, kSize, 3 * kLimitMs);
    QCOMPARE(bridge.stop().code, 0);
}

/// What is on the disk after a second is read, wherever the end is.
void tst_nacelle_wire::recordsUntilKilled()
{
    PodProcess pod({"--tcp", "0"});
    const QString link = tcpTo(pod.port("tcp"));
    const quint16 port = freePort();
    Wire recorder({"record", "-o", path("killed.pcapng"), "--bridge",
                   QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port), link});
    QVERIFY(succeeds({"send", "--until-answer", tcpTo(port)}, command("photo")));
    QTRY_VERIFY_WITH_TIMEOUT(run({"convert", path("killed.pcapng")}).out.count('\n') >= 2,
                             kLimitMs);
    recorder.kill();
    QFile file(path("killed.pcapng"));
    QVERIFY(file.resize(file.size() - 1));
    const Ended cut = run({"decode", "--json", path("killed.pcapng")});
    QCOMPARE(cut.code, 1);
    QVERIFY2(cut.error.contains("cut in a block"), cut.error);
    QVERIFY(cut.out.startsWith("{\"time\":"));
}

void tst_nacelle_wire::rotates()
{
    // Of earlier nights, and of nobody's.
    for (const char *name : {"night-00007.pcapng", "night-123456.pcapng", "night-0123457.pcapng",
                             "night-x.pcapng", "nightly-00001.pcapng"}) {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    PodProcess pod({"--tcp", "0"});
    const quint16 port = freePort();
    Wire recorder({"record", "-o", path("night.pcapng"), "--rotate-time", "1s", "--keep", "2",
                   "--bridge", QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port),
                   tcpTo(pod.port("tcp"))});
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(path("night-123459.pcapng")), kLimitMs);
    QCOMPARE(recorder.stop().code, 0);
    const QStringList files = QDir(m_folder->path()).entryList({"night*"});
    QCOMPARE(files.size(), 2 + 3);
    QVERIFY(!files.contains("night-00007.pcapng"));
    QCOMPARE(run({"convert", path("night-123459.pcapng")}).code, 0);
}

void tst_nacelle_wire::reconnects()
{
    QTcpServer pod;
    QVERIFY(pod.listen(QHostAddress::LocalHost));
    Wire dump({"dump", "--reconnect", "--hex", "--count", "2", tcpTo(pod.serverPort())});
    const QByteArray frame = QByteArray::fromHex(run({"compose", "--frame", "gcu"}).out);
    for (int i = 0; i < 2; ++i) {
        QVERIFY(pod.waitForNewConnection(kLimitMs));
        const std::unique_ptr<QTcpSocket> client(pod.nextPendingConnection());
        client->write(frame);
        QVERIFY(client->waitForBytesWritten(kLimitMs));
        client->disconnectFromHost();
    }
    const Ended ended = dump.end();
    QCOMPARE(ended.code, 0);
    QCOMPARE(ended.out, (frame.toHex().toUpper() + '\n').repeated(2));
    QVERIFY2(ended.error.contains("closed") && ended.error.count("open again") == 1, ended.error);
    // The loss of a link is said once, in whatever it comes about.
    Wire sender({"send", "--every", "1ms", tcpTo(pod.serverPort())},
                (frame.toHex() + '\n').repeated(20000));
    QVERIFY(pod.waitForNewConnection(kLimitMs));
    delete pod.nextPendingConnection();
    const Ended lost = sender.end();
    QCOMPARE(lost.code, 1);
    QVERIFY2(lost.error.count('\n') == 1 && !lost.error.contains("nobody"), lost.error);
    QCOMPARE(run({"dump", tcpTo(freePort())}).code, 1);
    const Ended never =
        run({"record", "-o", path("never"), "--reconnect", "--for", "50ms", tcpTo(freePort())});
    QCOMPARE(never.code, 1);
    QVERIFY2(never.error.contains("was never open"), never.error);
}

/// A second bench is refused; what the first left unfinished is no part of the next one's frame.
void tst_nacelle_wire::servesOneAtATime()
{
    const quint16 port = freePort();
    Wire dump(
        {"dump", "--hex", "--count", "2", QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port)});
    const QByteArray frame = QByteArray::fromHex(command("photo"));
    QTcpSocket first, second;
    QVERIFY(joins(first, port));
    first.write(frame.left(40));
    QVERIFY(first.waitForBytesWritten(kLimitMs));
    second.connectToHost("127.0.0.1", port);
    QVERIFY(second.waitForConnected(kLimitMs));
    QVERIFY(second.waitForDisconnected(kLimitMs));
    first.disconnectFromHost();
    do { // refused as long as the first one's end isn't heard
        QVERIFY(joins(second, port));
        second.write(frame);
        while (second.state() != QAbstractSocket::UnconnectedState)
            second.waitForDisconnected(kLimitMs);
    } while (!dump.hasEnded(1000));
    const Ended ended = dump.end();
    QCOMPARE(ended.out, frame.left(40).toHex().toUpper() + '\n' + frame.toHex().toUpper() + '\n');
    QVERIFY2(ended.error.contains("refused 127.0.0.1"), ended.error);
}

void tst_nacelle_wire::failsOnFiles()
{
    QCOMPARE(run({"decode", path("none")}).code, 1);
    QCOMPARE(run({"decode", m_folder->path()}).code, 1);
    QCOMPARE(run({"replay", path("none"), "tcp://127.0.0.1:1"}).code, 1);
    QCOMPARE(run({"record", "-o", path("no/such/file"), "tcp-listen://127.0.0.1:0"}).code, 1);
    // A link that isn't there empties no file.
    QFile kept(path("kept.log"));
    QVERIFY(kept.open(QIODevice::WriteOnly) && kept.write("night") == 5 && kept.flush());
    for (const char *verb : {"record", "dump"})
        QCOMPARE(run({verb, "-o", kept.fileName(), tcpTo(freePort())}).code, 1);
    QCOMPARE(kept.size(), 5);
    for (const char *link : {"tcp-listen://no.such.host.invalid:0", "udp://no.such.host.invalid"})
        QVERIFY(run({"dump", "--for", "1s", link}).error.contains("no such host"));
    const quint16 port = freePort(true);
    QUdpSocket taken;
    QVERIFY(taken.bind(QHostAddress::AnyIPv4, port, QUdpSocket::DontShareAddress));
    const Ended refused = run({"dump", QStringLiteral("udp://127.0.0.1:1?local=%1").arg(port)});
    QCOMPARE(refused.code, 1);
    QVERIFY2(refused.error.contains(QByteArray::number(port)), refused.error);
}

NACELLE_TEST_MAIN(tst_nacelle_wire)
#include "tst_nacelle_wire.moc"
