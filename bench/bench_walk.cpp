// One step through a history of 1,000,000 frames, from the press to the painted form, beside the
// same step in one of 1,000. Where the log has lost a group's text the step leaves all as it is.
// Wants a real or virtual X server. Usage: bench_walk [FRAMES]

#include "bench/lastpaint.h"
#include "shell/NacelleBench.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QPushButton>

#include <cstdio>

namespace {

constexpr int kRounds = 15;
constexpr int kFewFrames = 1000;
constexpr int kLinesOfGroup = 4;
constexpr double kLimit = 1.25;
constexpr double kLimitMs = 10;

/// Where a step begins, counted in groups from the newest: `shown` is on the screen, and the step
/// goes to the group after `from`.
struct Place
{
    int shown;
    int from;
};

class Walk
{
public:
    explicit Walk(int frames)
    {
        m_window.resize(1920, 1080);
        m_window.show();
        press("pushButton_2");
        for (int group = 0; 2 * group < frames; ++group)
            addGroup(group);
        press("pushButton_Switch");
        m_withText =
            m_window.findChild<QPlainTextEdit *>(QStringLiteral("textEdit"))->blockCount() /
            kLinesOfGroup;
    }

    int groups() const { return m_window.sentFrames.size(); }
    /// Groups whose text the log still has.
    int withText() const { return m_withText; }

    double step(Place place, bool mustPaint)
    {
        m_window.historyIndex = place.shown + 1;
        press("pushButton_next");
        m_window.historyIndex = place.from;
        return paintedAfter(
            m_window, [this] { press("pushButton_up"); }, mustPaint);
    }

private:
    /// Frames that differ from those before them in nearly all fields.
    void addGroup(int group)
    {
        const char other = char(1 + group % 100);
        m_window.sendData(QByteArray::fromHex("A8E5480001") + QByteArray(64, other) +
                          QByteArray::fromHex("001234"));
        m_window.receiveData(QByteArray::fromHex("8A5E49000111") + QByteArray(63, other) +
                                 QByteArray::fromHex("20001234"),
                             QString());
        if (group % 100 == 0)
            QCoreApplication::processEvents();
    }

    void press(const char *button)
    {
        m_window.findChild<QPushButton *>(QLatin1String(button))->click();
    }

    NacelleBench m_window;
    int m_withText = 0;
};

void report(const char *name, Walk &many, Place place, Walk &few, Place fewPlace)
{
    std::vector<double> times, baseline;
    for (int round = 0; round < kRounds; ++round) {
        times.push_back(many.step(place, place.from < many.withText()));
        baseline.push_back(few.step(fewPlace, true));
    }
    const double own = median(times);
    const double ratio = own / median(baseline);
    std::printf("%-34s %5.2f ms (limit %.0f), of %d frames %5.2f ms   %.2f x (limit %.2f)%s\n",
                name, own, kLimitMs, kFewFrames, median(baseline), ratio, kLimit,
                ratio > kLimit || own > kLimitMs ? " OVER" : "");
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setCursorFlashTime(0); // nothing shall be painted but what was asked for
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    Walk few(kFewFrames);
    Walk many(argc > 1 ? QByteArray(argv[1]).toInt() : 1000000);
    const int middle = many.groups() / 2;
    const int oldest = many.groups() - 1;
    const auto shown = [](const Walk &walk, int quarters) {
        const int group = (walk.withText() - 3) * quarters / 4;
        return Place{group, group};
    };
    report("newest", many, shown(many, 0), few, shown(few, 0));
    report("middle of what the log holds", many, shown(many, 2), few, shown(few, 2));
    report("oldest that the log holds", many, shown(many, 4), few, shown(few, 4));
    report("middle, its text gone", many, {0, middle}, few, shown(few, 2));
    report("past the oldest, to the newest", many, {many.withText() / 2, oldest}, few,
           {few.withText() / 2, few.groups() - 1});
}
