#include "tools/check/options.h"

#include "tools/commandline/commandline.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>
#include <cstring>

namespace check {

namespace {

constexpr char kText[] =
    "Checks a camera pod over its link: does it answer, how fast, does it keep to the protocol,\n"
    "does it take its commands? A line a case, and a report to sign.\n"
    "\n"
    "A link is tcp://host:2332, udp://host:2337?local=2338 or serial:///dev/ttyUSB0?baud=115200,\n"
    "where the ports and the rate may be left out; tcp-listen://0.0.0.0:2332 waits a minute for a\n"
    "pod that connects by itself.\n"
    "\n"
    "Without --group these run: link, timing, protocol, commands. They change no more than the\n"
    "settings of the picture. What moves the pod, zooms, lights or records is off until it is\n"
    "named, and what moves it also takes --motion. --dry-run lists every frame that would go out.\n"
    "\n"
    "  nacelle-check tcp://192.168.144.121 --report pod-17.pdf --device \"pod 17\"\n"
    "                      the usual groups, and a report\n"
    "  nacelle-check udp://192.168.144.121 --group link,motion --motion\n"
    "                      the pod moves: keep clear of it\n"
    "  nacelle-check serial:///dev/ttyUSB0 --minutes 60 --junit r.xml --record r.pcapng\n"
    "                      an hour more, for a CI server, with a recording of all of it\n"
    "  nacelle-check --export my-cases\n"
    "                      the files of the cases, to be changed and given back by --cases\n"
    "\n"
    "Ends with 0 when all that applies to the link has passed, with 1 when something failed,\n"
    "couldn't be judged or was broken off, with 2 for a wrong command line or file of cases, with\n"
    "3 when the link can't be opened.";

constexpr int kMostCycles = 10000000;
constexpr double kMostMinutes = 2880; // two days, whose times take some 50 MB

struct OptionRow
{
    const char *name;
    const char *value; ///< "" for a switch
    const char *text;
};

constexpr OptionRow kOptionRows[] = {
    {"group", "names", "Run these groups, with commas between them."},
    {"case", "id", "Run only this case, or these with commas: link.answers."},
    {"motion", "", "The pod may move: without --group the group motion runs too."},
    {"minutes", "number", "Runs the group endurance for so long."},
    {"cycles", "number", "Cycles of host frame and answer that are measured: 2000."},
    {"cases", "file", "Read this file of cases too; a group of a known name replaces it."},
    {"report", "file", "Write a report as PDF."},
    {"junit", "file", "Write the results as JUnit XML."},
    {"json", "file", "Write the results as JSON."},
    {"record", "file", "Record the session, for nacelle-wire and Wireshark (pcapng)."},
    {"device", "text", "What is checked, for the report."},
    {"inspector", "text", "Who checks, for the report."},
    {"language", "zh|en", "Language of words and report; else that of the system."},
    {"dry-run", "", "List all frames that would go out, and send none."},
    {"list", "", "List groups and cases."},
    {"export", "folder", "Write the files of the cases there."},
};

QString valueOf(const QCommandLineParser &parser, const char *name)
{
    return parser.value(QLatin1String(name));
}

bool isSet(const QCommandLineParser &parser, const char *name)
{
    return parser.isSet(QLatin1String(name));
}

/// A file that is written twice would be the one alone that was written last.
bool areApart(const QCommandLineParser &parser, QString &error)
{
    QStringList paths;
    for (const char *name : {"report", "junit", "json", "record"}) {
        const QString path = QFileInfo(valueOf(parser, name)).absoluteFilePath();
        if (!isSet(parser, name))
            continue;
        if (valueOf(parser, name).isEmpty())
            error = QStringLiteral("--%1: a file is needed").arg(QLatin1String(name));
        else if (paths.contains(path))
            error = QStringLiteral("--%1: %2 is written already")
                        .arg(QLatin1String(name), valueOf(parser, name));
        paths.append(path);
    }
    return error.isEmpty();
}

bool readCycles(const QCommandLineParser &parser, int &cycles, QString &error)
{
    if (!isSet(parser, "cycles"))
        return true;
    bool isGood = false;
    cycles = valueOf(parser, "cycles").toInt(&isGood);
    if (!isGood || cycles < 1 || cycles > kMostCycles)
        error = QStringLiteral("--cycles: 1 to %1").arg(kMostCycles);
    return error.isEmpty();
}

/// A part of a minute will do, to try a file of cases.
bool readMinutes(const QCommandLineParser &parser, double &minutes, QString &error)
{
    if (!isSet(parser, "minutes"))
        return true;
    bool isGood = false;
    minutes = valueOf(parser, "minutes").toDouble(&isGood);
    if (!isGood || !(minutes > 0) || minutes > kMostMinutes)
        error = QStringLiteral("--minutes: up to %1").arg(kMostMinutes);
    return error.isEmpty();
}

bool readLanguage(const QCommandLineParser &parser, wire::Language &language, QString &error)
{
    const QString word =
        isSet(parser, "language") ? valueOf(parser, "language") : QLocale().name().left(2);
    language = word == QLatin1String("zh") ? wire::Language::Chinese : wire::Language::English;
    if (isSet(parser, "language") && word != QLatin1String("zh") && word != QLatin1String("en"))
        error = QStringLiteral("--language: zh or en");
    return error.isEmpty();
}

bool readFile(const QString &path, Options &options, QString &error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = path + QStringLiteral(": ") + file.errorString();
        return false;
    }
    const QByteArray bytes = file.readAll();
    const QByteArray digest = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
    options.caseFiles.append({QFileInfo(path).fileName(), QString::fromLatin1(digest.toHex())});
    return readGroup(bytes, path, options.all, error);
}

bool readAllGroups(const QCommandLineParser &parser, Options &options, QString &error)
{
    const QStringList shipped = shippedFiles();
    const QStringList files = shipped + parser.values(QStringLiteral("cases"));
    const bool isGood = std::all_of(files.begin(), files.end(), [&](const QString &path) {
        return readFile(path, options, error);
    });
    options.caseFiles.remove(0, qMin(options.caseFiles.size(), shipped.size()));
    return isGood;
}

QStringList listed(const QCommandLineParser &parser, const char *name)
{
    QStringList words;
    for (const QString &value : parser.values(QLatin1String(name)))
        words += value.split(QLatin1Char(','), Qt::SkipEmptyParts);
    return words;
}

/// Whether a group runs: named, or in want of nobody's leave.
bool isWanted(const QCommandLineParser &parser, const Group &group, const QStringList &named)
{
    if (!named.isEmpty())
        return named.contains(group.id) ||
               (group.isLong && isSet(parser, "minutes") && group.effects == kStill);
    const bool isLeft =
        (group.effects & ~kMoves) == 0 && (group.effects == kStill || isSet(parser, "motion"));
    return isLeft && (!group.isLong || isSet(parser, "minutes"));
}

QString unknownGroup(const QStringList &named, const QVector<Group> &groups)
{
    for (const QString &name : named)
        if (std::none_of(groups.begin(), groups.end(),
                         [&name](const Group &group) { return group.id == name; }))
            return name;
    return {};
}

QString unknownCase(const QStringList &ids, const QVector<Group> &groups)
{
    QStringList left = ids;
    for (const Group &group : groups)
        for (const Case &each : group.cases)
            left.removeAll(each.id);
    return left.value(0);
}

/// Leaves the cases that were named.
void keepCases(const QStringList &ids, QVector<Group> &groups)
{
    for (Group &group : groups) {
        auto &cases = group.cases;
        cases.erase(std::remove_if(cases.begin(), cases.end(),
                                   [&ids](const Case &each) { return !ids.contains(each.id); }),
                    cases.end());
    }
    groups.erase(std::remove_if(groups.begin(), groups.end(),
                                [](const Group &group) { return group.cases.isEmpty(); }),
                 groups.end());
}

/// By themselves, or by their cases.
QStringList namedGroups(const QCommandLineParser &parser, const QStringList &cases)
{
    QStringList named = listed(parser, "group");
    if (named.isEmpty())
        for (const QString &id : cases)
            named.append(id.section(QLatin1Char('.'), 0, 0));
    return named;
}

bool choose(const QCommandLineParser &parser, Options &options, QString &error)
{
    const QStringList cases = listed(parser, "case");
    const QStringList named = namedGroups(parser, cases);
    const QString unknown = unknownGroup(named, options.all);
    if (!unknown.isEmpty())
        error = QStringLiteral("there is no group \"%1\"").arg(unknown);
    else if (const QString id = unknownCase(cases, options.all); !id.isEmpty())
        error = QStringLiteral("there is no case \"%1\"").arg(id);
    for (const Group &group : qAsConst(options.all)) {
        if (!isWanted(parser, group, named))
            continue;
        if ((group.effects & kMoves) != 0 && !isSet(parser, "motion"))
            error = QStringLiteral("%1 moves the pod: --motion is needed").arg(group.id);
        if (group.isLong && options.plan.minutes == 0)
            error = QStringLiteral("%1 takes --minutes").arg(group.id);
        options.plan.groups.append(group);
    }
    if (!cases.isEmpty())
        keepCases(cases, options.plan.groups);
    if (error.isEmpty() && options.plan.groups.isEmpty())
        error = QStringLiteral("there is nothing to run");
    options.plan.measured = options.all;
    return error.isEmpty();
}

bool readLink(const QCommandLineParser &parser, Options &options, QString &error)
{
    const QStringList words = parser.positionalArguments();
    const bool isNeeded = !options.isDryRun && !options.isList && options.exportFolder.isEmpty();
    options.hasLink = !words.isEmpty();
    if (words.size() > 1 || (words.isEmpty() && isNeeded))
        error = QStringLiteral("one link is needed");
    return error.isEmpty() &&
           (words.isEmpty() || wire::readLinkAddress(words.first(), options.address, error));
}

void takeTexts(const QCommandLineParser &parser, Options &options)
{
    options.isDryRun = isSet(parser, "dry-run");
    options.isList = isSet(parser, "list");
    options.device = valueOf(parser, "device");
    options.inspector = valueOf(parser, "inspector");
    options.report = valueOf(parser, "report");
    options.junit = valueOf(parser, "junit");
    options.json = valueOf(parser, "json");
    options.recording = valueOf(parser, "record");
    options.exportFolder = valueOf(parser, "export");
}

void addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QLatin1String(kText));
    parser.addPositionalArgument(QStringLiteral("link"), QStringLiteral("Where the pod is."));
    for (const OptionRow &row : kOptionRows)
        parser.addOption(
            {QLatin1String(row.name), QLatin1String(row.text), QLatin1String(row.value)});
}

} // namespace

std::optional<int> readOptions(Options &options)
{
    QCommandLineParser parser;
    addOptions(parser);
    if (const std::optional<int> code = readCommandLine(parser))
        return code;
    takeTexts(parser, options);
    QString error;
    const bool isGood =
        readLanguage(parser, options.language, error) && readLink(parser, options, error) &&
        readCycles(parser, options.plan.cycles, error) &&
        readMinutes(parser, options.plan.minutes, error) && readAllGroups(parser, options, error) &&
        areApart(parser, error) && tieMeasures(options.all, error);
    if (!isGood || (!options.isList && !choose(parser, options, error)))
        return complainOfUsage(error);
    return {};
}

bool wantsReport(int argc, const char *const *argv)
{
    return std::any_of(argv + 1, argv + argc, [](const char *word) {
        return std::strncmp(word, "--report", 8) == 0 || std::strncmp(word, "-report", 7) == 0;
    });
}

} // namespace check
