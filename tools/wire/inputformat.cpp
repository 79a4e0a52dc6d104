#include "tools/wire/inputformat.h"

#include "tools/wire/compose.h"

#include <QTextCodec>

#include <algorithm>

namespace wire {

namespace {

constexpr int kMostSniffed = 4096;
constexpr int kEnoughOfLine = 64;
constexpr int kMagicSize = 4;
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

struct Magic
{
    const char *bytes;
    Format format;
};
constexpr Magic kMagics[] = {
    {"\x0A\x0D\x0D\x0A", Format::Pcapng},  {"\xA1\xB2\xC3\xD4", Format::OldPcap},
    {"\xD4\xC3\xB2\xA1", Format::OldPcap}, {"\xA1\xB2\x3C\x4D", Format::OldPcap},
    {"\x4D\x3C\xB2\xA1", Format::OldPcap}, {"\x1F\x8B\x08", Format::Packed},
};

bool isText(const QByteArray &bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) {
        return quint8(c) >= 0x20 || c == '\n' || c == '\r' || c == '\t';
    });
}

/// A character that is cut at the end is none too few.
bool isUtf8(const QByteArray &bytes)
{
    QTextCodec::ConverterState state;
    QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0;
}

/// With its mark, and a first character such as all forms begin with.
bool isUtf16(const QByteArray &bytes)
{
    return bytes.size() >= kMagicSize &&
           ((bytes.startsWith("\xFF\xFE") && bytes[3] == 0 && bytes[2] != 0) ||
            (bytes.startsWith("\xFE\xFF") && bytes[2] == 0 && bytes[3] != 0));
}

/// The first line that may hold a frame, as far as it is there.
QByteArray firstLine(const QByteArray &text)
{
    int at = text.startsWith(kByteOrderMark) ? 3 : 0;
    for (int end = text.indexOf('\n', at); end >= 0; end = text.indexOf('\n', at)) {
        if (!isRemark(text.mid(at, end - at)))
            return text.mid(at, qMin(end + 1 - at, kEnoughOfLine));
        at = end + 1;
    }
    return text.mid(at, kEnoughOfLine);
}

/// Whether the first bytes show what the input is: a whole line, some that no text has, or enough.
bool isTelling(const QByteArray &bytes)
{
    if (bytes.size() >= kMostSniffed || (bytes.size() >= kMagicSize && !isText(bytes)))
        return true;
    const QByteArray line = firstLine(bytes);
    return line.endsWith('\n') || (line.size() >= kEnoughOfLine && !isRemark(line));
}

/// As many of the first bytes as show it: they alone count, however many more are there.
int tellingSize(const QByteArray &bytes)
{
    int size = 0;
    while (size < bytes.size() && !isTelling(bytes.left(size)))
        ++size;
    return size;
}

/// Of the line alone: a log stays one after a line that is broken.
Format formatOfLine(const QByteArray &line)
{
    if (isRemark(line))
        return Format::Hex; // nothing but remarks
    const QByteArray text = line.trimmed();
    if (text.startsWith('('))
        return Format::Line;
    if (text.startsWith('[') && text.size() > 1 && text[1] >= '0' && text[1] <= '9')
        return Format::Log; // a time of day; a device may begin with a word in brackets
    QByteArray digits;
    const bool isHex = readDigits(text, digits) ||
                       (line.size() >= kEnoughOfLine && readDigits(text.chopped(1), digits));
    return isHex ? Format::Hex : Format::OtherText;
}

} // namespace

Format formatOf(const char *bytes, int size)
{
    const QByteArray head = QByteArray::fromRawData(bytes, qMin(size, kMostSniffed));
    const QByteArray telling = head.left(tellingSize(head));
    for (const Magic &magic : kMagics)
        if (telling.startsWith(magic.bytes))
            return magic.format;
    if (isUtf16(telling))
        return Format::Utf16;
    const Format format = isText(telling) ? formatOfLine(firstLine(telling)) : Format::Raw;
    const bool isStream = format == Format::OtherText && !(isText(head) && isUtf8(head));
    return isStream ? Format::Raw : format;
}

Format formatOf(ByteSource &source)
{
    int size = 0;
    const auto grows = [&] { return source.fill(size + 1) > size; };
    while (!isTelling(QByteArray::fromRawData(source.data(), size)) && grows())
        ++size;
    // A stream of a device may begin with words.
    while (size < kMostSniffed && formatOf(source.data(), size) == Format::OtherText && grows())
        size = qMin(source.size(), kMostSniffed);
    return formatOf(source.data(), size);
}

QString refusalOf(Format format)
{
    switch (format) {
    case Format::OldPcap:
        return QStringLiteral(
            "a pcap file of the old form; `editcap -F pcapng` makes one that is read");
    case Format::Packed:
        return QStringLiteral("a packed file; `gunzip` it first");
    case Format::OtherText:
        return QStringLiteral("text that is neither line form, log text nor hexadecimal digits");
    default:
        return {};
    }
}

bool isRemark(const QByteArray &line)
{
    const QByteArray text = line.trimmed();
    return text.isEmpty() || text.startsWith('#');
}

} // namespace wire
