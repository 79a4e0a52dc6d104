#include "tools/commandline/commandline.h"
#include "tools/wire/catalogue.h"
#include "tools/wire/decode.h"
#include "tools/wire/inputs.h"
#include "tools/wire/verbs.h"

#include <QFileInfo>

namespace wire {

namespace {

constexpr char kDecodeText[] =
    "Takes the frames of recordings apart: field by field as the workbench shows them, as a JSON\n"
    "object a line, or as comma-separated values under a line of titles. Reads files, standard\n"
    "input, or a frame's digits. What an input is, is found out by its content:\n"
    "\n"
    "  pcapng       of this tool, or of Wireshark on TCP or UDP. Segments that overtook others or\n"
    "               were sent again are put right; it says how often some are lost between frames\n"
    "  line form    (1732190000.123456) tx A8E5…\n"
    "  log text     copied from the bench's display, in Chinese or English; entries without "
    "bytes\n"
    "               are left out\n"
    "  hex          a frame a line\n"
    "  raw bytes    cut into frames by header and checksum; what stands between is kept as "
    "unknown\n"
    "\n"
    "In line form and hex a line after # is a comment. Text may be UTF-8 or, with its mark, "
    "UTF-16;\n"
    "text of no such form is refused.\n"
    "\n"
    "  nacelle-wire decode A8E5480001000000000000…\n"
    "                      a frame field by field\n"
    "  nacelle-wire decode --json run.pcapng | jq 'select(.fields.mode==\"track\")'\n"
    "                      what the pod sent while it tracked\n"
    "  nacelle-wire decode --csv --kind gcu --from 5min --to 6min run.pcapng -o minute.csv\n"
    "                      a minute of the pod's frames as a table\n"
    "  nacelle-wire decode --crc bad run.pcapng\n"
    "                      the frames with a wrong checksum\n"
    "\n"
    "Ends with 1 when an input is damaged, after all that could be read of it.";

constexpr char kConvertText[] =
    "Writes recordings in another form: pcapng, line, log (the text of the bench's display, in\n"
    "--language) or hex. Without --as the end of the output's name says which: .pcapng, .log, "
    ".hex\n"
    "or .txt; else it is line. The inputs are what `decode` reads.\n"
    "\n"
    "  nacelle-wire convert run.pcapng | grep ' tx '\n"
    "                      what was sent, a line a frame\n"
    "  nacelle-wire convert --date 2025-11-21 pasted.txt -o pasted.pcapng\n"
    "                      the bench's log for Wireshark\n"
    "  nacelle-wire convert --as hex --command photo run.pcapng\n"
    "                      all photo commands and their answers";

constexpr char kFieldsText[] =
    "Writes the tables of both frames, of all commands and work modes as one JSON document: id,\n"
    "offset, size, kind, factor K (wire = value x K), unit, names in both languages.\n"
    "\n"
    "  nacelle-wire fields | jq -r '.commands[] | [.code, .id, .en] | @tsv'\n"
    "                      a list of the commands";

void addDecodeOptions(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("text"),
                      QStringLiteral("Field by field; this is what is done without an option.")});
    parser.addOption({QStringLiteral("json"), QStringLiteral("A JSON object a line.")});
    parser.addOption({QStringLiteral("csv"), QStringLiteral("Comma-separated values.")});
    addLanguageOption(parser);
    addReadOptions(parser);
    addFilterOptions(parser);
    addOutputOption(parser);
}

void addConvertOptions(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("as"), QStringLiteral("pcapng, line, log or hex."),
                      QStringLiteral("form")});
    addLanguageOption(parser);
    addReadOptions(parser);
    addFilterOptions(parser);
    addOutputOption(parser);
}

/// What the verbs of this file have in common: options, inputs and an output.
int pour(const QCommandLineParser &parser, const QStringList &words, const FrameFormat &format)
{
    ReadOptions options;
    Filter filter;
    QString error;
    if (!readReadOptions(parser, options, error) || !readFilter(parser, filter, error))
        return complainOfUsage(error);
    const QString target = parser.value(QStringLiteral("output"));
    if (!mayWrite(target, words, error))
        return complainOfUsage(error);
    Output output;
    const auto beginOnce = [&] { return begin(output, target, format); };
    const int code = forEachRecord(words, options, output, beginOnce, [&](const Record &record) {
        if (filter.takes(record))
            format.add(record, output.buffer());
        return true;
    });
    sayRemark(words.isEmpty() ? QStringLiteral("-") : words.join(QStringLiteral(", ")), filter);
    return code;
}

int decode(const QCommandLineParser &parser, const QStringList &words)
{
    Language language = Language::English;
    QString error;
    if (!readLanguage(parser, language, error))
        return complainOfUsage(error);
    const bool isJson = parser.isSet(QStringLiteral("json")),
               isCsv = parser.isSet(QStringLiteral("csv"));
    if (isJson + isCsv + parser.isSet(QStringLiteral("text")) > 1)
        return complainOfUsage(QStringLiteral("one of --text, --json and --csv"));
    const auto format = isJson ? jsonFormat() : isCsv ? csvFormat() : textFormat(language);
    return pour(parser, words, *format);
}

/// A recording made of a single one comes from where that does. Of what can be read only once the
/// names are gone by then.
Origin originOf(const QStringList &words)
{
    Origin origin;
    QString error;
    if (words.size() == 1 && QFileInfo(words.first()).isFile())
        if (const auto reader = openInput(words.first(), {}, {}, error)) {
            Record record;
            reader->next(record);
            origin = reader->origin();
        }
    origin.tool = toolName();
    return origin;
}

int convert(const QCommandLineParser &parser, const QStringList &words)
{
    Language language = Language::English;
    QString error;
    if (!readLanguage(parser, language, error))
        return complainOfUsage(error);
    const auto format =
        readForm(parser.value(QStringLiteral("as")), parser.value(QStringLiteral("output")),
                 language, originOf(words), error);
    if (!format)
        return complainOfUsage(error);
    return pour(parser, words, *format);
}

void addFieldsOptions(QCommandLineParser &parser)
{
    addOutputOption(parser);
}

int fields(const QCommandLineParser &parser, const QStringList &words)
{
    if (!words.isEmpty())
        return complainOfUsage(QStringLiteral("unexpected: ") + words.first());
    Output output;
    if (!output.open(parser.value(QStringLiteral("output"))))
        return complain(output.error());
    output.buffer().put(catalogue());
    return output.close() ? kExitDone : complain(output.error());
}

} // namespace

const Verb kDecodeVerb{
    "decode",    "[input...]",     "take frames apart as text, JSON lines or CSV",
    kDecodeText, addDecodeOptions, decode};
const Verb kConvertVerb{"convert",    "[input...]",      "write a recording in another form",
                        kConvertText, addConvertOptions, convert};
const Verb kFieldsVerb{
    "fields",         "",    "the tables of frames, commands and modes as JSON", kFieldsText,
    addFieldsOptions, fields};

} // namespace wire
