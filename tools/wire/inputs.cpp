#include "tools/wire/inputs.h"

#include "tools/commandline/commandline.h"
#include "tools/wire/compose.h"
#include "tools/wire/progress.h"

#include <QBuffer>
#include <QFileInfo>

#include <algorithm>

namespace wire {

namespace {

QString valueOf(const QCommandLineParser &parser, const char *name)
{
    return parser.value(QLatin1String(name));
}

/// The row of a small table whose word is the option's value; nothing where it isn't given.
template <typename T, std::size_t N>
bool choose(const QCommandLineParser &parser, const char *name, const T (&choices)[N],
            std::optional<T> &chosen, QString &error)
{
    const QString word = valueOf(parser, name);
    if (!parser.isSet(QLatin1String(name)))
        return true;
    QStringList words;
    for (const T choice : choices) {
        words << QLatin1String(wordOf(choice));
        if (word == words.last())
            chosen = choice;
    }
    if (!chosen)
        error = QStringLiteral("--%1 %2: one of %3")
                    .arg(QLatin1String(name), word, words.join(QStringLiteral(", ")));
    return chosen.has_value();
}

bool refuse(QString &error, const char *name, const QString &word, const char *wanted)
{
    error = QStringLiteral("--%1 %2: %3").arg(QLatin1String(name), word, QLatin1String(wanted));
    return false;
}

/// A byte that is a row's code, or any other number.
template <typename Row>
bool readCode(const QCommandLineParser &parser, const char *name,
              const Row *(*named)(const QString &), std::optional<quint8> &code, QString &error)
{
    if (!parser.isSet(QLatin1String(name)))
        return true;
    const QString word = valueOf(parser, name);
    qint64 number = 0;
    if (const Row *row = named(word))
        code = row->code;
    else if (readNumber(word, number) && number >= 0 && number <= 255)
        code = quint8(number);
    return code.has_value() || refuse(error, name, word, "there is none of that name");
}

} // namespace

void addReadOptions(QCommandLineParser &parser)
{
    parser.addOption(
        {QStringLiteral("as-bench"),
         QStringLiteral("Cut frames as the bench does, instead of by header and checksum: of "
                        "pcapng, whose packets are the chunks.")});
    parser.addOption({QStringLiteral("date"),
                      QStringLiteral("Day of a log text's times, as 2025-11-21; else 1970-01-01."),
                      QStringLiteral("day")});
}

void addFilterOptions(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("dir"),
                      QStringLiteral("Only frames that were sent or received: tx, rx."),
                      QStringLiteral("direction")});
    parser.addOption({QStringLiteral("kind"), QStringLiteral("Only these: host, gcu, unknown."),
                      QStringLiteral("frame")});
    parser.addOption(
        {QStringLiteral("command"),
         QStringLiteral("Only frames with this command or its answer: code, id or name."),
         QStringLiteral("command")});
    parser.addOption({QStringLiteral("mode"), QStringLiteral("Only GCU frames in this work mode."),
                      QStringLiteral("mode")});
    parser.addOption({QStringLiteral("crc"),
                      QStringLiteral("Only frames whose checksum is ok, bad, or none: not there."),
                      QStringLiteral("verdict")});
    addTimeOptions(parser);
}

void addTimeOptions(QCommandLineParser &parser)
{
    parser.addOption(
        {QStringLiteral("from"),
         QStringLiteral("Begin there: 90s, 5min, 1h from the first frame, 2025-11-21T10:30:00, "
                        "or @ and a recording's seconds."),
         QStringLiteral("moment")});
    parser.addOption(
        {QStringLiteral("to"), QStringLiteral("End there."), QStringLiteral("moment")});
}

void addLanguageOption(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("language"),
                      QStringLiteral("Language of names: zh, en; else en."),
                      QStringLiteral("language"), QStringLiteral("en")});
}

void addOutputOption(QCommandLineParser &parser)
{
    parser.addOption({{QStringLiteral("o"), QStringLiteral("output")},
                      QStringLiteral("Write to this file instead of standard output."),
                      QStringLiteral("file")});
}

bool readReadOptions(const QCommandLineParser &parser, ReadOptions &options, QString &error)
{
    options.cut = parser.isSet(QStringLiteral("as-bench")) ? Cut::AsBench : Cut::Searching;
    if (!parser.isSet(QStringLiteral("date")))
        return true;
    options.date = QDate::fromString(valueOf(parser, "date"), QStringLiteral("yyyy-MM-dd"));
    return options.date.isValid() ||
           refuse(error, "date", valueOf(parser, "date"), "a day as 2025-11-21");
}

bool readFilter(const QCommandLineParser &parser, Filter &filter, QString &error)
{
    constexpr Direction kDirections[] = {Direction::Tx, Direction::Rx};
    constexpr FrameKind kKinds[] = {FrameKind::Host, FrameKind::Gcu, FrameKind::Unknown};
    constexpr Verdict kVerdicts[] = {Verdict::Ok, Verdict::Bad, Verdict::None};
    return choose(parser, "dir", kDirections, filter.direction, error) &&
           choose(parser, "kind", kKinds, filter.kind, error) &&
           choose(parser, "crc", kVerdicts, filter.verdict, error) &&
           readCode(parser, "command", commandNamed, filter.command, error) &&
           readCode(parser, "mode", modeNamed, filter.mode, error) &&
           readTimes(parser, filter, error);
}

bool readTimes(const QCommandLineParser &parser, Filter &filter, QString &error)
{
    bool isFromRelative = true, isToRelative = true;
    const bool hasFrom = parser.isSet(QStringLiteral("from")),
               hasTo = parser.isSet(QStringLiteral("to"));
    if (hasFrom && !readMoment(valueOf(parser, "from"), filter.from, isFromRelative))
        return refuse(error, "from", valueOf(parser, "from"),
                      "90s, 2025-11-21T10:30:00 or @1732190000");
    if (hasTo && !readMoment(valueOf(parser, "to"), filter.to, isToRelative))
        return refuse(error, "to", valueOf(parser, "to"),
                      "90s, 2025-11-21T10:30:00 or @1732190000");
    filter.isRelative = hasFrom ? isFromRelative : isToRelative;
    if (hasFrom && hasTo && isFromRelative != isToRelative)
        return refuse(error, "to", valueOf(parser, "to"), "of another kind than --from");
    return true;
}

bool readLanguage(const QCommandLineParser &parser, Language &language, QString &error)
{
    const QString word = valueOf(parser, "language");
    language = word == QLatin1String("zh") ? Language::Chinese : Language::English;
    return word == QLatin1String("zh") || word == QLatin1String("en") ||
           refuse(error, "language", word, "zh or en");
}

std::unique_ptr<FrameFormat> readForm(const QString &name, const QString &path, Language language,
                                      const Origin &origin, QString &error, const QString &usual)
{
    QString form = name.isEmpty() ? usual : name;
    for (const char *each : {"pcapng", "pcap", "log", "hex"})
        if (name.isEmpty() &&
            path.endsWith(QLatin1Char('.') + QLatin1String(each), Qt::CaseInsensitive))
            form = QLatin1String(each);
    if (name.isEmpty() && form == QLatin1String("pcap")) {
        error = path + QStringLiteral(": only pcapng is written");
        return nullptr;
    }
    if (form == QLatin1String("pcapng"))
        return pcapngFormat(origin);
    if (form == QLatin1String("log"))
        return logFormat(language);
    if (form == QLatin1String("hex"))
        return hexFormat();
    if (form == QLatin1String("line"))
        return lineFormat();
    refuse(error, "as", form, "pcapng, line, log or hex");
    return nullptr;
}

bool readDurationOption(const QCommandLineParser &parser, const char *name, qint64 &microseconds,
                        QString &error)
{
    const QString text = valueOf(parser, name);
    return !parser.isSet(QLatin1String(name)) ||
           (readDuration(text, microseconds) && microseconds > 0) ||
           refuse(error, name, text, "a length of time as 30ms, 10s, 5min or 1h");
}

bool readCountOption(const QCommandLineParser &parser, const char *name, int least, int &count,
                     QString &error)
{
    bool isGood = true;
    if (parser.isSet(QLatin1String(name)))
        count = valueOf(parser, name).toInt(&isGood);
    return (isGood && count >= least) ||
           refuse(error, name, valueOf(parser, name),
                  least > 0 ? "a whole number above 0" : "a whole number");
}

std::unique_ptr<RecordReader> openInput(const QString &word, const ReadOptions &options,
                                        std::function<void()> beforeRead, QString &error)
{
    QByteArray digits;
    std::unique_ptr<ByteSource> source;
    const bool isFrame =
        word.size() >= 4 && readDigits(word.toLatin1(), digits) && !QFile::exists(word);
    if (isFrame) {
        auto buffer = std::make_unique<QBuffer>();
        buffer->setData(word.toLatin1());
        buffer->open(QIODevice::ReadOnly);
        source = std::make_unique<ByteSource>(std::move(buffer));
    } else {
        source = ByteSource::open(word, error);
    }
    if (!source)
        return nullptr;
    source->beforeRead = std::move(beforeRead);
    std::unique_ptr<RecordReader> reader = makeReader(std::move(source), options, error);
    if (!reader)
        error = word + QStringLiteral(": ") + error;
    return reader;
}

void sayRemark(const QString &word, const Filter &filter)
{
    if (!filter.remark().isEmpty())
        complain(word + QStringLiteral(": ") + filter.remark());
}

bool begin(Output &output, const QString &path, const FrameFormat &format)
{
    const bool isOpen = output.open(path);
    format.begin(output.buffer());
    return isOpen;
}

bool mayWrite(const QString &target, const QStringList &inputs, QString &error)
{
    const QString path = QFileInfo(target).canonicalFilePath();
    const bool isInput = std::any_of(inputs.begin(), inputs.end(), [&](const QString &input) {
        return !path.isEmpty() && QFileInfo(input).canonicalFilePath() == path;
    });
    if (isInput)
        error = target + QStringLiteral(" is read and can't be written too");
    return !isInput;
}

namespace {

/// Hands over all records of one input; false when no more are wanted.
bool drain(RecordReader &reader, const std::function<bool(const Record &)> &take, Output &output,
           Progress &progress)
{
    bool wantsMore = true;
    for (Record record; wantsMore && reader.next(record);) {
        wantsMore = take(record) && output.settle();
        progress.advance(reader);
    }
    return wantsMore;
}

} // namespace

int forEachRecord(const QStringList &words, const ReadOptions &options, Output &output,
                  const std::function<bool()> &begin,
                  const std::function<bool(const Record &)> &take)
{
    int code = kExitDone;
    const auto failed = [&code](const QString &text) { code = complain(text); };
    Progress progress;
    bool wantsMore = true, isBegun = false;
    for (const QString &word : words.isEmpty() ? QStringList{QStringLiteral("-")} : words) {
        QString error;
        const auto reader = openInput(
            word, options, [&output] { output.flush(); }, error);
        if (!reader) {
            failed(error);
            continue;
        }
        wantsMore = wantsMore && (isBegun || begin());
        isBegun = true;
        wantsMore = wantsMore && drain(*reader, take, output, progress);
        if (!reader->trouble().isEmpty())
            failed(word + QStringLiteral(": ") + reader->trouble());
    }
    progress.end();
    if (!output.close())
        failed(output.error());
    return code;
}

} // namespace wire
