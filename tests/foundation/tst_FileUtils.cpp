#include "foundation/FileUtils.h"
#include "foundation/savedblock.h"
#include "tests/support/savedsample.h"
#include "tests/support/strictmain.h"

#include <QBuffer>
#include <QDir>
#include <QProcess>

namespace {

/// Byte offset of the engine's flag in every saved file.
constexpr int kEngineOffset = 20;

/// What a start of the program makes of the file beside it.
QString startedProgram()
{
    QProcess process;
    process.start(QCoreApplication::applicationDirPath() + QStringLiteral("/savedstart"),
                  QStringList());
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

void layFile(const QByteArray &bytes)
{
    QFile file(savedFilePath());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write the saved file");
}

void forgetRows()
{
    QGlobal *global = QGlobal::instance();
    qDeleteAll(global->controlRows);
    qDeleteAll(global->keyRows);
    global->controlRows.clear();
    global->keyRows.clear();
}

/// As the program does it once, at its start.
bool load(const QByteArray &file)
{
    forgetRows();
    layFile(file);
    return FileUtils().loadControlConfig();
}

QByteArray savedFile()
{
    QFile file(savedFilePath());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
}

BlockState read(QByteArray bytes, SavedBlock &block)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return readBlock(buffer, block);
}

QByteArray count(quint32 value)
{
    return PlainBytes().u32(value).bytes;
}

} // namespace

/// Runs in a folder that no other test uses, because what lies there is the program's saved file.
class tst_FileUtils : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void starts_data();
    void starts();
    void firstSave();
    void everyFlagHasItsByte();
    void everyFieldComesBack();
    void savedAgain();
    void nullTextsPassThrough();
    void unnamedRowInStateOne_data();
    void unnamedRowInStateOne();
    void cutAnywhere();
    void corruptCounts_data();
    void corruptCounts();
    void damagedTextInStep();
    void failedLoadChangesNothing();
    void fileThatCannotBeOpened();
};

void tst_FileUtils::init()
{
    QFile::remove(savedFilePath());
    forgetRows();
}

void tst_FileUtils::cleanup()
{
    QFile::remove(savedFilePath());
}

void tst_FileUtils::starts_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("settings");
    QByteArray libVlc = SavedSample().file();
    libVlc[kEngineOffset] = 0;
    QTest::newRow("no file") << QByteArray() << "zh libvlc 16 20 /LocalData/";
    QTest::newRow("engine 1") << SavedSample().file() << "en ffmpeg 16 2 /D/";
    QTest::newRow("engine 0") << libVlc << "en libvlc 16 2 /D/";
    QTest::newRow("no key rows") << SavedSample().head() + count(0) << "en ffmpeg 16 0 /D/";
    QTest::newRow("row too few") << SavedSample{15}.file() << "zh libvlc 16 20 /LocalData/";
    QTest::newRow("row too many") << SavedSample{17}.file() << "en ffmpeg 16 2 /D/";
    QTest::newRow("junk") << QByteArray(3000, '\x41') << "zh libvlc 16 20 /LocalData/";
}

void tst_FileUtils::starts()
{
    QFETCH(QByteArray, file);
    if (!file.isEmpty())
        layFile(file);
    QTEST(startedProgram(), "settings");
}

/// The whole file of a program that has never saved, after its language became English.
void tst_FileUtils::firstSave()
{
    const auto fresh = QGlobal::atFirstStart();
    SavedBlock block = blockOf(*fresh);
    block.languageChinese = false;
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    writeBlock(buffer, block);

    const auto row = [](int index) {
        PlainBytes plain;
        plain.i32(index).text('#' + QString::number(index));
        return plain.bytes + QByteArray(6 * 4 + 4 + 4 + 4 + 2 * 4 + 4 + 2, '\0') +
               QByteArray(4 * 8 + 3 * 8 + 4 + 1 + 4 + 4 + 8 + 4, '\0');
    };
    QByteArray expected = QByteArray::fromHex("010101010101 00000032 00000032 00000032 00 00 00 01"
                                              "00000016 002f004c006f00630061006c"
                                              "0044006100740061002f 00000010");
    for (int i = 1; i <= 16; ++i)
        expected += row(i);
    // 指向/俯仰, 摇杆, W/S/A/D
    expected += QByteArray::fromHex("00000014 00000001 0000000a 6307 5411 002f 4fef 4ef0"
                                    "00000004 6447 6746"
                                    "0000000e 0057 002f 0053 002f 0041 002f 0044"
                                    "00000000 00000000");
    QCOMPARE(bytes.left(expected.size()), expected);
    // 退出跟踪, ---, 右键单击
    QVERIFY(bytes.endsWith(QByteArray::fromHex("00000014 00000008 9000 51fa 8ddf 8e2a"
                                               "00000006 002d 002d 002d"
                                               "00000008 53f3 952e 5355 51fb"
                                               "00000000 00002713")));
}

/// Of each file one flag alone is set.
void tst_FileUtils::everyFlagHasItsByte()
{
    const QMap<int, bool QGlobal::*> flags{
        {0, &QGlobal::optionFlag2},
        {1, &QGlobal::optionFlag3},
        {2, &QGlobal::optionFlag1},
        {3, &QGlobal::optionFlag4},
        {4, &QGlobal::optionFlag5},
        {5, &QGlobal::optionFlag6},
        {18, &QGlobal::optionFlag9},
        {19, &QGlobal::languageChinese},
        {kEngineOffset, &QGlobal::ffmpegEngine},
        {21, &QGlobal::optionFlag7},
    };
    for (const int offset : flags.keys()) {
        QByteArray file = SavedSample().file();
        for (const int other : flags.keys())
            file[other] = char(other == offset ? 1 : 0);
        QVERIFY(load(file));
        for (const int other : flags.keys())
            QCOMPARE(QGlobal::instance()->*flags[other], other == offset);
    }
}

void tst_FileUtils::everyFieldComesBack()
{
    QVERIFY(load(SavedSample().file()));
    const QGlobal *global = QGlobal::instance();
    QCOMPARE(global->optionValue1, 51);
    QCOMPARE(global->optionValue2, -12);
    QCOMPARE(global->optionValue3, 0x7fffffff);
    QCOMPARE(global->dataFolder, QStringLiteral("/D/"));

    QCOMPARE(global->controlRows.size(), 16);
    const ControlRow &row = *global->controlRows.at(15);
    QCOMPARE(row.index, 16);
    QCOMPARE((QStringList{row.name, row.text2, row.text3, row.text4, row.text5, row.text6,
                          row.text7, row.text8, row.text9, row.text10}),
             (QStringList{"名16", "t2-16", "t3-16", "t4-16", "t5-16", "t6-16", "t7-16", "t8-16",
                          "t9-16", "t10-16"}));
    QCOMPARE(row.items, (QStringList{"a16", ""}));
    QCOMPARE(row.number1, -16);
    QCOMPARE(row.number2, 1016);
    QCOMPARE((QList<double>{row.value1, row.value2, row.value3, row.value4}),
             (QList<double>{8, -2.25, 1e300, 0}));
    QCOMPARE((QList<float>{row.ratio1, row.ratio2, row.ratio3}), (QList<float>{0.25F, 24, -8}));
    QCOMPARE(row.unsigned1, 0xFEDCBA98U);
    QCOMPARE(row.byte1, quint8(216));
    QCOMPARE(row.number3, -5);
    QCOMPARE(row.state, 1);
    // Three fields of the file are dropped.
    QCOMPARE(row.word, quint16(0));
    QCOMPARE(row.number4, 0);
    QCOMPARE(row.stamp, quint64(0));

    QCOMPARE(global->keyRows.size(), 2);
    const KeyRow &key = *global->keyRows.at(1);
    QCOMPARE(key.index, 2);
    QCOMPARE((QStringList{key.name, key.padKey, key.keyboardKey}),
             (QStringList{"放大2", "pad2", "key2"}));
    QCOMPARE(key.reserved, -2);
    QCOMPARE(key.keyCode, 0x51);
}

void tst_FileUtils::savedAgain()
{
    QVERIFY(load(SavedSample{18}.file()));
    FileUtils().saveControlConfig();
    QCOMPARE(savedFile(), (SavedSample{16, 2, true}.file()));
}

void tst_FileUtils::nullTextsPassThrough()
{
    QByteArray file = SavedSample{16, 2, true}.file();
    file.replace(22, 10, QByteArray::fromHex("ffffffff"));
    QVERIFY(load(file));
    QVERIFY(QGlobal::instance()->dataFolder.isNull());
    FileUtils().saveControlConfig();
    QCOMPARE(savedFile(), file);
}

void tst_FileUtils::unnamedRowInStateOne_data()
{
    QTest::addColumn<QByteArray>("text4");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("text2");
    QTest::newRow("empty, 1: cleared") << QByteArray("00000000") << 1 << "";
    QTest::newRow("null, 1: cleared") << QByteArray("ffffffff") << 1 << "";
    QTest::newRow("empty, 2: kept") << QByteArray("00000000") << 2 << "t2-1";
    QTest::newRow("a blank, 1: kept") << QByteArray("00000002 0020") << 1 << "t2-1";
}

void tst_FileUtils::unnamedRowInStateOne()
{
    QFETCH(QByteArray, text4);
    QFETCH(int, state);
    QByteArray row = SavedSample().controlRow(1);
    row.replace(PlainBytes().text(QStringLiteral("t4-1")).bytes, QByteArray::fromHex(text4));
    row.replace(row.size() - 4, 4, PlainBytes().i32(state).bytes);
    QByteArray file = SavedSample().file();
    file.replace(SavedSample().controlRow(1), row);
    QVERIFY(load(file));
    const ControlRow &read = *QGlobal::instance()->controlRows.at(0);
    QTEST(read.text2, "text2");
    QCOMPARE(read.items.isEmpty(), read.text2.isEmpty());
    QCOMPARE(read.state, read.text2.isEmpty() ? 0 : state);
    QCOMPARE(read.index, 1);
    QCOMPARE(read.name, QStringLiteral("名1"));
}

void tst_FileUtils::cutAnywhere()
{
    const QByteArray file = SavedSample().file();
    const int head = SavedSample().head().size();
    for (int length = 0; length < file.size(); ++length) {
        SavedBlock block;
        const BlockState expected = length < head ? BlockState::Unusable : BlockState::Usable;
        QVERIFY2(read(file.left(length), block) == expected, qPrintable(QString::number(length)));
        QVERIFY(block.keyRows.isEmpty());
    }
    SavedBlock block;
    QCOMPARE(read(file, block), BlockState::Whole);
    QCOMPARE(block.keyRows.size(), 2);
    SavedBlock longer;
    QCOMPARE(read(file + '\0', longer), BlockState::Usable);
    QCOMPARE(longer.keyRows.size(), 2);
    // Rows without texts take the fewest bytes.
    SavedBlock bare;
    QCOMPARE(read(SavedSample().head() + count(2) + QByteArray(48, '\0'), bare), BlockState::Whole);
    QCOMPARE(bare.keyRows.size(), 2);
}

void tst_FileUtils::corruptCounts_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("isUsable");
    const int rows = SavedSample().settings().size();
    const int items = rows + 4 + SavedSample().controlRow(1).indexOf(count(2) + count(4));
    const int keys = SavedSample().head().size();
    const QByteArray most("\xff\xff\xff\xff", 4);
    QTest::newRow("control rows without end") << rows << most << false;
    QTest::newRow("a row more than there are") << rows << count(17) << false;
    QTest::newRow("fewer rows") << rows << count(15) << false;
    QTest::newRow("items without end") << items << most << false;
    QTest::newRow("items over the next fields") << items << count(3) << false;
    QTest::newRow("key rows without end") << keys << most << true;
    QTest::newRow("a key row more") << keys << count(3) << true;
    QTest::newRow("text of odd length in a row") << rows + 8 << count(3) << false;
    QTest::newRow("text without end in a row")
        << rows + 8 << QByteArray("\xff\xff\xff\xfe") << false;
    QTest::newRow("text of odd length in a key") << keys + 8 << count(5) << true;
}

void tst_FileUtils::corruptCounts()
{
    QFETCH(int, offset);
    QFETCH(QByteArray, bytes);
    QFETCH(bool, isUsable);
    SavedBlock block;
    const QByteArray file = SavedSample().file().replace(offset, bytes.size(), bytes);
    QCOMPARE(read(file, block), isUsable ? BlockState::Usable : BlockState::Unusable);
    QVERIFY(block.keyRows.isEmpty() || !isUsable);
}

/// A text of odd length of which no byte is read: all that follows is in step, the list of items
/// too, and the row is damaged all the same.
void tst_FileUtils::damagedTextInStep()
{
    QByteArray file = SavedSample().file();
    file.replace(SavedSample().settings().size() + 8, 8, count(1));
    SavedBlock block;
    QCOMPARE(read(file, block), BlockState::Unusable);
}

void tst_FileUtils::failedLoadChangesNothing()
{
    QGlobal *global = QGlobal::instance();
    global->languageChinese = true;
    global->dataFolder = QStringLiteral("here");
    QVERIFY(!load(SavedSample().head().chopped(1)));
    QVERIFY(global->languageChinese);
    QCOMPARE(global->dataFolder, QStringLiteral("here"));
    QVERIFY(global->controlRows.isEmpty());
}

void tst_FileUtils::fileThatCannotBeOpened()
{
    QVERIFY(QDir().mkpath(savedFilePath()));
    QVERIFY(!FileUtils().loadControlConfig());
    FileUtils().saveControlConfig();
    QVERIFY(QDir().rmdir(savedFilePath()));
}

NACELLE_TEST_MAIN(tst_FileUtils)
#include "tst_FileUtils.moc"
