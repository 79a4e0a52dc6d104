#include "tests/support/savedsample.h"
#include "tests/support/strictmain.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>

#include <sys/stat.h>

namespace {

struct Run
{
    int code = -1;
    QString out;
    QString error;
};

Run run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

/// Runs the real program on files of a temporary folder.
class tst_nacelle_config : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void setsWithoutAFile();
    void setsOneByteOfAFile_data();
    void setsOneByteOfAFile();
    void shows();
    void looksBesideItself();
    void refusesDamage_data();
    void refusesDamage();
    void refusesItsCommandLine_data();
    void refusesItsCommandLine();
    void failsToWrite();
    void keepsTheFileWhenTheDiskIsFull();
    void saysThatItsOutputIsFull();
    void helps();

private:
    Run config(const QStringList &arguments)
    {
        return run(QStringLiteral(CONFIG_PATH), QStringList{"--file", m_path} + arguments);
    }

    void lay(const QByteArray &bytes)
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QByteArray laid() const
    {
        QFile file(m_path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

void tst_nacelle_config::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(QStringLiteral("saved.ncl"));
}

void tst_nacelle_config::setsWithoutAFile()
{
    const Run made = config({"set", "engine", "ffmpeg"});
    QCOMPARE(made.code, 0);
    QCOMPARE(made.out, "engine is now ffmpeg in " + m_path + '\n');
    // Flags, numbers, language, engine and "/LocalData/" of a first start.
    QCOMPARE(laid().left(48).toHex(), QByteArray("010101010101000000320000003200000032"
                                                 "00010101"
                                                 "00000016002f004c006f00630061006c00440061007400"
                                                 "61002f"));
}

void tst_nacelle_config::setsOneByteOfAFile_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("value");
    QTest::newRow("Chinese") << QStringList{"language", "zh"} << 19 << 1;
    QTest::newRow("English") << QStringList{"language", "en"} << 19 << 0;
    QTest::newRow("FFmpeg") << QStringList{"engine", "ffmpeg"} << 20 << 1;
    QTest::newRow("libVLC") << QStringList{"engine", "libvlc"} << 20 << 0;
}

void tst_nacelle_config::setsOneByteOfAFile()
{
    QFETCH(QStringList, words);
    QFETCH(int, offset);
    QFETCH(int, value);
    QByteArray expected = SavedSample{18, 2, false}.file();
    expected[offset] = char(1 - value);
    expected[0] = 7; // a flag that the program would write as 1
    lay(expected);
    QCOMPARE(config(QStringList{"set"} + words).code, 0);
    expected[offset] = char(value);
    QCOMPARE(laid(), expected);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 1);
}

void tst_nacelle_config::shows()
{
    QVERIFY(config({"show"}).out.startsWith(m_path + " isn't there. A first start has:\n"));
    QVERIFY(!QFile::exists(m_path));
    lay(SavedSample().file());
    const Run shown = config({"show"});
    QCOMPARE(shown.code, 0);
    const char key[] = "  index 2, name \"放大2\", padKey \"pad2\", keyboardKey \"key2\", "
                       "reserved -2, keyCode 81";
    for (const char *line :
         {"optionFlag2: false", "optionValue2: -12", "language: en", "engine: ffmpeg",
          "dataFolder: \"/D/\"", "controlRows: 16", "keyRows: 2", key})
        QVERIFY2(shown.out.contains('\n' + QString(line) + '\n'), line);
    QVERIFY(shown.out.contains("  index 16, name \"名16\", text2 \"t2-16\""));
}

/// The default place is beside the program, wherever it is started from.
void tst_nacelle_config::looksBesideItself()
{
    const QString copy = m_folder->filePath(QStringLiteral("copy"));
    QVERIFY(QFile::copy(QStringLiteral(CONFIG_PATH), copy));
    QCOMPARE(run(copy, {"set", "language", "en"}).code, 0);
    QVERIFY(QFile::exists(m_folder->filePath(QStringLiteral("controlConfig.ncl"))));
}

void tst_nacelle_config::refusesDamage_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("reason");
    const QString rows = QStringLiteral("16 control rows");
    const QString rest = QStringLiteral("ends early or has bytes left over");
    QTest::newRow("empty") << QByteArray() << rows;
    QTest::newRow("cut in a control row") << SavedSample().head().chopped(1) << rows;
    QTest::newRow("cut in a key row") << SavedSample().file().chopped(1) << rest;
    QTest::newRow("a byte left over") << SavedSample().file() + 'x' << rest;
}

void tst_nacelle_config::refusesDamage()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, reason);
    lay(file);
    for (const QStringList &words : {QStringList{"show"}, QStringList{"set", "engine", "ffmpeg"}}) {
        const Run refused = config(words);
        QCOMPARE(refused.code, 1);
        QVERIFY2(refused.error.contains(reason), qPrintable(refused.error));
        QVERIFY(refused.out.isEmpty());
        QCOMPARE(laid(), file);
    }
}

void tst_nacelle_config::refusesItsCommandLine_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::newRow("nothing") << QStringList{};
    QTest::newRow("unknown command") << QStringList{"get"};
    QTest::newRow("show of one") << QStringList{"show", "engine"};
    QTest::newRow("no value") << QStringList{"set", "engine"};
    QTest::newRow("unknown setting") << QStringList{"set", "scale", "2"};
    QTest::newRow("value of another") << QStringList{"set", "engine", "zh"};
    QTest::newRow("empty path") << QStringList{"--file", "", "show"};
    QTest::newRow("unknown option") << QStringList{"--folder", "x", "show"};
}

void tst_nacelle_config::refusesItsCommandLine()
{
    QFETCH(QStringList, words);
    const Run refused = config(words);
    QCOMPARE(refused.code, 2);
    QVERIFY(refused.error.contains("--help"));
    QVERIFY(!QFile::exists(m_path));
}

void tst_nacelle_config::failsToWrite()
{
    const QString pipe = m_folder->filePath("pipe");
    QCOMPARE(mkfifo(qPrintable(pipe), 0600), 0);
    for (const QString &path : {m_folder->filePath("no/such/folder.ncl"), m_folder->path(), pipe}) {
        m_path = path;
        for (const QStringList &words :
             {QStringList{"set", "language", "en"}, QStringList{"show"}}) {
            const Run failed = config(words);
            QCOMPARE(failed.code, 1);
            QVERIFY(failed.error.contains(m_path));
        }
    }
}

/// A disk that is full must not cost the file that was there.
void tst_nacelle_config::keepsTheFileWhenTheDiskIsFull()
{
    const QByteArray before = SavedSample().file();
    QVERIFY(before.size() > 1024);
    lay(before);
    const Run failed = run("sh", {"-c", "trap '' XFSZ; ulimit -f 1; exec \"$@\"", "sh", CONFIG_PATH,
                                  "--file", m_path, "set", "language", "zh"});
    QCOMPARE(failed.code, 1);
    QVERIFY(failed.error.contains(m_path));
    QCOMPARE(laid(), before);
}

void tst_nacelle_config::saysThatItsOutputIsFull()
{
    lay(SavedSample().file());
    for (const char *words : {"show", "set language zh", "--help"}) {
        const Run failed = run(
            "sh", {"-c", R"("$1" --file "$2" $3 > /dev/full)", "sh", CONFIG_PATH, m_path, words});
        QCOMPARE(failed.code, 1);
        QVERIFY(failed.error.contains("output"));
    }
}

void tst_nacelle_config::helps()
{
    const Run help = config({"--help"});
    QCOMPARE(help.code, 0);
    QVERIFY(help.out.contains("set engine ffmpeg|libvlc"));
}

NACELLE_TEST_MAIN(tst_nacelle_config)
#include "tst_nacelle_config.moc"
