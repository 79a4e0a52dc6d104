#include "console/flowAnalysis.h"
#include "foundation/About.h"
#include "foundation/QGlobal.h"
#include "protocol/dataPacketAnalysis.h"
#include "tests/support/strictmain.h"
#include "tests/support/videobench.h"

#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QTextEdit>
#include <QUrl>

namespace {

QString beside(const QString &file)
{
    return QCoreApplication::applicationDirPath() + '/' + file;
}

QString savedFile()
{
    return beside("controlConfig.ncl");
}

/// Byte of the saved file that holds the language, 1 for Chinese; -1 without a file.
int savedLanguage()
{
    QFile file(savedFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll().at(19) : -1;
}

void clickIn(QMenu *menu, QAction *action)
{
    menu->popup(QPoint(0, 0));
    QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(action).center());
}

QStringList titles(const QMenu *menu)
{
    QStringList list;
    for (const QAction *action : menu->actions())
        list << (action->isSeparator() ? QString("-") : action->text());
    return list;
}

/// What can be read or heard on a window, one text a widget; of a selection all its items.
QStringList textsOf(const QWidget *window)
{
    QStringList texts{window->windowTitle()};
    for (const QWidget *widget : window->findChildren<QWidget *>()) {
        texts << widget->accessibleName();
        if (qobject_cast<const QLabel *>(widget) || qobject_cast<const QAbstractButton *>(widget))
            texts << widget->property("text").toString();
        if (const auto *box = qobject_cast<const QComboBox *>(widget)) {
            for (int i = 0; i < box->count(); ++i)
                texts << box->itemText(i);
        }
    }
    return texts;
}

QStringList chineseOf(const QStringList &texts)
{
    return texts.filter(QRegularExpression("[\\x{4e00}-\\x{9fff}～]"));
}

} // namespace

class tst_settingsMenu : public QObject
{
    Q_OBJECT

public slots:
    void takeUrl(const QUrl &url) { m_opened << url.fileName(); }

private slots:
    void init();
    void cleanup();
    void entries();
    void documents();
    void about();
    void everyTextChanges_data();
    void everyTextChanges();
    void whatWasTypedStays();
    void formsOfTheWorkbenchStay();
    void duringARun();
    void folderThatCannotBeWritten();
    void otherColours();

private:
    QMenu *menu() { return m_bench->find<QPushButton>("menuButton")->menu(); }
    QMenu *languageMenu() { return menu()->actions().first()->menu(); }
    void chooseChinese() { clickIn(languageMenu(), languageMenu()->actions().first()); }
    void chooseEnglish() { clickIn(languageMenu(), languageMenu()->actions().last()); }

    std::unique_ptr<Bench> m_bench;
    QStringList m_opened;
};

void tst_settingsMenu::init()
{
    QFile::remove(savedFile());
    m_bench = std::make_unique<Bench>();
}

void tst_settingsMenu::cleanup()
{
    m_bench.reset();
    QGlobal::instance()->languageChinese = true;
}

void tst_settingsMenu::entries()
{
    const QStringList language{"简体中文", "-", "English"};
    QCOMPARE(titles(menu()), QStringList({"语言", "-", "-", "帮助", "-", "协议", "-", "关于"}));
    QCOMPARE(titles(languageMenu()), language);
    chooseEnglish();
    QCOMPARE(titles(menu()),
             QStringList({"Language", "-", "-", "Help", "-", "Protocol", "-", "About"}));
    QCOMPARE(titles(languageMenu()), language);

    const QString version = QGlobal::instance()->chineseTexts->take("版本1");
    m_bench = std::make_unique<Bench>();
    QCOMPARE(titles(menu()), QStringList({"Language", "-", "-", "Help", "-", "Protocol"}));
    QGlobal::instance()->chineseTexts->insert("版本1", version);
}

void tst_settingsMenu::documents()
{
    QDesktopServices::setUrlHandler("file", this, "takeUrl");
    const QStringList names{"Help.pdf", "GCU私有通信协议.pdf", "GCUPrivateProtocol.pdf"};
    const auto openAll = [&] {
        m_opened.clear();
        clickIn(menu(), menu()->actions().at(3));
        clickIn(menu(), menu()->actions().at(5));
        chooseEnglish();
        clickIn(menu(), menu()->actions().at(5));
        chooseChinese();
    };
    for (const QString &name : names)
        QFile::remove(beside(name));
    openAll();
    QCOMPARE(m_opened, QStringList());
    for (const QString &name : names)
        QVERIFY(QFile(beside(name)).open(QIODevice::WriteOnly));
    openAll();
    QCOMPARE(m_opened, names);
    QVERIFY(Bench::takeNotices().isEmpty());
    QDesktopServices::unsetUrlHandler("file");
    for (const QString &name : names)
        QFile::remove(beside(name));
}

void tst_settingsMenu::about()
{
    clickIn(menu(), menu()->actions().last());
    QPointer<About> dialog;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (auto *found = qobject_cast<About *>(window))
            dialog = found;
    }
    QVERIFY(dialog && dialog->isVisible());
    QTest::mouseClick(dialog->findChild<QPushButton *>("pushButton_Close"), Qt::LeftButton);
    QTRY_VERIFY(!dialog);
}

void tst_settingsMenu::everyTextChanges_data()
{
    QTest::addColumn<QStringList>("way"); // buttons to the page
    QTest::newRow("workbench") << QStringList{};
    QTest::newRow("console") << QStringList{"pushButton_2"};
    QTest::newRow("history view") << QStringList{"pushButton_2", "pushButton_Switch"};
}

/// On each page, and back: nothing stays in the other language.
void tst_settingsMenu::everyTextChanges()
{
    QFETCH(QStringList, way);
    for (const QString &button : way)
        m_bench->click(qPrintable(button));
    const QStringList before = textsOf(m_bench->window());
    QVERIFY(chineseOf(before).size() > 40);
    chooseEnglish();
    QCOMPARE(chineseOf(textsOf(m_bench->window())), QStringList());
    QCOMPARE(savedLanguage(), 0);
    chooseChinese();
    QCOMPARE(textsOf(m_bench->window()), before);
    QVERIFY(QFile::remove(savedFile()));
    chooseChinese(); // saves though nothing changes
    QCOMPARE(savedLanguage(), 1);
}

void tst_settingsMenu::whatWasTypedStays()
{
    m_bench = std::make_unique<VideoBench>();
    auto *bench = static_cast<VideoBench *>(m_bench.get());
    auto *mode = bench->find<QWidget>("CurrentPage")->findChild<QComboBox *>("comboBox");
    mode->setCurrentIndex(1);
    bench->find<QLineEdit>("lineEdit_315")->setText("0A");
    bench->find<QLineEdit>("LineEdit_RemoteIp")->setText("10.1.2.3");
    bench->part<QLineEdit>("lineEdit")->setText("rtsp://10.1.2.3/pod");
    bench->click("pushButton_photo");
    bench->press("pushButton_Tracking");
    chooseEnglish();
    QCOMPARE(bench->video()->windowTitle(), QString("Video"));
    QCOMPARE(chineseOf(textsOf(bench->video())), QStringList());
    QCOMPARE(mode->currentText(), QString("Learning"));
    QCOMPARE(bench->find<QLineEdit>("lineEdit_315")->text(), QString("0A"));
    QCOMPARE(bench->find<QLineEdit>("LineEdit_RemoteIp")->text(), QString("10.1.2.3"));
    QCOMPARE(bench->part<QLineEdit>("lineEdit")->text(), QString("rtsp://10.1.2.3/pod"));
    QVERIFY(bench->find<QPushButton>("pushButton_photo")->isChecked());
    QVERIFY(bench->part("pushButton_Tracking")->isChecked());
}

/// But for what the form shows of a frame in words: those follow the language, and a command still
/// under way reads as failed from then on.
void tst_settingsMenu::formsOfTheWorkbenchStay()
{
    const auto allTexts = [&] {
        QMap<QString, QString> texts;
        for (const QLineEdit *edit : m_bench->window()->findChildren<QLineEdit *>())
            texts.insert(edit->objectName(), edit->text());
        for (const QTextEdit *edit : m_bench->window()->findChildren<QTextEdit *>())
            texts.insert(edit->objectName(), edit->toPlainText());
        return texts;
    };
    // In lock mode, photo under way.
    (*m_bench)->receiveData(QByteArray::fromHex("8A5E490001"
                                                "11" +
                                                QByteArray(63 * 2, '0') +
                                                "2002"
                                                "9FD1"),
                            "");
    m_bench->find<QLineEdit>("lineEdit63")->setText("12.5");
    m_bench->click("pushButton_Create");
    QMap<QString, QString> expected = allTexts();
    QCOMPARE(expected["lineEdit53_2"], QString("指向锁定模式"));
    const auto *feedback = m_bench->find<QLabel>("label303_2");
    QCOMPARE(feedback->text(), QString("拍照执行中"));
    chooseEnglish();
    expected["lineEdit53_2"] = "Lock";
    QCOMPARE(allTexts(), expected);
    QCOMPARE(feedback->text(), QString("Photo failed"));
}

void tst_settingsMenu::duringARun()
{
    m_bench->click("pushButton_2");
    m_bench->click("pushButton_start");
    QTRY_VERIFY((*m_bench)->sentFrames.size() > 2);
    chooseEnglish();
    QCOMPARE(m_bench->find<QPushButton>("pushButton_start")->text(), QString("Stop"));
    const int sent = (*m_bench)->sentFrames.size();
    QTRY_VERIFY((*m_bench)->sentFrames.size() > sent + 2);
    m_bench->click("pushButton_start");
}

void tst_settingsMenu::folderThatCannotBeWritten()
{
    QVERIFY(QDir().mkdir(savedFile())); // a folder in the file's place: nobody can write there
    chooseEnglish();
    QVERIFY(Bench::takeNotices().isEmpty());
    QCOMPARE(m_bench->window()->windowTitle(), translated("云台报文工作台"));
    QVERIFY(QDir().rmdir(savedFile()));
}

/// An operator's palette shows on every page, where the sheets are the program's own.
void tst_settingsMenu::otherColours()
{
    QMap<QString, QString> *palette = QGlobal::instance()->palette;
    const QMap<QString, QString> ours = *palette;
    for (QString &colour : *palette)
        colour = "#7A2E52";
    m_bench.reset();
    VideoBench bench;
    const auto pageSheet = [&] {
        return bench.find<QWidget>("CurrentPage")->parentWidget()->styleSheet();
    };
    QStringList sheets{pageSheet(), bench.find<QLabel>("label_5")->styleSheet(),
                       bench.video()->styleSheet()};
    bench.click("pushButton_1");
    sheets << pageSheet() << bench.find<QPushButton>("pushButton_1")->styleSheet();
    *palette = ours;
    for (const QString &sheet : qAsConst(sheets)) {
        QVERIFY2(sheet.contains("#7A2E52"), qPrintable(sheet));
        for (const char *kept : {"#202835", "#283142", "#323E52", "#397AF7", "#A9A9A9"})
            QVERIFY2(!sheet.contains(kept), qPrintable(sheet));
    }
}

NACELLE_TEST_MAIN(tst_settingsMenu)
#include "tst_settingsMenu.moc"
