#include "tests/support/strictmain.h"
#include "tests/wire/wireprocess.h"

#include <QTemporaryDir>

#include <memory>

#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

/// A serial line that takes no more than its buffers hold until it is read.
class Line
{
public:
    Line() : m_far(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        grantpt(m_far);
        unlockpt(m_far);
        m_near = ::open(ptsname(m_far),
                        O_RDWR | O_NOCTTY | O_CLOEXEC); // else what lies there ends with the port
    }
    ~Line()
    {
        ::close(m_near);
        ::close(m_far);
    }

    QString port() const { return ptsname(m_far); }

    /// So many bytes, or what comes until nothing more does.
    QByteArray read(int count) const
    {
        QByteArray bytes;
        pollfd far = {m_far, POLLIN, 0};
        while (bytes.size() < count && ::poll(&far, 1, kLimitMs) > 0) {
            char piece[4096];
            bytes.append(piece, int(qMax<ssize_t>(0, ::read(m_far, piece, sizeof piece))));
        }
        return bytes;
    }

private:
    int m_far, m_near;
};

Ended shell(const QString &command)
{
    QProcess process;
    process.start("sh", {"-c", command});
    process.waitForFinished(kLimitMs);
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

/// The program over pseudo-terminals, and where the system refuses: as Linux has them.
class tst_wiresystem : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void losesASerialPort();
    void goesOnWithAPortThatIsBack();
    void waitsForASlowLine_data();
    void waitsForASlowLine();
    void saysThatTheDiskIsFull();
    void endsWithItsReader();

private:
    QString path(const char *name) const { return m_folder->filePath(QLatin1String(name)); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

/// One reader has the port; without its other end it would be ready and empty for ever.
void tst_wiresystem::losesASerialPort()
{
    PodProcess pod({"--pty", path("pty")});
    QVERIFY(pod.awaitLine("pty"));
    const QString link = "serial://" + path("pty");
    const quint16 port = freePort();
    Wire first({"record", "-o", path("lost.log"), "--bridge",
                QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port), link});
    QTcpSocket bench;
    QVERIFY(joins(bench, port)); // the bench's side is opened once the port is
    const Ended second = run({"dump", "--for", "50ms", link});
    QCOMPARE(second.code, 1);
    QVERIFY2(second.error.contains("in use by another program") && second.error.contains("locking"),
             second.error);
    pod.stop(SIGKILL);
    const Ended lost = first.end();
    QCOMPARE(lost.code, 1);
    QVERIFY2(lost.error.contains(link.toUtf8() + ": the port is gone: "), lost.error);
}

/// A bench that waits for a full line doesn't wait for ever once the port is lost.
void tst_wiresystem::goesOnWithAPortThatIsBack()
{
    auto line = std::make_unique<Line>();
    QVERIFY(QFile::link(line->port(), path("port")));
    const quint16 port = freePort();
    Wire bridge({"record", "-o", path("run.hex"), "--reconnect", "--bridge",
                 QStringLiteral("tcp-listen://127.0.0.1:%1").arg(port),
                 "serial://" + path("port")});
    QTcpSocket bench;
    QVERIFY(joins(bench, port));
    bench.write(QByteArray(12 << 20, '\x11')); // more than all buffers on the way
    while (bench.bytesToWrite() > 0 && bench.waitForBytesWritten(500)) {
    }
    QVERIFY(bench.bytesToWrite() > 0);
    line.reset();
    QVERIFY(QFile::remove(path("port")) && bridge.says("the port is gone"));
    while (bench.bytesToWrite() > 0)
        QVERIFY(bench.waitForBytesWritten(kLimitMs));
    line = std::make_unique<Line>();
    QVERIFY(QFile::link(line->port(), path("port")) && bridge.says("open again"));
    const QByteArray lock = QByteArray::fromHex(command("lock"));
    bench.write(lock);
    QVERIFY(bench.waitForBytesWritten(kLimitMs));
    QByteArray came, piece; // before it perhaps what was still on the way
    do
        came += piece = line->read(1);
    while (!piece.isEmpty() && !came.endsWith(lock));
    QVERIFY(came.endsWith(lock));
    QCOMPARE(bridge.stop().code, 0);
}

void tst_wiresystem::waitsForASlowLine_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::newRow("send") << QStringList{"send"};
    QTest::newRow("replay") << QStringList{"replay", "--at-once", "-"};
}

/// A burst that the line can't take at once arrives whole, and its port isn't lost.
void tst_wiresystem::waitsForASlowLine()
{
    QFETCH(QStringList, words);
    constexpr int kFrames = 3000; // more than a pseudo-terminal holds
    const QByteArray frame = command("photo").trimmed();
    const Line line;
    Wire wire(words << "serial://" + line.port(), ("(1.5) tx " + frame + '\n').repeated(kFrames));
    QVERIFY(!wire.hasEnded(300)); // until the line is full
    QCOMPARE(line.read(kFrames * 73), QByteArray::fromHex(frame).repeated(kFrames));
    const Ended ended = wire.end();
    QVERIFY2(ended.code == 0, ended.error);
}

void tst_wiresystem::saysThatTheDiskIsFull()
{
    const QByteArray frame = command("photo").trimmed();
    for (const char *words : {"fields -o /dev/full", "fields > /dev/full", "compose -o /dev/full",
                              "decode -o /dev/full %2", "convert --as pcapng %2 > /dev/full",
                              "record --as pcapng -o /dev/full tcp-listen://127.0.0.1:0"}) {
        const Ended failed =
            shell(QString("'%1' " + QString(words)).arg(WIRE_PATH).replace("%2", frame));
        QVERIFY2(failed.code == 1, words);
        QVERIFY2(failed.error.contains("No space left"), failed.error);
    }
    // In the midst of what is written; a limit stands for the end of the disk.
    const Ended cut = shell(
        QString("ulimit -f 4; trap '' XFSZ; '%1' fields -o '%2'").arg(WIRE_PATH, path("cut")));
    QCOMPARE(cut.code, 1);
    QVERIFY2(cut.error.contains("File too large"), cut.error);
}

/// Without a word, and with the code of what SIGPIPE ends.
void tst_wiresystem::endsWithItsReader()
{
    for (const char *words : {"dump", "record -o -"}) {
        const quint16 port = freePort(true);
        ToolRun run("sh",
                    {"-c", QString("{ '%1' %2 'udp://127.0.0.1:1?local=%3'; echo $? >&2; } | true")
                               .arg(WIRE_PATH, words, QString::number(port))});
        while (!run.hasEnded(50))
            QUdpSocket().writeDatagram("noise", QHostAddress::LocalHost, port);
        QCOMPARE(run.end().error, QByteArray("141\n"));
    }
}

NACELLE_TEST_MAIN(tst_wiresystem)
#include "tst_wiresystem.moc"
