#include "tools/commandline/commandline.h"
#include "tools/wire/verbs.h"

#include <QCoreApplication>

namespace {

constexpr char kDescription[] =
    "Frames of the GCU private protocol on the command line: made, taken apart, sent, recorded "
    "and\n"
    "played again. Between the verbs a frame is a line of hexadecimal digits.\n"
    "\n";

constexpr char kEnds[] =
    "\n"
    "`nacelle-wire <verb> --help` shows a verb's own options and examples. Data goes to standard\n"
    "output, words to standard error.\n"
    "\n"
    "Ends with 0; with 1 for a failure, with 2 for a wrong command line, with 3 when there was no\n"
    "answer, with 130 when it is stopped before it is done, with 141 when its reader has gone.";

const wire::Verb *const kVerbs[] = {
    &wire::kComposeVerb, &wire::kDecodeVerb, &wire::kSendVerb,
    &wire::kDumpVerb,    &wire::kRecordVerb, &wire::kReplayVerb,
    &wire::kConvertVerb, &wire::kDiffVerb,   &wire::kFieldsVerb,
};

const wire::Verb *verbNamed(const QString &word)
{
    for (const wire::Verb *verb : kVerbs)
        if (word == QLatin1String(verb->name))
            return verb;
    return nullptr;
}

/// The word where the verb has to stand: the first that is no option. After one it may be its
/// value.
QString verbWord(const QStringList &arguments)
{
    bool isAfterOption = false;
    for (const QString &word : arguments.mid(1)) {
        const bool isOption = word.startsWith(QLatin1Char('-'));
        if (!isOption && (!isAfterOption || verbNamed(word)))
            return word;
        isAfterOption = isOption;
    }
    return {};
}

QString overview()
{
    QString text = QLatin1String(kDescription);
    for (const wire::Verb *verb : kVerbs)
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(verb->name), -9)
                    .arg(QLatin1String(verb->summary));
    return text + QLatin1String(kEnds);
}

int complainOfVerb(const QString &word)
{
    return complainOfUsage(word.isEmpty() ? QStringLiteral("a verb is needed")
                                          : QStringLiteral("no such verb: ") + word);
}

int runWithoutVerb()
{
    QCommandLineParser parser;
    parser.setApplicationDescription(overview());
    parser.addPositionalArgument(QStringLiteral("verb"), QStringLiteral("One of those above."));
    if (const std::optional<int> code = readCommandLine(parser))
        return *code;
    return complainOfVerb({});
}

int run()
{
    const QString word = verbWord(QCoreApplication::arguments());
    if (word.isEmpty())
        return runWithoutVerb();
    const wire::Verb *verb = verbNamed(word);
    if (!verb)
        return complainOfVerb(word);
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromUtf8(verb->text));
    const QString name = QLatin1String(verb->name);
    parser.addPositionalArgument(name, QLatin1String(verb->summary),
                                 name + QLatin1Char(' ') + QLatin1String(verb->words));
    verb->addOptions(parser);
    if (const std::optional<int> code = readCommandLine(parser))
        return *code;
    // Only the verb's own options tell which words are their values.
    const QStringList words = parser.positionalArguments();
    return words.value(0) == word ? verb->run(parser, words.mid(1))
                                  : complainOfVerb(words.value(0));
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    return endWith(run());
}
