// The window's console and podsim over each link, with each of podsim's faults in turn, for as long
// as is asked for: counts the frames of both sides and watches what the process holds.
// Usage: soak [--minutes N] [--out FOLDER]. Ends with 1 if something grew without bound or frames
// were lost that the faults didn't take.

#include "bench/soak/picture.h"
#include "bench/soak/report.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kSampleMs = 1000;
constexpr int kLongestStageMs = 20000;
constexpr int kStages = int(kLinkCount) * int(kFaultCount);

bool writeFile(const QString &path, const QString &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) >= 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({QStringLiteral("minutes"), QStringLiteral("Length of the run: 10."),
                      QStringLiteral("N"), QStringLiteral("10")});
    parser.addOption({QStringLiteral("out"), QStringLiteral("Folder of soak.svg and soak.md: ."),
                      QStringLiteral("folder"), QStringLiteral(".")});
    parser.process(application);
    const QString out = parser.value(QStringLiteral("out"));
    if (!QDir().mkpath(out))
        qFatal("cannot make the folder %s", qPrintable(out));
    const int total = int(parser.value(QStringLiteral("minutes")).toDouble() * 60000);
    const int rounds = std::max(1, total / (kStages * kLongestStageMs));
    const QTemporaryDir folder;

    Operator console;
    Results results;
    std::vector<Sample> samples;
    Link link = kTcp;
    QElapsedTimer clock;
    clock.start();
    QTimer sampler;
    QObject::connect(&sampler, &QTimer::timeout,
                     [&] { samples.push_back(takeSample(double(clock.elapsed()) / 60000, link)); });
    sampler.start(kSampleMs);
    for (int i = 0; i < rounds * kStages; ++i) {
        link = Link(i % kLinkCount);
        const std::size_t fault = std::size_t(i) / kLinkCount % kFaultCount;
        results[link][fault] +=
            runStage(console, link, kFaults[fault], total / (rounds * kStages), folder.path());
    }
    sampler.stop();

    const QString tables = report(results, samples, rounds * kStages);
    std::fputs(qPrintable(tables), stdout);
    const bool isWritten = writeFile(out + QStringLiteral("/soak.svg"), picture(samples)) &&
                           writeFile(out + QStringLiteral("/soak.md"), tables);
    return isWritten && passed(results, samples, rounds * kStages) ? 0 : 1;
}
