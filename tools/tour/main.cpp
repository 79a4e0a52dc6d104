#include "foundation/QGlobal.h"
#include "foundation/savedblock.h"
#include "tools/commandline/commandline.h"
#include "tools/tour/keptfile.h"
#include "tools/tour/places.h"
#include "tools/tour/tour.h"

#include <QApplication>
#include <QDir>
#include <QProcess>

namespace {

using namespace tour;

struct Options
{
    QString folder;
    PodChoice pod;
    QString language;
};

void describeOptions(QCommandLineParser &parser)
{
    const QDir beside(QCoreApplication::applicationDirPath());
    parser.setApplicationDescription(QStringLiteral(
        "Drives the main window by clicks and keys against a simulated pod, says each step and "
        "saves a picture of the screen after it. Ends with 0 if all that the steps claim came "
        "true."));
    parser.addOption({QStringLiteral("out"), QStringLiteral("Save the pictures in <folder>: tour."),
                      QStringLiteral("folder"), QStringLiteral("tour")});
    parser.addOption({QStringLiteral("language"),
                      QStringLiteral("Show the program in <language>: zh, en or both."),
                      QStringLiteral("language"), QStringLiteral("both")});
    parser.addOption({QStringLiteral("podsim"),
                      QStringLiteral("The simulated pod; the one beside the tour if left out."),
                      QStringLiteral("program"), beside.filePath(QStringLiteral("podsim"))});
    parser.addOption({QStringLiteral("pod-log"),
                      QStringLiteral("Start no pod: one runs here by the usual ports, and what it "
                                     "says goes to <file>."),
                      QStringLiteral("file")});
    parser.addOption({QStringLiteral("places"),
                      QStringLiteral("Only say where the windows' parts lie, and end.")});
    parser.addOption({QStringLiteral("without-video"),
                      QStringLiteral("Leave out the steps of the video, for a pod without a "
                                     "stream.")});
}

Options readOptions(const QCommandLineParser &parser)
{
    return {parser.value(QStringLiteral("out")),
            {parser.value(QStringLiteral("podsim")), parser.value(QStringLiteral("pod-log")),
             !parser.isSet(QStringLiteral("without-video"))},
            parser.value(QStringLiteral("language"))};
}

/// The window takes its language when it is made and the tables are there once a process: each
/// language has a separate process.
int runBoth()
{
    int worst = kExitDone;
    for (const char *language : {"zh", "en"}) {
        const int code = QProcess::execute(
            QCoreApplication::applicationFilePath(),
            QCoreApplication::arguments().mid(1) +
                QStringList{QStringLiteral("--language"), QLatin1String(language)});
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
        Tour tour(options.pod, options.folder, options.language);
        const QVector<Step> video = options.pod.hasStream ? videoSteps() : QVector<Step>();
        return tour.run(packetSteps() + consoleSteps() + video + menuSteps()) ? kExitDone
                                                                              : kExitFailure;
    } catch (const TourFailure &failure) {
        return complain(QString::fromUtf8(failure.what()));
    }
}

/// Help and mistakes are answered where there is no screen too.
std::optional<int> readWithoutScreen(QCommandLineParser &parser, int &argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    describeOptions(parser);
    if (const std::optional<int> code = readCommandLine(parser))
        return code;
    if (parser.positionalArguments().isEmpty())
        return {};
    return complainOfUsage(QStringLiteral("no such argument: ") + parser.positionalArguments()[0]);
}

} // namespace

int main(int argc, char *argv[])
{
    QCommandLineParser parser;
    if (const std::optional<int> code = readWithoutScreen(parser, argc, argv))
        return *code;
    QApplication application(argc, argv);
    if (parser.isSet(QStringLiteral("places"))) {
        printPlaces();
        return kExitDone;
    }
    const Options options = readOptions(parser);
    // The menu's choice of the language writes it. This process puts it back even where the one
    // that runs a language has crashed.
    const KeptFile saved(savedFilePath());
    if (options.language == QLatin1String("both"))
        return runBoth();
    if (options.language != QLatin1String("zh") && options.language != QLatin1String("en"))
        return complainOfUsage(QStringLiteral("--language is zh, en or both"));
    return runOne(options);
}
