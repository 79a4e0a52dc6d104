#include "foundation/QGlobal.h"
#include "foundation/savedblock.h"
#include "tools/tour/keptfile.h"
#include "tools/tour/tour.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QProcess>

#include <cstdio>

namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

struct Options
{
    QString folder;
    QString podsim;
    QString language;
};

Options readOptions()
{
    const QDir beside(QCoreApplication::applicationDirPath());
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Drives the main window by clicks and keys against a simulated pod, tells each step and "
        "saves a picture of the screen behind it. Ends with 0 if all that the steps claim came "
        "true."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("out"), QStringLiteral("Save the pictures in <folder>: tour."),
                      QStringLiteral("folder"), QStringLiteral("tour")});
    parser.addOption({QStringLiteral("language"),
                      QStringLiteral("Show the program in <language>: zh, en or both."),
                      QStringLiteral("language"), QStringLiteral("both")});
    parser.addOption({QStringLiteral("podsim"),
                      QStringLiteral("The simulated pod; the one beside the tour if left out."),
                      QStringLiteral("program"), beside.filePath(QStringLiteral("podsim"))});
    parser.process(*QCoreApplication::instance());
    return {parser.value(QStringLiteral("out")), parser.value(QStringLiteral("podsim")),
            parser.value(QStringLiteral("language"))};
}

/// The window takes its language when it is made and the tables are there once a process: each
/// language has a process of its own.
int runBoth(const Options &options)
{
    int worst = 0;
    for (const char *language : {"zh", "en"}) {
        const int code = QProcess::execute(QCoreApplication::applicationFilePath(),
                                           {QStringLiteral("--out"), options.folder,
                                            QStringLiteral("--podsim"), options.podsim,
                                            QStringLiteral("--language"), QLatin1String(language)});
        if (code != 0)
            worst = kExitFailure;
    }
    return worst;
}

int runOne(const Options &options)
{
    // As if the saved file said so.
    QGlobal::instance()->ffmpegEngine = true;
    QGlobal::instance()->languageChinese = options.language == QLatin1String("zh");
    try {
        Tour tour(options.podsim, options.folder, options.language);
        return tour.run(packetSteps() + consoleSteps() + videoSteps() + menuSteps()) ? 0
                                                                                     : kExitFailure;
    } catch (const TourFailure &failure) {
        std::fprintf(stderr, "tour: %s\n", failure.what());
        return kExitFailure;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const Options options = readOptions();
    // The menu's choice of the language writes it. This process puts it back even where the one
    // that runs a language has crashed.
    const KeptFile saved(savedFilePath());
    if (options.language == QLatin1String("both"))
        return runBoth(options);
    if (options.language != QLatin1String("zh") && options.language != QLatin1String("en")) {
        std::fprintf(stderr, "tour: --language is zh, en or both\n");
        return kExitUsage;
    }
    return runOne(options);
}
