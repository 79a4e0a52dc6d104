// From the press of a top button to its page on the screen, and from the choice of a language to
// all texts, beside plain widgets of the same kinds at the same places: made anew at each press, as
// the pages are, and given the texts of the other language. Wants a real or virtual X server.

#include "bench/lastpaint.h"
#include "bench/plainform.h"
#include "shell/NacelleBench.h"

#include <QApplication>
#include <QMenu>
#include <QPushButton>

#include <cstdio>
#include <functional>

namespace {

constexpr int kRounds = 15;
constexpr int kLayoutMs = 300;
constexpr double kLimit = 1.25;
constexpr double kSwitchLimitMs = 60;

using Step = std::function<void()>;

struct Row
{
    const char *name;
    double limitMs; ///< 0 for none
    Step own;
    Step plain;
    std::vector<double> times = {};
    std::vector<double> plainTimes = {};
};

void report(const Row &row)
{
    const double own = median(row.times);
    const double ratio = own / median(row.plainTimes);
    const bool isOver = ratio > kLimit || (row.limitMs > 0 && own > row.limitMs);
    std::printf("%-22s %6.1f ms, plain form %5.1f ms   %.2f x (limit %.2f%s)%s\n", row.name, own,
                median(row.plainTimes), ratio, kLimit, row.limitMs > 0 ? ", 60 ms" : "",
                isOver ? " OVER" : "");
}

/// The rows one after the other in each round, so that each begins where the one before has ended.
/// A first round, which fills the caches of both, doesn't count.
void run(std::vector<Row> rows, QWidget &window, QWidget &plain)
{
    for (int round = 0; round <= kRounds; ++round) {
        for (Row &row : rows) {
            const double own = paintedAfter(window, row.own);
            const double baseline = paintedAfter(plain, row.plain);
            if (round == 0)
                continue;
            row.times.push_back(own);
            row.plainTimes.push_back(baseline);
        }
    }
    for (const Row &row : rows)
        report(row);
}

class PlainWindow : public QMainWindow
{
public:
    explicit PlainWindow(QSize size)
    {
        setCentralWidget(new QWidget);
        resize(size);
        show();
    }

    /// Puts a new form in the place of the old one.
    void showForm(const PlainForm &form, QRect place)
    {
        if (!m_widgets.empty()) {
            m_widgets.front()->hide();
            m_widgets.front()->deleteLater();
        }
        m_widgets = form.make(centralWidget());
        m_widgets.front()->setGeometry(place);
        m_widgets.front()->show();
    }

    void setTexts(const PlainForm &form) { form.setTexts(m_widgets); }

private:
    PlainForm::Widgets m_widgets;
};

class Pages
{
public:
    Pages()
    {
        window.resize(1920, 1080);
        window.show();
        chooseLanguage(true); // whatever the saved file says
        turnEventLoop(kLayoutMs);
    }

    template <typename T>
    T *find(const char *name)
    {
        return window.findChild<T *>(QLatin1String(name));
    }

    void choosePage(const char *button) { find<QPushButton>(button)->click(); }

    void chooseLanguage(bool chinese)
    {
        QMenu *languages = find<QPushButton>("menuButton")->menu()->actions().first()->menu();
        (chinese ? languages->actions().first() : languages->actions().last())->trigger();
    }

    /// A plain form like a part of the window, which is laid out before.
    PlainForm plainLike(const char *part)
    {
        turnEventLoop(kLayoutMs);
        return PlainForm(find<QWidget>(part));
    }

    NacelleBench window;
};

void runPages(Pages &pages, PlainWindow &plain)
{
    auto *host = pages.find<QWidget>("widget_2");
    const QRect place(host->mapTo(&pages.window, QPoint()), host->size());
    const PlainForm workbench = pages.plainLike("CurrentPage");
    pages.choosePage("pushButton_2");
    const PlainForm console = pages.plainLike("CurrentPage");
    QPushButton first, second;
    QObject::connect(&first, &QPushButton::clicked, [&] { plain.showForm(workbench, place); });
    QObject::connect(&second, &QPushButton::clicked, [&] { plain.showForm(console, place); });
    run({{"workbench", 0, [&] { pages.choosePage("pushButton_1"); }, [&] { first.click(); }},
         {"console", 0, [&] { pages.choosePage("pushButton_2"); }, [&] { second.click(); }}},
        pages.window, plain);
}

/// Begins and ends in Chinese.
void runLanguages(const char *toEnglish, const char *toChinese, Pages &pages, PlainWindow &plain)
{
    const PlainForm chinese = pages.plainLike("centralWidget");
    pages.chooseLanguage(false);
    const PlainForm english = pages.plainLike("centralWidget");
    pages.chooseLanguage(true);
    plain.showForm(chinese, pages.window.centralWidget()->geometry());
    run({{toEnglish, kSwitchLimitMs, [&] { pages.chooseLanguage(false); },
          [&] { plain.setTexts(english); }},
         {toChinese, kSwitchLimitMs, [&] { pages.chooseLanguage(true); },
          [&] { plain.setTexts(chinese); }}},
        pages.window, plain);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setCursorFlashTime(0); // nothing shall be painted but what was asked for
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    Pages pages;
    PlainWindow plain(pages.window.size());
    runPages(pages, plain);
    runLanguages("console to English", "console to Chinese", pages, plain);
    pages.choosePage("pushButton_1");
    runLanguages("workbench to English", "workbench to Chinese", pages, plain);
}
