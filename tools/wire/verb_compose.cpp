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
    "changed, then length and checksum are made anew unless they were wrong.\n"
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
    addOutputOption(parser);
}

int failed(const QString &where, const Composed &made)
{
    return complain(where.isEmpty() ? made.error : where + QStringLiteral(": ") + made.error);
}

/// All objects of one input; the exit code.
int composeFrom(const QString &path, Output &output)
{
    QString error;
    const std::unique_ptr<ByteSource> source = ByteSource::open(path, error);
    if (!source)
        return complain(error);
    source->beforeRead = [&output] { output.flush(); };
    LineReader lines(*source);
    const auto format = hexFormat();
    int code = kExitDone;
    for (QByteArray line; lines.next(line) && output.settle();) {
        if (line.trimmed().isEmpty())
            continue;
        const Composed made = composeJson(line);
        if (made.error.isEmpty())
            format->add(made.record, output.buffer());
        else
            code = failed(QStringLiteral("line %1").arg(lines.number()), made);
    }
    return code;
}

int composeWords(FrameKind kind, const QStringList &words, Output &output)
{
    const Composed made = composePairs(kind, words);
    if (!made.error.isEmpty())
        return complainOfUsage(made.error);
    hexFormat()->add(made.record, output.buffer());
    return kExitDone;
}

int run(const QCommandLineParser &parser, const QStringList &words)
{
    const QString frame = parser.value(QStringLiteral("frame"));
    const bool isHost = frame == QLatin1String("host");
    if (!isHost && frame != QLatin1String("gcu"))
        return complainOfUsage(QStringLiteral("--frame %1: host or gcu").arg(frame));
    Output output;
    if (!output.open(parser.value(QStringLiteral("output"))))
        return complain(output.error());
    int code = kExitDone;
    if (parser.isSet(QStringLiteral("json"))) {
        for (const QString &path : words.isEmpty() ? QStringList{QStringLiteral("-")} : words)
            code = qMax(code, composeFrom(path, output));
    } else {
        code = composeWords(isHost ? FrameKind::Host : FrameKind::Gcu, words, output);
    }
    return output.close() ? code : complain(output.error());
}

} // namespace

const Verb kComposeVerb{
    "compose", "[name=value...]", "make frames of field=value words or JSON lines",
    kText,     addOptions,        run};

} // namespace wire
