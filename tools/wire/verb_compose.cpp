#include "tools/commandline/commandline.h"
#include "tools/wire/compose.h"
#include "tools/wire/decode.h"
#include "tools/wire/inputs.h"
#include "tools/wire/verbs.h"

namespace wire {

namespace {

constexpr char kText[] =
    "Makes frames of words, and writes each as a line of hexadecimal digits.\n"
    "\n"
    "  name=value      a field by its id, as `nacelle-wire fields` lists them\n"
    "  raw.name=value  the same as the integer that goes to the wire\n"
    "  command=…       a host frame's command: code, id, or name in either language\n"
    "  param.name=…    a parameter of it; `param.` may be left out where no field has that id\n"
    "  feedback=… result=…  a GCU frame's answer; 0 to 255, success, failure, executing\n"
    "  area=…          command or feedback area in digits, whatever they are\n"
    "  length=… crc=…  in place of those that are made\n"
    "\n"
    "What isn't given is 0, version and sub-frame header 1. Values become bytes as in the bench's\n"
    "workbench; what it would turn into 0 is refused. With --json each line of the input is an\n"
    "object as `decode --json` writes it; of one with \"hex\" only what differs from those bytes "
    "is\n"
    "changed, then length and checksum are made anew unless they were wrong or are among it. "
    "Without\n"
    "\"hex\" what is said twice has to agree. A key or a value that wouldn't be read, or that "
    "others\n"
    "contradict, is refused with its line, and the other lines are made; it ends with 1 then.\n"
    "\n"
    "  nacelle-wire compose command=photo\n"
    "                      a host frame with a command\n"
    "  nacelle-wire compose carrier_roll=1.5 command=zoom_ratio camera=1 zoom=20\n"
    "                      with a field and parameters\n"
    "  nacelle-wire compose --frame gcu mode=follow feedback=photo result=success\n"
    "                      a pod's answer\n"
    "  nacelle-wire compose command=photo crc=0000\n"
    "                      a wrong checksum on purpose\n"
    "  nacelle-wire decode --json run.pcapng | jq -c '.fields.version=2' | nacelle-wire compose "
    "--json\n"
    "                      all frames of a recording with another version";

void addOptions(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("frame"), QStringLiteral("host or gcu; else host."),
                      QStringLiteral("kind"), QStringLiteral("host")});
    parser.addOption({QStringLiteral("json"),
                      QStringLiteral("Read objects from the files, or standard input.")});
    parser.addOption({QStringLiteral("as"),
                      QStringLiteral("hex, line, log or pcapng; else hex, or what the end of the "
                                     "output's name says."),
                      QStringLiteral("form")});
    addOutputOption(parser);
}

/// All objects of one input; the exit code.
int composeFrom(ByteSource &source, const FrameFormat &format, Output &output)
{
    source.beforeRead = [&output] { output.flush(); };
    LineReader lines(source);
    int code = kExitDone;
    for (QByteArray line; lines.next(line) && output.settle();) {
        if (line.trimmed().isEmpty())
            continue;
        const Composed made = composeJson(line);
        if (made.error.isEmpty())
            format.add(made.record, output.buffer());
        else
            code = complain(QStringLiteral("line %1: %2").arg(lines.number()).arg(made.error));
    }
    return code;
}

/// All objects of all inputs, standard input where none is named. The output is opened with the
/// first of them that is there, so that a mistyped name empties no file.
int composeObjects(const QStringList &words, const QString &target, const FrameFormat &format,
                   Output &output)
{
    int code = kExitDone;
    bool isBegun = false;
    for (const QString &path : words.isEmpty() ? QStringList{QStringLiteral("-")} : words) {
        QString error;
        const std::unique_ptr<ByteSource> source = ByteSource::open(path, error);
        if (!source) {
            code = complain(error);
            continue;
        }
        if (!isBegun && !begin(output, target, format))
            break;
        isBegun = true;
        code = qMax(code, composeFrom(*source, format, output));
    }
    return code;
}

/// The frame of the command line's words; none where it reads objects instead.
Composed composeWords(const QCommandLineParser &parser, const QStringList &words)
{
    const QString frame = parser.value(QStringLiteral("frame"));
    const bool isHost = frame == QLatin1String("host");
    Composed made;
    if (!isHost && frame != QLatin1String("gcu"))
        made.error = QStringLiteral("--frame %1: host or gcu").arg(frame);
    else if (!parser.isSet(QStringLiteral("json")))
        made = composePairs(isHost ? FrameKind::Host : FrameKind::Gcu, words);
    return made;
}

int run(const QCommandLineParser &parser, const QStringList &words)
{
    Composed made = composeWords(parser, words);
    const QString target = parser.value(QStringLiteral("output"));
    const auto format =
        readForm(parser.value(QStringLiteral("as")), target, Language::English,
                 {QString(), QString(), toolName()}, made.error, QStringLiteral("hex"));
    if (!made.error.isEmpty())
        return complainOfUsage(made.error);
    const bool isJson = parser.isSet(QStringLiteral("json"));
    if (isJson && !mayWrite(target, words, made.error))
        return complainOfUsage(made.error);
    Output output;
    int code = kExitDone;
    if (isJson)
        code = composeObjects(words, target, *format, output);
    else if (begin(output, target, *format))
        format->add(made.record, output.buffer());
    return output.close() ? code : complain(output.error());
}

} // namespace

const Verb kComposeVerb{
    "compose", "[name=value...]", "make frames of field=value words or JSON lines",
    kText,     addOptions,        run};

} // namespace wire
