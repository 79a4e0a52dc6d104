#include "tools/wire/textbuffer.h"

#include <charconv>

namespace wire {

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";
constexpr int kMicrosecondDigits = 6;

} // namespace

void TextBuffer::putHex(const char *bytes, int size)
{
    char *out = room(2 * size);
    for (int i = 0; i < size; ++i) {
        *out++ = kDigits[quint8(bytes[i]) >> 4];
        *out++ = kDigits[bytes[i] & 0x0F];
    }
}

void TextBuffer::putNumber(qint64 value)
{
    char text[24];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    put(text, int(end - text));
}

void TextBuffer::putDecimal(qint64 raw, int decimals)
{
    char fraction[20];
    quint64 rest = raw < 0 ? 0 - quint64(raw) : quint64(raw);
    int used = 0;
    for (int i = decimals - 1; i >= 0; --i, rest /= 10) {
        fraction[i] = char('0' + rest % 10);
        used = fraction[i] != '0' && used == 0 ? i + 1 : used;
    }
    if (raw < 0)
        put('-');
    putNumber(qint64(rest));
    if (used > 0) {
        put('.');
        put(fraction, used);
    }
}

void TextBuffer::putTime(qint64 microseconds)
{
    constexpr qint64 kSecond = 1000000;
    const bool isBefore = microseconds < 0;
    const quint64 whole = isBefore ? 0 - quint64(microseconds) : quint64(microseconds);
    if (isBefore)
        put('-');
    putNumber(qint64(whole / kSecond));
    char *out = room(1 + kMicrosecondDigits);
    out[0] = '.';
    quint64 rest = whole % kSecond;
    for (int i = kMicrosecondDigits; i > 0; --i, rest /= 10)
        out[i] = char('0' + rest % 10);
}

void TextBuffer::putQuoted(const QByteArray &utf8)
{
    put('"');
    for (const char c : utf8) {
        if (c == '"' || c == '\\')
            put('\\');
        if (quint8(c) >= 0x20)
            put(c);
        else
            put(QByteArray("\\u00") + QByteArray(1, c).toHex());
    }
    put('"');
}

} // namespace wire
