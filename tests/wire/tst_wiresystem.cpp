#include "tests/support/strictmain.h"
#include "tests/wire/wireprocess.h"

#include <QTemporaryDir>

#include <memory>

namespace {

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
    void saysThatTheDiskIsFull();

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
    QVERIFY2(second.error.contains("locking"), second.error);
    pod.stop(SIGKILL);
    const Ended lost = first.end();
    QCOMPARE(lost.code, 1);
    QVERIFY2(lost.error.contains(link.toUtf8()), lost.error);
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

NACELLE_TEST_MAIN(tst_wiresystem)
#include "tst_wiresystem.moc"
