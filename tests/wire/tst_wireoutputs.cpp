#include "tests/support/strictmain.h"
#include "tests/wire/wireprocess.h"

#include <QTemporaryDir>

/// What nacelle-wire is told to write to, and verbs that it hasn't.
class tst_wireoutputs : public QObject
{
    Q_OBJECT

private slots:
    void emptiesNothing_data();
    void emptiesNothing();
};

void tst_wireoutputs::emptiesNothing_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("error");
    const auto row = [](const char *words, int code, const char *error) {
        QTest::newRow(words) << code << QByteArray(error);
    };
    row("convert @run.hex -o @./run.hex", 2, "./run.hex is read and can't be written too");
    row("diff @run.hex @other.hex -o @run.hex", 2, "run.hex is read and can't be written too");
    row("compose --json @run.hex -o @run.hex", 2, "run.hex is read and can't be written too");
    row("convert @none -o @run.hex", 1, "none: ");
    row("diff @other.hex @none -o @run.hex", 1, "none: ");
    row("compose --json @none -o @run.hex", 1, "none: ");
    row("convert @other.txt -o @run.hex", 1, "other.txt: text that is neither");
    row("decod @run.hex", 2, "no such verb: decod");
    row("other decode @run.hex -o @run.hex", 2, "no such verb: other");
    row("--csv other decode @run.hex -o @run.hex", 2, "no such verb: other");
}

void tst_wireoutputs::emptiesNothing()
{
    QFETCH(int, code);
    QFETCH(QByteArray, error);
    const QTemporaryDir directory;
    const auto write = [&directory](const char *name, const QByteArray &text) {
        QFile file(directory.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    };
    QVERIFY(write("run.hex", "A8E5\n") && write("other.hex", "8A5E\n") &&
            write("other.txt", "?\n"));
    QStringList words = QString(QTest::currentDataTag()).split(' ');
    const Ended ended = run(words.replaceInStrings("@", directory.path() + "/"));
    QCOMPARE(ended.code, code);
    QVERIFY2(ended.error.contains(error), ended.error);
    QFile file(directory.filePath("run.hex"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("A8E5\n"));
}

NACELLE_TEST_MAIN(tst_wireoutputs)
#include "tst_wireoutputs.moc"
