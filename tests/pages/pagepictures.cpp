// Takes a picture of the screen with each page, panel, menu and window of the program. A version of
// the program is built with it from outside, so that two of them are seen through the same eyes:
// it knows of the program what stays, which is its main window and the names of its objects.
// Usage: pagepictures zh|en FOLDER

#include "foundation/QGlobal.h"
#include "shell/NacelleBench.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QCursor>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QTest>

#include <cstdio>
#include <memory>
#include <sys/time.h>

/// The log's clock stands still. Nothing but times of the day comes from here: timers have another.
extern "C" int gettimeofday(timeval *time, void *) noexcept
{
    *time = {1700000000, 123000};
    return 0;
}

namespace {

constexpr int kStillMs = 120;
constexpr int kPatienceMs = 5000;

QByteArray hostFrame(int number)
{
    return QByteArray::fromHex("A8E54B0001") + QByteArray(64, char(number)) +
           QByteArray::fromHex("25011900 5678");
}

QByteArray gcuFrame(int mode, int number)
{
    return QByteArray::fromHex("8A5E490001") + char(mode) + QByteArray(63, char(number)) +
           QByteArray::fromHex("20001234");
}

/// What a version doesn't have.
struct Missing
{
    const char *name;
};

class Operator
{
public:
    Operator(bool chinese, const QString &folder) : m_folder(folder)
    {
        QGlobal::instance()->languageChinese = chinese;
        m_window = std::make_unique<NacelleBench>();
        m_window->show();
        QCursor::setPos(QGuiApplication::primaryScreen()->geometry().bottomRight());
        if (!QTest::qWaitForWindowExposed(m_window.get()))
            qFatal("the window doesn't show");
    }

    void press(const char *button) { find<QPushButton>(m_window.get(), button)->click(); }
    void choose(const char *list, const char *entry)
    {
        auto *box = find<QComboBox>(m_window.get(), list);
        if (box->findText(QLatin1String(entry)) < 0)
            box->addItem(QLatin1String(entry));
        box->setCurrentText(QLatin1String(entry));
    }
    void type(const char *field, const char *text)
    {
        find<QLineEdit>(m_window.get(), field)->setText(QLatin1String(text));
    }
    void send(int number) { m_window->sendData(hostFrame(number)); }
    void receive(int mode, int number) { m_window->receiveData(gcuFrame(mode, number), QString()); }

    void openMenu(QMenu *menu, int place)
    {
        auto *button = find<QPushButton>(m_window.get(), "menuButton");
        const QPoint corner = button->mapToGlobal(QPoint(0, button->height()));
        menu->popup(corner - QPoint(200 * place, 0));
    }
    QMenu *menu()
    {
        QMenu *menu = find<QPushButton>(m_window.get(), "menuButton")->menu();
        if (!menu)
            throw Missing{"menu"};
        return menu;
    }
    QMenu *languages() { return menu()->actions().first()->menu(); }

    void switchLanguage()
    {
        const QList<QAction *> choices = languages()->actions();
        (QGlobal::instance()->languageChinese ? choices.last() : choices.first())->trigger();
    }

    void closeOthers()
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (widget != m_window.get() && widget->isVisible())
                widget->close();
        }
    }

    void take(const char *name)
    {
        const QString path = m_folder + QLatin1Char('/') + QLatin1String(name) + ".png";
        if (!stillScreen().save(path))
            qFatal("cannot write %s", qPrintable(path));
    }

private:
    template <typename T>
    static T *find(QWidget *window, const char *name)
    {
        T *found = window->findChild<T *>(QLatin1String(name));
        if (!found)
            throw Missing{name};
        return found;
    }

    static QImage screen() { return QGuiApplication::primaryScreen()->grabWindow(0).toImage(); }

    /// Two looks that show the same.
    static QImage stillScreen()
    {
        QElapsedTimer patience;
        patience.start();
        QTest::qWait(kStillMs);
        for (QImage last = screen();;) {
            QTest::qWait(kStillMs);
            QImage now = screen();
            if (now == last)
                return now;
            if (patience.elapsed() > kPatienceMs)
                qFatal("the screen doesn't stand still");
            last = now;
        }
    }

    QString m_folder;
    std::unique_ptr<NacelleBench> m_window;
};

struct Step
{
    const char *name;
    void (*run)(Operator &by);
};

/// Each begins where the one before has ended, with the main window alone.
const Step kSteps[] = {
    {"workbench", [](Operator &) {}},
    {"panel-tcp", [](Operator &by) { by.choose("comboBox", "TCP Client"); }},
    {"panel-serial", [](Operator &by) { by.choose("comboBox", "ttyUSB0"); }},
    {"message",
     [](Operator &by) {
         by.choose("comboBox", "UDP");
         by.type("LineEdit_RemoteIp", "192.168.144.256");
         by.press("pushButton_Conn");
     }},
    {"workbench-composed",
     [](Operator &by) {
         by.type("lineEdit213", "116.3912757");
         by.press("pushButton_Create");
         by.press("pushButton_Send");
     }},
    {"workbench-answered", [](Operator &by) { by.receive(0x12, 7); }},
    {"workbench-other-language", [](Operator &by) { by.switchLanguage(); }},
    {"workbench-first-language", [](Operator &by) { by.switchLanguage(); }},
    {"commands", [](Operator &by) { by.press("pushButton_Cmd"); }},
    {"menu", [](Operator &by) { by.openMenu(by.menu(), 1); }},
    {"menu-languages", [](Operator &by) { by.openMenu(by.languages(), 2); }},
    {"about", [](Operator &by) { by.menu()->actions().last()->trigger(); }},
    {"console", [](Operator &by) { by.press("pushButton_2"); }},
    {"console-rates", [](Operator &by) { by.receive(0x12, 1); }},
    {"console-angles", [](Operator &by) { by.receive(0x14, 2); }},
    {"console-other-language", [](Operator &by) { by.switchLanguage(); }},
    {"console-first-language", [](Operator &by) { by.switchLanguage(); }},
    {"video", [](Operator &by) { by.press("pushButton_video"); }},
    {"history",
     [](Operator &by) {
         for (int i = 1; i <= 60; ++i) {
             by.send(i);
             by.receive(0x11, i);
         }
         by.press("pushButton_Switch");
     }},
    {"history-older", [](Operator &by) { by.press("pushButton_up"); }},
    {"history-oldest",
     [](Operator &by) {
         by.press("pushButton_next");
         for (int i = 1; i < 60; ++i)
             by.press("pushButton_up");
     }},
    {"history-left", [](Operator &by) { by.press("pushButton_Switch"); }},
    {"log-cleared", [](Operator &by) { by.press("pushButton_Clear"); }},
    {"workbench-again", [](Operator &by) { by.press("pushButton_1"); }},
};

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setCursorFlashTime(0);
    if (argc != 3) {
        std::fprintf(stderr, "usage: pagepictures zh|en FOLDER\n");
        return 2;
    }
    Operator by(qstrcmp(argv[1], "zh") == 0, QString::fromLocal8Bit(argv[2]));
    for (const Step &step : kSteps) {
        try {
            step.run(by);
            by.take(step.name);
        } catch (const Missing &missing) {
            std::printf("%s: there is no %s\n", step.name, missing.name);
        }
        by.closeOthers();
    }
    std::fflush(stdout);
    _Exit(0); // links and players of the program live to the end of the process
}
