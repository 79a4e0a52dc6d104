#include "foundation/QGlobal.h"
#include "tools/commandline/commandline.h"
#include "tools/protocoldoc/tables.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTextStream>

#include <cstdio>

namespace {

constexpr char kDescription[] =
    "Copies a document's Markdown source, with each line @NAME@ replaced by the table or frame of\n"
    "that name, made from the program's own tables. A picture that isn't there is left out. Fails\n"
    "when a row of those tables has no explanation in the notes, or a note explains no row.";

bool complainOfAll(const QStringList &problems)
{
    for (const QString &problem : problems)
        complain(problem);
    return problems.isEmpty();
}

/// The line as it goes into the document; null for a picture that isn't there.
QString filledLine(const QString &line, const QMap<QString, QString> &texts, const QString &folder)
{
    static const QRegularExpression placeholder(QStringLiteral("^@([A-Z_]+)@$"));
    static const QRegularExpression picture(QStringLiteral("^!\\[.*\\]\\((.+)\\)"));
    const QString name = placeholder.match(line).captured(1);
    if (!name.isEmpty())
        return texts.value(name, line);
    const QString path = picture.match(line).captured(1);
    if (path.isEmpty() || QFileInfo::exists(folder + QLatin1Char('/') + path))
        return line;
    std::fprintf(stderr, "protocoldoc: left out %s\n", qUtf8Printable(path));
    return {};
}

bool fill(QFile &source, QFile &target, const QMap<QString, QString> &texts)
{
    if (!source.open(QIODevice::ReadOnly))
        return complainOfAll({source.fileName() + QStringLiteral(": ") + source.errorString()});
    if (!target.open(QIODevice::WriteOnly))
        return complainOfAll({target.fileName() + QStringLiteral(": ") + target.errorString()});
    QTextStream in(&source), out(&target);
    in.setCodec("utf-8");
    out.setCodec("utf-8");
    const QString folder = QFileInfo(source).path();
    QStringList unknown;
    while (!in.atEnd()) {
        const QString line = filledLine(in.readLine(), texts, folder);
        if (line.startsWith(QLatin1Char('@')))
            unknown.append(QStringLiteral("no such table: ") + line);
        out << line << '\n';
    }
    return complainOfAll(unknown);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(kDescription));
    parser.addPositionalArgument(QStringLiteral("language"), QStringLiteral("zh or en"));
    parser.addPositionalArgument(QStringLiteral("data"),
                                 QStringLiteral("folder of the text files"));
    parser.addPositionalArgument(QStringLiteral("notes"), QStringLiteral("the explanations"));
    parser.addPositionalArgument(QStringLiteral("source"), QStringLiteral("Markdown to fill"));
    parser.addPositionalArgument(QStringLiteral("target"), QStringLiteral("Markdown to write"));
    if (const std::optional<int> code = readCommandLine(parser))
        return *code;
    const QStringList words = parser.positionalArguments();
    if (words.size() != 5)
        return complainOfUsage(QStringLiteral("five arguments are needed"));
    if (words.at(0) != QLatin1String("zh") && words.at(0) != QLatin1String("en"))
        return complainOfUsage(QStringLiteral("the language is zh or en"));

    QGlobal &global = *QGlobal::instanceFrom(words.at(1));
    global.languageChinese = words.at(0) == QLatin1String("zh");
    Notes notes(words.at(2), global.languageChinese);
    const QMap<QString, QString> texts = placeholderTexts(notes);
    QFile source(words.at(3)), target(words.at(4));
    return complainOfAll(notes.problems()) && fill(source, target, texts) ? kExitDone
                                                                          : kExitFailure;
}
