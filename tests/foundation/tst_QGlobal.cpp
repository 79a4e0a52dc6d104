#include "foundation/QGlobal.h"
#include "foundation/stylesheets.h"
#include "foundation/textfiles.h"
#include "tests/support/strictmain.h"

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <memory>

namespace {

using Files = QMap<QString, QByteArray>;

/// The one instance reads files once; what it had from others goes first.
void readAnew(const QString &folder)
{
    QGlobal *global = QGlobal::instance();
    delete global->keyboardMap;
    delete global->modelMap;
    qDeleteAll(QList{global->palette, global->chineseTexts, global->englishTexts});
    readTextFilesFrom(folder, *global);
}

} // namespace

class tst_QGlobal : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void defaultsWithoutFiles();
    void config_data();
    void config();
    void maps();
    void lineForms_data();
    void lineForms();
    void languageFileIsLimited();
    void languageFileCutInACharacter();
    void junk();
    void styleSheetsTakeTheirColours();
    void shippedFilesHaveEveryKey();

private:
    void load(const Files &files);

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_QGlobal::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QGlobal::instance()->languageChinese = true;
}

void tst_QGlobal::cleanup()
{
    readAnew(QCoreApplication::applicationDirPath());
}

/// Lays files into an empty folder and reads them into the one instance.
void tst_QGlobal::load(const Files &files)
{
    for (auto file = files.begin(); file != files.end(); ++file) {
        QFile out(m_folder->filePath(file.key()));
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(file.value());
    }
    QGlobal *global = QGlobal::instance();
    global->configValue1 = 500;
    global->configValue2 = 120;
    readAnew(m_folder->path());
}

void tst_QGlobal::defaultsWithoutFiles()
{
    load({});
    const QGlobal *global = QGlobal::instance();
    QCOMPARE(global->configValue1, 500);
    QCOMPARE(global->configValue2, 120);
    QVERIFY(global->keyboardMap->isEmpty() && global->palette->isEmpty() &&
            global->modelMap->isEmpty() && global->chineseTexts->isEmpty() &&
            global->englishTexts->isEmpty());
    QCOMPARE(global->translate(QStringLiteral("发送")), QStringLiteral("发送"));
    QCOMPARE(global->firstLanguageText(QStringLiteral("版本1")), QString());

    QCOMPARE(global->controlRows.size(), 16);
    QCOMPARE(global->controlRows.at(15)->name, QStringLiteral("#16"));
    QVERIFY(!global->controlRows.at(0)->text2.isNull());
    QCOMPARE(global->keyRows.size(), 20);
    QCOMPARE(global->keyRows.at(1)->keyCode, 0x51);
    QCOMPARE(global->keyRows.at(19)->name, QStringLiteral("退出跟踪"));
    QCOMPARE(global->dataFolder, QStringLiteral("/LocalData/"));
}

void tst_QGlobal::config_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("value1");
    QTest::addColumn<int>("value2");
    QTest::newRow("divided by ten") << QByteArray("x:1000\ny:200\n") << 100 << 20;
    QTest::newRow("raised to ten") << QByteArray("x:45\ny:-5") << 10 << 10;
    QTest::newRow("no number") << QByteArray("x:many\ny:") << 10 << 10;
    QTest::newRow("wrong form keeps the default") << QByteArray("x\ny:1:2\nz:900") << 500 << 120;
    QTest::newRow("only two lines count") << QByteArray("\n\nx:900\n") << 500 << 120;
    QTest::newRow("CRLF") << QByteArray("x:1000\r\ny:2000\r\n") << 100 << 200;
}

void tst_QGlobal::config()
{
    QFETCH(QByteArray, text);
    load({{"Config.ini", text}});
    QTEST(QGlobal::instance()->configValue1, "value1");
    QTEST(QGlobal::instance()->configValue2, "value2");
}

void tst_QGlobal::maps()
{
    load({{"KeyboardMap.ini", "Q,81\nW,no\nE,1,2\nQ,82\n"},
          {"UIColorMap.ini", "main:#202835\nbright: #FFFFFF\n\nbad\nrgb:a:b\n"},
          {"ModelMap.ini", "a:1,2,3\nb:\nc:4,x\nd\n"}});
    const QGlobal *global = QGlobal::instance();
    QCOMPARE(*global->keyboardMap, (QMap<QString, int>{{"Q", 82}, {"W", 0}}));
    QCOMPARE(*global->palette,
             (QMap<QString, QString>{{"main", "#202835"}, {"bright", " #FFFFFF"}}));
    QCOMPARE(*global->modelMap,
             (QMap<QString, QList<int>>{{"a", {1, 2, 3}}, {"b", {0}}, {"c", {4, 0}}}));
}

void tst_QGlobal::lineForms_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("plain") << QByteArray("发送:发:Send\n接收:收:Receive\n");
    QTest::newRow("CRLF") << QByteArray("发送:发:Send\r\n接收:收:Receive\r\n");
    QTest::newRow("no last line end") << QByteArray("接收:收:Receive\n发送:发:Send");
    QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF发送:发:Send\n接收:收:Receive\n");
    QTest::newRow("blank and wrong lines")
        << QByteArray("\na:b\n\n发送:x:y\n发送:发:Send\na:b:c:d\n接收:收:Receive\n");
}

void tst_QGlobal::lineForms()
{
    QFETCH(QByteArray, file);
    load({{"LanguageMap.ini", file}});
    QGlobal *global = QGlobal::instance();
    QCOMPARE(global->chineseTexts->size(), 2);
    QCOMPARE(global->translate(QStringLiteral("发送")), QStringLiteral("发"));
    QCOMPARE(global->firstLanguageText(QStringLiteral("接收")), QStringLiteral("收"));
    QCOMPARE(global->translate(QStringLiteral("a")), QStringLiteral("a"));
    global->languageChinese = false;
    QCOMPARE(global->translate(QStringLiteral("发送")), QStringLiteral("Send"));
    QCOMPARE(global->firstLanguageText(QStringLiteral("接收")), QStringLiteral("收"));
    QCOMPARE(global->translate(QStringLiteral("缺")), QStringLiteral("缺"));
}

void tst_QGlobal::languageFileIsLimited()
{
    QByteArray file;
    for (int i = 0; i < 1000; ++i)
        file += QByteArray::number(10000 + i) + ":abcdefg:hijklm\n"; // 21 bytes each
    // What the reader's buffer of 16384 bytes doesn't hold is lost: 780 lines fit.
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("device not open"));
    load({{"LanguageMap.ini", file}});
    const auto *texts = QGlobal::instance()->englishTexts;
    QCOMPARE(texts->value(QStringLiteral("10779")), QStringLiteral("hijklm"));
    QVERIFY(!texts->contains(QStringLiteral("10780")));
}

void tst_QGlobal::languageFileCutInACharacter()
{
    QByteArray file;
    while (file.size() < 16000)
        file += "k" + QByteArray::number(file.size()) + ":v:w\n";
    file += "last:v:" + QByteArray("中").repeated(200) + "\n";
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("device not open"));
    load({{"LanguageMap.ini", file}});
    const QString last = QGlobal::instance()->englishTexts->value(QStringLiteral("last"));
    QVERIFY(!last.isEmpty());
    QCOMPARE(last, QString(last.size(), QChar(0x4E2D)));
}

void tst_QGlobal::junk()
{
    QByteArray bytes;
    for (int i = 0; i < 3000; ++i)
        bytes += char((i * 131 + i / 7) & 0xFF);
    bytes += "\nmain:#101010\n";
    load({{"Config.ini", bytes},
          {"KeyboardMap.ini", bytes},
          {"UIColorMap.ini", bytes},
          {"ModelMap.ini", bytes},
          {"LanguageMap.ini", bytes + "a:b:c\n"}});
    QCOMPARE(QGlobal::instance()->palette->value(QStringLiteral("main")),
             QStringLiteral("#101010"));
    QCOMPARE(QGlobal::instance()->chineseTexts->value(QStringLiteral("a")), QStringLiteral("b"));
}

void tst_QGlobal::styleSheetsTakeTheirColours()
{
    const auto sheets = buildStyleSheets({{"control", "#111111"}, {"dark", "#222222"}}, 1.5);
    QCOMPARE(sheets.size(), 8);
    QCOMPARE(sheets.value(QStringLiteral("sbus")),
             QStringLiteral("QLabel{background-color:#00000000; color:#222222;font:18px}"));
    QCOMPARE(sheets.value(QStringLiteral("button")),
             QStringLiteral("QPushButton{background-color:#111111; border-radius:4px; color:; "
                            "font:21px;}QPushButton:pressed{ border:2px solid  "
                            "rgba(17,159,236,255);}"));
    // A form's own; what the palette lacks, and what is none of its colours, stays.
    QCOMPARE(
        formSheet("Q{a:#FFFFFF;b:#202835;c:#99FFFFFF}", {{"main", "red"}}, 2).section('\n', -1),
        QString("Q{a:#FFFFFF;b:red;c:#99FFFFFF}"));
    QVERIFY(formSheet("", {{"hover", "red"}}, 2).startsWith("QWidget{font-size:24px;}"));
}

/// Walks every text literal of the sources that is looked up against the language file.
void tst_QGlobal::shippedFilesHaveEveryKey()
{
    const QGlobal *global = QGlobal::instance();
    for (const char *key :
         {"main", "control", "monitor", "bright", "hover", "player", "alternation", "dark"})
        QVERIFY2(!global->palette->value(QLatin1String(key)).isEmpty(), key);

    QFile file(QCoreApplication::applicationDirPath() + QStringLiteral("/LanguageMap.ini"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.size() < 16384);
    QVERIFY(global->firstLanguageText(QStringLiteral("版本1")).contains(QLatin1Char('1')));

    const QRegularExpression literal(
        QStringLiteral("\"([^\"\\n]*[\\x{4E00}-\\x{9FFF}][^\"\\n]*)\""));
    int keys = 0;
    for (const char *folder : {"foundation", "protocol", "shell", "console", "video"}) {
        QDirIterator sources(QStringLiteral(NACELLE_SOURCE_DIR "/") + QLatin1String(folder),
                             {"*.cpp", "*.h"}, QDir::Files);
        while (sources.hasNext()) {
            QFile source(sources.next());
            // The default key rows are data of the saved file, never looked up.
            if (source.fileName().endsWith(QLatin1String("/QGlobal.cpp")))
                continue;
            QVERIFY(source.open(QIODevice::ReadOnly));
            auto matches = literal.globalMatch(QString::fromUtf8(source.readAll()));
            while (matches.hasNext()) {
                const QString key = matches.next().captured(1);
                // A language is called by its own name, a document has the name of its file.
                if (key == QStringLiteral("简体中文") || key.endsWith(QStringLiteral(".pdf")))
                    continue;
                ++keys;
                QVERIFY2(global->englishTexts->contains(key),
                         qPrintable(source.fileName() + QStringLiteral(": ") + key));
                QVERIFY2(global->chineseTexts->contains(key), qPrintable(key));
            }
        }
    }
    QVERIFY(keys > 100);
}

NACELLE_TEST_MAIN(tst_QGlobal)
#include "tst_QGlobal.moc"
