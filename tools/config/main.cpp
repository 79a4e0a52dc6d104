#include "tools/commandline/commandline.h"
#include "tools/commandline/speech.h"
#include "tools/config/choices.h"
#include "tools/config/configfile.h"
#include "tools/config/describe.h"

#include <QCoreApplication>

namespace {

constexpr char kDescription[] =
    "Shows or changes the saved file of NacelleBench: its language, its video engine and what "
    "else\n"
    "it keeps. The program reads that file at its start. Where there is none, `set` makes one "
    "with\n"
    "the values of a first start.\n"
    "\n"
    "  show                       print all that the file holds\n"
    "  set language zh|en         Chinese or English\n"
    "  set engine ffmpeg|libvlc   what plays the video\n"
    "\n"
    "A damaged file is neither shown nor changed. It is damaged when the program wouldn't read it "
    "to\n"
    "its last byte: it ends early, has fewer than 16 control rows, or has bytes left over. `set` "
    "changes\n"
    "nothing else of the file, not even what the program itself drops of it.\n"
    "\n"
    "Ends with 0; with 1 for a damaged file, or a file or an output that can't be opened or "
    "written;\n"
    "with 2 for a wrong command line.";

void say(const QString &line)
{
    writeLine(stdout, line);
}

int show(const QString &path)
{
    const ConfigFile file = readConfigFile(path);
    if (!file.error.isEmpty())
        return complain(file.error);
    say(path +
        (file.isThere ? QStringLiteral(":") : QStringLiteral(" isn't there. A first start has:")));
    for (const QString &line : describe(file.block))
        say(line);
    return kExitDone;
}

int set(const QString &path, const Choice &choice, bool value)
{
    ConfigFile file = readConfigFile(path);
    if (!file.error.isEmpty())
        return complain(file.error);
    // All other bytes stay as they are, also those that the program would write otherwise.
    file.bytes[byteOf(choice)] = char(value);
    const QString failure = replaceConfigFile(path, file.bytes);
    if (!failure.isEmpty())
        return complain(failure);
    say(QStringLiteral("%1 is now %2 in %3")
            .arg(QLatin1String(choice.name), QLatin1String(wordFor(choice, value)), path));
    return kExitDone;
}

int runCommand(const QString &path, const QStringList &words)
{
    if (path.isEmpty())
        return complainOfUsage(QStringLiteral("`--file` needs a path"));
    if (words == QStringList{QStringLiteral("show")})
        return show(path);
    if (words.size() != 3 || words.first() != QLatin1String("set"))
        return complainOfUsage(QStringLiteral("`show` or `set <name> <value>` is needed"));
    for (const Choice &choice : kChoices) {
        const bool isTrue = words.at(2) == QLatin1String(choice.whenTrue);
        if (words.at(1) == QLatin1String(choice.name) &&
            (isTrue || words.at(2) == QLatin1String(choice.whenFalse)))
            return set(path, choice, isTrue);
    }
    return complainOfUsage(QStringLiteral("no such setting: ") +
                           words.mid(1).join(QLatin1Char(' ')));
}

int run()
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(kDescription));
    parser.addOption({QStringLiteral("file"),
                      QStringLiteral("The saved file: controlConfig.ncl beside this program."),
                      QStringLiteral("path"), savedFilePath()});
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("One of those above."));
    if (const std::optional<int> code = readCommandLine(parser))
        return *code;
    return runCommand(parser.value(QStringLiteral("file")), parser.positionalArguments());
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    return endWith(run());
}
