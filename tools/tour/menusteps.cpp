#include "foundation/QGlobal.h"
#include "tools/tour/keptfile.h"
#include "tools/tour/tour.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <QWindow>

#include <exception>

namespace tour {

namespace {

const QString kTyped = QStringLiteral("57");

/// Stands for the desktop: notes the files that it is asked to open.
class Desktop : public QObject
{
    Q_OBJECT

public:
    Desktop() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QStringList opened;

public slots:
    void open(const QUrl &url) { opened << url.fileName(); }
};

void closePopups()
{
    while (QWidget *popup = QApplication::activePopupWidget())
        popup->close();
}

/// Clicks the menu button and acts while the menu is open. The click comes back only when the menu
/// is closed again, so that the act runs out of the event loop inside of it.
void inMenu(Tour &tour, const std::function<void(QMenu *)> &act)
{
    auto *button = find<QPushButton>(tour.window(), "menuButton");
    std::exception_ptr failure;
    bool isDone = false;
    const auto actNow = [&] {
        try {
            act(button->menu());
        } catch (const TourFailure &) {
            failure = std::current_exception();
        }
        isDone = true;
        closePopups();
    };
    QObject context;
    QObject::connect(button->menu(), &QMenu::aboutToShow, &context,
                     [&] { QTimer::singleShot(0, &context, actNow); });
    click(button);
    if (failure)
        std::rethrow_exception(failure);
    await(QStringLiteral("the menu opens"), [&] { return isDone; });
}

void clickEntry(QMenu *menu, const QString &text)
{
    for (QAction *action : menu->actions()) {
        if (action->text() != text)
            continue;
        moveTo(menu, menu->actionGeometry(action).center());
        clickAt(menu, menu->actionGeometry(action).center());
        return;
    }
    throw TourFailure(QStringLiteral("the menu has no entry \"%1\"").arg(text));
}

QMenu *openLanguages(QMenu *menu)
{
    clickEntry(menu, translated("语言"));
    QMenu *languages = menu->actions().first()->menu();
    await(QStringLiteral("the languages are offered"), [&] { return languages->isVisible(); });
    return languages;
}

void showMenu(Tour &tour)
{
    inMenu(tour, [&tour](QMenu *menu) {
        openLanguages(menu);
        tour.takePicture("open", Shown::Screen);
    });
}

/// The video window; null in a tour without its steps.
QWidget *openVideo()
{
    for (QWidget *window : QApplication::topLevelWidgets())
        if (window->inherits("videoFrom") && window->isVisible())
            return window;
    return nullptr;
}

void switchLanguage(Tour &tour)
{
    const bool toEnglish = QGlobal::instance()->languageChinese;
    inMenu(tour, [&](QMenu *menu) {
        clickEntry(openLanguages(menu),
                   toEnglish ? QStringLiteral("English") : QStringLiteral("简体中文"));
    });
    await(QStringLiteral("the language changes"),
          [&] { return QGlobal::instance()->languageChinese != toEnglish; });
    tour.awaitPageText("pushButton_start", translated("启动"));
    tour.awaitPanelText("pushButton_Clear", translated("清空显示区"));
    tour.awaitPageText("lineEdit_ratio", kTyped);
    if (openVideo() && openVideo()->windowTitle() != translated("视频"))
        throw TourFailure(QStringLiteral("the video window keeps the other language"));
}

void typeAndSwitch(Tour &tour)
{
    type(tour.page("lineEdit_ratio"), kTyped);
    switchLanguage(tour);
    if (openVideo())
        tour.takePicture("video", Shown::VideoWindow);
}

void showAbout(Tour &tour)
{
    if (QWidget *video = openVideo())
        video->windowHandle()->close();
    inMenu(tour, [](QMenu *menu) { clickEntry(menu, translated("关于")); });
    if (tour.dialog("About")->windowTitle() != translated("关于"))
        throw TourFailure(QStringLiteral("the dialog has another title"));
}

QString beside(const QString &name)
{
    return QCoreApplication::applicationDirPath() + QLatin1Char('/') + name;
}

/// Help and the protocol's text in the current language.
QStringList documents()
{
    return {QStringLiteral("Help.pdf"), QGlobal::instance()->languageChinese
                                            ? QStringLiteral("GCU私有通信协议.pdf")
                                            : QStringLiteral("GCUPrivateProtocol.pdf")};
}

/// Asks for both documents; returns which ones the desktop is given.
QStringList askForDocuments(Tour &tour)
{
    Desktop desktop;
    for (const char *entry : {"帮助", "协议"})
        inMenu(tour, [entry](QMenu *menu) { clickEntry(menu, translated(entry)); });
    return desktop.opened;
}

void expectNoNotice()
{
    for (const QWidget *window : QApplication::topLevelWidgets())
        if (window->inherits("PopFrame") && window->isVisible())
            throw TourFailure(QStringLiteral("a message box is open"));
}

void openDocuments(Tour &tour)
{
    clickToClose(findWidget(tour.dialog("About"), "pushButton_Close"));
    const KeptFile help(beside(documents().first()));
    const KeptFile protocol(beside(documents().last()));
    for (const QString &name : documents())
        QFile::remove(beside(name));
    if (!askForDocuments(tour).isEmpty())
        throw TourFailure(QStringLiteral("the desktop is asked for a document that isn't there"));
    for (const QString &name : documents())
        QFile(beside(name)).open(QIODevice::WriteOnly);
    if (askForDocuments(tour) != documents())
        throw TourFailure(QStringLiteral("the desktop isn't asked for the documents"));
    expectNoNotice();
}

} // namespace

QVector<Step> menuSteps()
{
    return {
        {"menu", "The menu offers languages, documents and the maker's data",
         "菜单：语言、帮助、协议、关于", showMenu},
        {"language-there", "The other language is chosen; what was typed stays",
         "切换到另一种语言，已输入的内容保留", typeAndSwitch},
        {"language-back", "And the first one again", "再切换回来", switchLanguage},
        {"about", "The maker's data", "关于", showAbout},
        {"documents", "Help and protocol go to the desktop where they are there",
         "帮助和协议交由桌面打开，文件不存在时不提示", openDocuments},
    };
}

} // namespace tour

#include "menusteps.moc"
