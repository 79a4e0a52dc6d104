#include "tools/podsim/podoptions.h"

#include "tools/commandline/commandline.h"
#include "tools/podsim/optionreader.h"

#include <utility>

namespace podsim {

namespace {

struct OptionRow
{
    const char *name;
    const char *value; ///< name of the value, empty for a switch
    const char *text;
};

// clang-format off
constexpr OptionRow kOptions[] = {
    {"tcp", "port", "Listen for TCP clients. The port may be left out: 2332; 0 takes a free one."},
    {"udp", "port", "Take datagrams. The port may be left out: 2337; 0 takes a free one."},
    {"udp-reply", "port", "Answer datagrams to this port of their sender's address: 2338."},
    {"pty", "link", "Open a pseudo-terminal and put a symbolic link to it at <link>. Not on "
                    "Windows, which has none."},
    {"listen", "address", "Listen on this address: 127.0.0.1."},
    {"start-mode", "hex", "Start in this work mode, 10 to 14, 16, 17 or 1C: 12, which is follow."},
    {"rtsp", "port", "Stream the camera's picture. The port may be left out: 8554; 0 takes a free "
                     "one. The path is /pod. Not on Windows."},
    {"size", "WxH", "Size of the picture in pixels: 1280x720."},
    {"rtsp-audio", "", "Add a sound track."},
    {"rtsp-stamp", "", "Mark each picture with its time and number, to be read by a machine."},
    {"control", "", "Read lines from standard input: size WxH, freeze, thaw, drop (the clients), "
                    "rtsp stop, rtsp start."},
    {"verbose", "", "Show idle and repeated frames and every answer too."},
};
// clang-format on

/// Options whose value may be left out.
constexpr std::pair<const char *, const char *> kUsualPorts[] = {
    {"--tcp", "2332"}, {"--udp", "2337"}, {"--rtsp", "8554"}};

constexpr int kLeastSide = 64; // pixels
constexpr QSize kLargestSize(3840, 2160);

bool isNumber(const QString &text)
{
    for (const QChar c : text)
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return false;
    return !text.isEmpty();
}

/// Gives options the port that they may do without.
QStringList completed(const QStringList &arguments)
{
    QStringList result;
    for (int i = 0; i < arguments.size(); ++i) {
        result.append(arguments[i]);
        for (const auto &usual : kUsualPorts)
            if (arguments[i] == QLatin1String(usual.first) && !isNumber(arguments.value(i + 1)))
                result.append(QLatin1String(usual.second));
    }
    return result;
}

void readLinks(OptionReader &reader, PodOptions &options)
{
    options.tcpPort = reader.port("tcp", 0);
    options.udpPort = reader.port("udp", 0);
    options.udpReplyPort = reader.port("udp-reply", 1);
    if (reader.has("pty"))
        options.ptyLink = reader.text("pty");
    if (options.ptyLink && options.ptyLink->isEmpty())
        reader.refuse("pty", QStringLiteral("a file name is needed"));
#ifdef Q_OS_WIN
    if (options.ptyLink)
        reader.refuse("pty", QStringLiteral("Windows has no pseudo-terminals"));
#endif
    if (options.udpReplyPort && !reader.has("udp"))
        reader.refuse("udp-reply", QStringLiteral("there is no --udp"));
    if (reader.has("listen") && !options.address.setAddress(reader.text("listen")))
        reader.refuse("listen", QStringLiteral("not an IP address"));
}

void readMode(OptionReader &reader, PodOptions &options)
{
    if (!reader.has("start-mode"))
        return;
    bool isGood = false;
    const int code = reader.text("start-mode").toInt(&isGood, 16);
    if (isGood && modeName(code))
        options.startMode = PodMode(code);
    else
        reader.refuse("start-mode", QStringLiteral("one of 10, 11, 12, 13, 14, 16, 17, 1C"));
}

void readStream(OptionReader &reader, StreamOptions &stream)
{
    stream.port = reader.port("rtsp", 0);
    stream.hasSound = reader.has("rtsp-audio");
    stream.hasStamp = reader.has("rtsp-stamp");
    stream.hasControl = reader.has("control");
    for (const char *name : {"size", "rtsp-audio", "rtsp-stamp", "control"})
        if (reader.has(name) && !reader.has("rtsp"))
            reader.refuse(name, QStringLiteral("there is no --rtsp"));
    if (!reader.has("size"))
        return;
    if (const std::optional<QSize> size = parseSize(reader.text("size")))
        stream.size = *size;
    else
        reader.refuse("size", QStringLiteral("even numbers from 64x64 to 3840x2160 are needed"));
}

void describeOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "A simulated camera pod: answers the host frames of the GCU private protocol "
        "and prints a line for each event."));
    addStandardOptions(parser);
    for (const OptionRow &row : kOptions)
        parser.addOption(
            {QLatin1String(row.name), QLatin1String(row.text), QLatin1String(row.value)});
    addFaultOptions(parser);
}

void readOptions(OptionReader &reader, PodOptions &options)
{
    readLinks(reader, options);
    readMode(reader, options);
    readFaults(reader, options.faults);
    readStream(reader, options.stream);
    options.isVerbose = reader.has("verbose");
}

QString missingLink()
{
    return QStringLiteral(
        "no link: give --tcp [port], --udp [port], --pty <link> or --rtsp [port], or several");
}

} // namespace

std::optional<QSize> parseSize(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char('x'));
    if (parts.size() != 2 || !isNumber(parts[0]) || !isNumber(parts[1]))
        return {};
    const QSize size(parts[0].toInt(), parts[1].toInt());
    const bool isEven = size.width() % 2 == 0 && size.height() % 2 == 0;
    const bool isWithin = size.width() >= kLeastSide && size.height() >= kLeastSide &&
                          size.boundedTo(kLargestSize) == size;
    return isEven && isWithin ? std::optional<QSize>(size) : std::nullopt;
}

ParsedOptions parseOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    describeOptions(parser);
    ParsedOptions parsed;
    if (!parser.parse(completed(arguments))) {
        parsed.error = parser.errorText();
        return parsed;
    }
    parsed.answer = standardAnswer(parser);
    if (!parsed.answer.isEmpty())
        return parsed;
    OptionReader reader(parser);
    readOptions(reader, parsed.options);
    parsed.error = reader.error();
    if (!parser.positionalArguments().isEmpty())
        parsed.error = QStringLiteral("unexpected: %1").arg(parser.positionalArguments().first());
    else if (!reader.has("tcp") && !reader.has("udp") && !reader.has("pty") &&
             !reader.has("rtsp") && parsed.error.isEmpty())
        parsed.error = missingLink();
    return parsed;
}

} // namespace podsim
