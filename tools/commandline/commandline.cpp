#include "tools/commandline/commandline.h"

#include "tools/commandline/speech.h"

#include <QCoreApplication>

void addStandardOptions(QCommandLineParser &parser)
{
    parser.addOption(
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this text.")});
    parser.addOption({QStringLiteral("version"), QStringLiteral("Show the version.")});
}

QString standardAnswer(const QCommandLineParser &parser)
{
    if (parser.isSet(QStringLiteral("help")))
        return parser.helpText().trimmed();
    if (parser.isSet(QStringLiteral("version")))
        return QCoreApplication::applicationName() + QStringLiteral(" " NACELLE_VERSION);
    return {};
}

int complain(const QString &text, int code)
{
    writeLine(stderr, QCoreApplication::applicationName() + QStringLiteral(": ") + text);
    return code;
}

int complainOfUsage(const QString &text)
{
    return complain(text + QStringLiteral(" (see --help)"), kExitUsage);
}

int endWith(int code)
{
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return code;
    return complain(QStringLiteral("the output can't be written"));
}

std::optional<int> readCommandLine(QCommandLineParser &parser)
{
    addStandardOptions(parser);
    if (!parser.parse(QCoreApplication::arguments()))
        return complainOfUsage(parser.errorText());
    const QString answer = standardAnswer(parser);
    if (answer.isEmpty())
        return {};
    writeLine(stdout, answer);
    return kExitDone;
}
