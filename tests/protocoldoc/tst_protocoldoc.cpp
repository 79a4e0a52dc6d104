#include "tests/support/strictmain.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

/// Runs the real program with the real explanations, or with spoilt ones.
class tst_protocoldoc : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void makesRows_data();
    void makesRows();
    void composesFrames();
    void refuses_data();
    void refuses();
    void leavesOutAPictureThatIsNotThere();
    void committedDocumentIsFresh_data();
    void committedDocumentIsFresh();

private:
    QString at(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    void lay(const char *name, const QByteArray &bytes) const
    {
        QFile file(at(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    static QByteArray contents(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// Fills `source`, with the program's word on standard error in `error`.
    int fill(const char *language, const QByteArray &source, QByteArray *error = nullptr) const
    {
        lay("source.md", source);
        QProcess process;
        process.start(QStringLiteral(PROTOCOLDOC_PATH),
                      {language, QStringLiteral(REPOSITORY "/data"), at("notes.txt"),
                       at("source.md"), at("target.md")});
        if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
            return -1;
        if (error)
            *error = process.readAllStandardError();
        return process.exitCode();
    }

    QTemporaryDir m_folder;
};

void tst_protocoldoc::init()
{
    lay("notes.txt", contents(QStringLiteral(REPOSITORY "/docs/protocol-notes.txt")));
}

void tst_protocoldoc::makesRows_data()
{
    QTest::addColumn<QByteArray>("language");
    QTest::addColumn<QByteArray>("placeholder");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *language, const char *placeholder, const char *expected) {
        QTest::addRow("%s %s", language, placeholder)
            << QByteArray(language) << QByteArray(placeholder) << QByteArray(expected);
    };
    row("en", "HOST_FIELDS",
        "| 16–17 | `carrier_yaw` | 2 | u16 | 100 | single | ° | Carrier yaw | "
        "yaw (heading) of the carrier, 0 to 360, unsigned |");
    row("zh", "HOST_FIELDS",
        "| 42～45 | `latitude` | 4 | i32 | 10⁷ | 双 | ° | 载机纬度 | 北纬为正，−90～90 |");
    row("zh", "GCU_FIELDS",
        "| 28～29 | `rate_z` | 2 | i16 | 10 | °/s | 相机Z轴绝对角速度 | 同上 |");
    row("zh", "HOST_FIELDS",
        "| 22～23 | `accel_up` | 2 | i16 | 100 | 单 | m/s² | 载机天向加速度 | 向上为正 |");
    row("en", "GCU_FIELDS",
        "| 69–S−3 | `feedback` | N | bytes |  |  | Command feedback | N ≥ 0, see \"Feedback\" |");
    row("en", "COMMANDS",
        "| `0x17` | `track` | Tracking | 11 | `01`, TT u8, X0 u16, Y0 u16, X1 u16, Y1 u16 | "
        "TT: 01 starts, 00 ends; two opposite corners of the box around the target |");
    // Shown by the name of 0x15, but listed by its own.
    row("zh", "COMMANDS",
        "| `0x16` | `stare_lock` | 凝视(地理坐标锁定) | 1 |  | 视轴锁定当前所指的地理位置 |");
    row("zh", "MODES", "| `0x13` | `look_down` | 俯拍模式 | 视轴垂直向下；工作台控制量为 0 |");
    row("en", "POINTING_CHANGES",
        "| 69–S−3 | Control command | `1A 01 88 13 88 13` | Slew to point |");
    row("en", "ANSWER_FIELDS", "| 69–S−3 | Command feedback | `20 00` | Photo succeeded |");
}

void tst_protocoldoc::makesRows()
{
    QFETCH(QByteArray, language);
    QFETCH(QByteArray, placeholder);
    QFETCH(QByteArray, expected);
    QCOMPARE(fill(language, "before\n@" + placeholder + "@\nafter\n"), 0);
    const QByteArray filled = contents(at("target.md"));
    QVERIFY2(filled.contains('\n' + expected + '\n'), filled);
    QVERIFY(filled.startsWith("before\n") && filled.endsWith("\nafter\n"));
}

void tst_protocoldoc::composesFrames()
{
    QCOMPARE(fill("zh", "@IDLE_FRAME@"), 0);
    QCOMPARE(contents(at("target.md")),
             QByteArray("```\n"
                        "A8 E5 48 00 01 00 00 00 00 00 00 01 0B FA 5E 01\n"
                        "AA 69 00 00 00 00 00 00 D2 04 0C FE 32 00 01 00\n"
                        "00 00 00 00 00 01 35 E6 5F 45 16 EE AA 16 A3 A0\n"
                        "00 00 0F B0 0C 06 15 E6 08 00 00 00 00 00 00 00\n"
                        "00 00 00 00 00 00 2B 39\n"
                        "```\n"));
}

void tst_protocoldoc::refuses_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QByteArray>("reason");
    const auto note = [](const char *name, const char *from, const char *to, const char *reason) {
        QTest::newRow(name) << QByteArray(from) << QByteArray(to) << QByteArray()
                            << QByteArray(reason);
    };
    note("missing", "command|0x26|", "# ", "no explanation: command|0x26");
    note("orphan", "mode|0x10|", "mode|0x15|甲|a\nmode|0x10|", "explains nothing: mode|0x15");
    note("twice", "mode|0x10|", "mode|0x10|甲|a\nmode|0x10|", "explained twice: mode|0x10");
    note("one language", "聚焦|focuses", "聚焦|", "not in both languages");
    QTest::newRow("unknown table") << QByteArray() << QByteArray() << QByteArray("@HOST_FIELD@")
                                   << QByteArray("no such table: @HOST_FIELD@");
}

void tst_protocoldoc::refuses()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(QByteArray, source);
    QFETCH(QByteArray, reason);
    QByteArray notes = contents(at("notes.txt"));
    if (!from.isEmpty()) {
        QVERIFY(notes.contains(from));
        lay("notes.txt", notes.replace(from, to));
    }
    QByteArray error;
    QCOMPARE(fill("en", source, &error), 1);
    QVERIFY2(error.contains(reason), error);
}

void tst_protocoldoc::leavesOutAPictureThatIsNotThere()
{
    lay("there.png", "");
    QCOMPARE(fill("en", "![a](there.png)\n![b](elsewhere.png)\n"), 0);
    QCOMPARE(contents(at("target.md")), QByteArray("![a](there.png)\n\n"));
}

void tst_protocoldoc::committedDocumentIsFresh_data()
{
    QTest::addColumn<QByteArray>("language");
    QTest::newRow("en") << QByteArray("en");
    QTest::newRow("zh") << QByteArray("zh");
}

void tst_protocoldoc::committedDocumentIsFresh()
{
    QFETCH(QByteArray, language);
    const QString docs = QStringLiteral(REPOSITORY "/docs/");
    const QString name = QStringLiteral("protocol.%1.md").arg(QLatin1String(language));
    QCOMPARE(fill(language, contents(docs + QStringLiteral("templates/") + name)), 0);
    QString filled = QString::fromUtf8(contents(at("target.md")));
    static const QRegularExpression classOfAHeading(QStringLiteral("^(#.*) \\{\\.[a-z]+\\}$"),
                                                    QRegularExpression::MultilineOption);
    filled.replace(classOfAHeading, QStringLiteral("\\1"));
    QVERIFY2(QString::fromUtf8(contents(docs + name)) == filled,
             "stale: run scripts/protocol-documents.sh");
}

NACELLE_TEST_MAIN(tst_protocoldoc)
#include "tst_protocoldoc.moc"
