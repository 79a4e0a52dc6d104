#include "tools/check/options.h"
#include "tools/check/terminal.h"
#include "tools/check/writers.h"
#include "tools/commandline/commandline.h"
#include "tools/commandline/speech.h"
#include "tools/commandline/stopsignal.h"
#include "tools/wire/recorder.h"
#include "tools/wire/recordwriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>

#include <cstdio>

namespace check {

namespace {

constexpr int kExitNoLink = 3;
constexpr int kFlushMs = 500;

int exportCases(const QString &folder)
{
    if (!QDir().mkpath(folder))
        return complain(folder + QStringLiteral(": the folder can't be made"));
    for (const QString &path : shippedFiles()) {
        QFile from(path);
        QFile to(QDir(folder).filePath(QFileInfo(path).fileName()));
        // What a user has changed isn't written over.
        const bool isDone = from.open(QIODevice::ReadOnly) &&
                            to.open(QIODevice::WriteOnly | QIODevice::NewOnly) &&
                            to.write(from.readAll()) == from.size() && to.flush();
        if (!isDone)
            return complain(to.fileName() + QStringLiteral(": ") + to.errorString());
    }
    return kExitDone;
}

bool saysYes(wire::Language language)
{
    std::fputs(language == wire::Language::Chinese ? "请输入 yes 继续: " : "Type yes to go on: ",
               stderr);
    char answer[16] = "";
    return std::fgets(answer, sizeof answer, stdin) && QByteArray(answer).trimmed() == "yes";
}

/// The user's word for what moves the pod and so on: asked for at a terminal, taken as given where
/// a script has named the group.
bool hasLeave(const Options &options)
{
    bool isAsked = false;
    for (const Group &group : options.plan.groups) {
        if (group.warning.isEmpty())
            continue;
        writeLine(stderr, group.warning.in(options.language));
        isAsked = true;
    }
    return !isAsked || !isInputTerminal() || saysYes(options.language);
}

/// The recording of a session, if there is to be one.
class Tape
{
public:
    Tape(const Options &options, PodLine &line)
        : m_format(wire::pcapngFormat({options.address.text, options.address.host, toolName()})),
          m_recorder(options.recording, *m_format, {}), m_isOn(!options.recording.isEmpty())
    {
        if (m_isOn)
            line.tap = [this](const wire::Record &record) { m_recorder.take(record); };
        QObject::connect(&m_timer, &QTimer::timeout, &line, [this] { m_recorder.flush(); });
    }

    static QString toolName() { return QStringLiteral("nacelle-check " NACELLE_VERSION); }

    bool open()
    {
        if (!m_isOn)
            return true;
        m_timer.start(kFlushMs);
        return m_recorder.open();
    }
    bool close() { return !m_isOn || m_recorder.close(); }
    const QString &error() const { return m_recorder.error(); }

private:
    std::unique_ptr<wire::FrameFormat> m_format;
    wire::Recorder m_recorder;
    bool m_isOn;
    QTimer m_timer;
};

/// A session of hours isn't to end with a report that can't be written.
bool canWrite(const Options &options, QString &error)
{
    for (const QString &path : {options.report, options.junit, options.json, options.recording}) {
        const QFileInfo folder(QFileInfo(path).absolutePath());
        if (path.isEmpty())
            continue;
        if (QFileInfo(path).isDir())
            error = path + QStringLiteral(": a folder");
        else if (!folder.isDir() || !folder.isWritable())
            error = path + QStringLiteral(": there is no such folder, or it can't be written to");
        if (!error.isEmpty())
            return false;
    }
    return true;
}

/// Every file is tried, whatever became of the others.
int writeFiles(const Options &options, const SessionResult &result)
{
    int code = kExitDone;
    QString error;
    if (!options.junit.isEmpty() && !writeJunit(result, options.language, options.junit, error))
        code = complain(error);
    if (!options.json.isEmpty() && !writeJson(result, options.json, error))
        code = complain(error);
    if (!options.report.isEmpty() && !writeReport(result, options.language, options.report, error))
        code = complain(error);
    return code;
}

QStringList casesNotRun(const Group &group, const Plan &plan)
{
    QStringList cases;
    for (const Case &each : group.cases)
        cases.append(each.id);
    for (const Group &other : plan.groups)
        for (const Case &each : other.cases)
            cases.removeAll(each.id);
    return cases;
}

/// Groups that don't run; of those that run in part, cases.
QStringList notRun(const Options &options)
{
    QStringList left;
    for (const Group &group : options.all) {
        const QStringList cases = casesNotRun(group, options.plan);
        left += cases.size() == group.cases.size() ? QStringList{group.id} : cases;
    }
    return left;
}

SessionResult begun(const Options &options)
{
    SessionResult result;
    result.tool = Tape::toolName();
    result.link = options.address.text;
    result.device = options.device;
    result.inspector = options.inspector;
    result.recording = options.recording;
    result.caseFiles = options.caseFiles;
    result.notRun = notRun(options);
    for (const Group &group : options.plan.measured)
        for (const Measure &measure : group.measures)
            if (usesMeasure(options.plan, measure))
                result.cycles.append(
                    {measure.key, cyclesOf(options.plan, measure), measure.cycles});
    result.begin = QDateTime::currentDateTime();
    return result;
}

SessionResult run(const Options &options, PodLine &line)
{
    SessionResult result = begun(options);
    QElapsedTimer timer;
    timer.start();
    Terminal terminal(options.language);
    Runner(line, options.plan, terminal).run(result);
    result.seconds = double(timer.nsecsElapsed()) * 1e-9;
    terminal.sessionEnds(result);
    return result;
}

int check(const Options &options)
{
    QString error;
    if (!canWrite(options, error))
        return complain(error);
    PodLine line(options.address);
    Tape tape(options, line);
    const StopSignal stop;
    QObject::connect(&stop, &StopSignal::stopped, &line, &PodLine::stop);
    if (line.kind() == wire::LinkAddress::TcpListen)
        writeLine(stderr, options.language == wire::Language::Chinese
                              ? QStringLiteral("等待吊舱连接……")
                              : QStringLiteral("Waiting for the pod to connect ..."));
    if (!line.open())
        return line.isStopped() ? complain(QStringLiteral("broken off"))
                                : complain(line.reason(), kExitNoLink);
    if (!tape.open())
        return complain(tape.error());
    const SessionResult result = run(options, line);
    int code = result.isPassed() ? kExitDone : kExitFailure;
    if (!tape.close())
        code = complain(tape.error());
    return qMax(code, writeFiles(options, result));
}

int run()
{
    Options options;
    if (const std::optional<int> code = readOptions(options))
        return *code;
    if (!options.exportFolder.isEmpty())
        return exportCases(options.exportFolder);
    if (options.isList)
        listCases(options.all, options.language);
    else if (options.isDryRun)
        listFrames(options.plan, options.language);
    else
        return hasLeave(options)
                   ? check(options)
                   : complainOfUsage(QStringLiteral("nothing was sent: you didn't type yes"));
    return kExitDone;
}

#ifndef Q_OS_WIN
/// Without a session of the user's the toolkit says where it would keep what isn't kept here.
void passOver(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (!text.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR")))
        writeLine(stderr, qFormatLogMessage(type, context, text));
}
#endif

std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv)
{
    if (!wantsReport(argc, argv))
        return std::make_unique<QCoreApplication>(argc, argv);
#ifndef Q_OS_WIN
    // Fonts are needed, a screen isn't.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(passOver);
#endif
    return std::make_unique<QGuiApplication>(argc, argv);
}

} // namespace

} // namespace check

int main(int argc, char *argv[])
{
    const auto application = check::makeApplication(argc, argv);
    return endWith(check::run());
}
