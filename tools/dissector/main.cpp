#include "foundation/QGlobal.h"
#include "foundation/textfiles.h"
#include "tools/commandline/commandline.h"
#include "tools/dissector/luatables.h"
#include "tools/protocoldoc/notes.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

constexpr char kDescription[] =
    "Joins the program's own tables, as Lua, and the parts of the dissector for Wireshark. Fails\n"
    "when a row of those tables has no name or no explanation, or a note explains no row.";

/// The notes of one file in both languages.
struct Bilingual
{
    explicit Bilingual(const QString &path) : zh(path, true), en(path, false) {}
    Explanations both() { return {{QStringLiteral("zh"), &zh}, {QStringLiteral("en"), &en}}; }
    QStringList problems() const { return zh.problems() + en.problems(); }

    Notes zh, en;
};

/// True when there is nothing to complain of.
bool complainOfAll(const QStringList &problems)
{
    for (const QString &problem : problems)
        complain(problem);
    return problems.isEmpty();
}

bool write(const QString &target, const QByteArray &tables, const QStringList &parts)
{
    QByteArray all = "-- Made by the build of NacelleBench from the program's tables.\n\n" + tables;
    for (const QString &part : parts) {
        QFile file(part);
        if (!file.open(QIODevice::ReadOnly))
            return complainOfAll({part + QStringLiteral(": ") + file.errorString()});
        all += '\n' + file.readAll();
    }
    QDir().mkpath(QFileInfo(target).path());
    QFile file(target);
    if (file.open(QIODevice::WriteOnly) && file.write(all) == all.size() && file.flush())
        return true;
    return complainOfAll({target + QStringLiteral(": ") + file.errorString()});
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(kDescription));
    parser.addPositionalArgument(QStringLiteral("data"),
                                 QStringLiteral("folder of the text files"));
    parser.addPositionalArgument(QStringLiteral("notes"), QStringLiteral("the explanations"));
    parser.addPositionalArgument(QStringLiteral("names"), QStringLiteral("names of parameters"));
    parser.addPositionalArgument(QStringLiteral("target"), QStringLiteral("Lua to write"));
    parser.addPositionalArgument(QStringLiteral("part"), QStringLiteral("Lua to add"),
                                 QStringLiteral("part..."));
    if (const std::optional<int> code = readCommandLine(parser))
        return *code;
    const QStringList words = parser.positionalArguments();
    if (words.size() < 5)
        return complainOfUsage(QStringLiteral("five arguments are needed, or more"));

    readTextFilesFrom(words.at(0), *QGlobal::instance());
    Bilingual notes(words.at(1)), names(words.at(2));
    const QByteArray tables = luaTables(notes.both(), names.both()).toUtf8();
    return complainOfAll(notes.problems() + names.problems()) &&
                   write(words.at(3), tables, words.mid(4))
               ? kExitDone
               : kExitFailure;
}
