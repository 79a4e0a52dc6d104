#include "tools/wire/compose.h"

#include "protocol/codec.h"
#include "tools/wire/decode.h"
#include "tools/wire/framefields.h"
#include "tools/wire/names.h"

#include <QSet>

#include <cmath>

namespace wire {

namespace {

constexpr int kVersionOffset = 4;
constexpr int kSubFrameOffset = 37;

QString beyond(const QString &id, const QString &text)
{
    return QStringLiteral("%1=%2: beyond what the field holds").arg(id, text);
}

/// How a number is parsed: in a whole number's range, or as a decimal one times K, truncated.
struct Parsing
{
    Range range;
    double k;
    bool isWhole;
};

Parsing parsingOf(const protocol::Field &field)
{
    return {rangeOf(field.kind), field.scale.k, field.scale.factor == 0};
}

Parsing parsingOf(ParamKind kind)
{
    const bool isWhole =
        kind == ParamKind::Byte || kind == ParamKind::U16 || kind == ParamKind::I16;
    return {rangeOf(kind), scaleOf(kind), isWhole};
}

/// The text as the bench takes it, in decimal; an error for what the bench would silently make a 0
/// or a number of the lower bits.
QString plainText(const QString &id, const QString &text, const Parsing &parsing, QString &error)
{
    const Range &range = parsing.range;
    qint64 whole = 0;
    if (parsing.isWhole) {
        if (!readNumber(text, whole))
            error = QStringLiteral("%1=%2: not a whole number").arg(id, text);
        else if (whole < range.least || whole > range.most)
            error = beyond(id, text);
        return QString::number(whole);
    }
    bool isGood = false;
    const double product = std::trunc(text.toDouble(&isGood) * parsing.k);
    if (!isGood || !std::isfinite(product))
        error = QStringLiteral("%1=%2: not a number").arg(id, text);
    else if (product < double(range.least) || product > double(range.most))
        error = beyond(id, text);
    return text;
}

bool readByte(const QString &text, quint8 &byte)
{
    qint64 number = 0;
    const bool isByte = readNumber(text, number) && number >= 0 && number <= 255;
    byte = quint8(number);
    return isByte;
}

bool isSameNumber(const QString &text, const QByteArray &shown)
{
    qint64 whole = 0;
    bool isGood = true;
    const double number = readNumber(text, whole) ? double(whole) : text.toDouble(&isGood);
    return isGood && number == shown.toDouble();
}

/// The parameters that aren't those of the area.
QStringList otherParams(const QByteArray &area, const QMap<QString, QString> &params)
{
    QStringList others = params.keys();
    const CommandView view = commandIn(area.constData(), area.size());
    if (!view.row)
        return others;
    forEachParam(*view.row, area.constData(), area.size(), [&](const Param &param, const char *at) {
        TextBuffer shown;
        putParam(param.kind, at, shown);
        const QString id = QLatin1String(param.id);
        if (isSameNumber(params.value(id), shown.bytes()))
            others.removeAll(id);
    });
    return others;
}

/// What the words say beside the digits of an area that isn't so; empty for nothing.
QString contradictionOf(const QByteArray &area, const FrameWords &words)
{
    quint8 code = 0, result = 0;
    const bool hasCode = readCommandCode(words.command, code) && area.startsWith(char(code));
    const bool hasResult =
        area.size() > 1 && readResult(words.result, result) &&
        (quint8(area[1]) == result || words.result == QLatin1String(resultWord(quint8(area[1]))));
    const QStringList others = otherParams(area, words.params);
    if (!words.command.isEmpty() && !hasCode)
        return words.command;
    if (!words.result.isEmpty() && !hasResult)
        return words.result;
    return others.isEmpty() ? QString()
                            : others.first() + QLatin1Char('=') + words.params[others.first()];
}

/// A frame on its way: fixed block, area, and what was given for its length and checksum.
class Draft
{
public:
    explicit Draft(const FrameWords &words) : m_kind(words.kind), m_fixed(kFixedSize, '\0')
    {
        const protocol::Field &header = fieldsOf(m_kind).front();
        m_fixed.replace(0, 2, fieldBytes(header, QString()));
        m_fixed[kVersionOffset] = 1;
        m_fixed[kSubFrameOffset] = 1;
        if (m_kind == FrameKind::Host)
            m_area = QByteArray(1, '\0');
        if (!words.base.isEmpty())
            beginWith(words.base);
    }

    void setValue(const QString &id, const QString &text)
    {
        const protocol::Field *field = fieldNamed(m_kind, id);
        if (!field || field->size == 0)
            m_error = QStringLiteral("no such field: ") + id;
        else if (isNumber(field->kind))
            put(*field, numberBytes(*field, text));
        else
            put(*field, digitBytes(*field, text));
    }

    void setRaw(const QString &id, qint64 raw)
    {
        const protocol::Field *field = fieldNamed(m_kind, id);
        if (!field || !isNumber(field->kind)) {
            m_error = QStringLiteral("no such number: ") + id;
            return;
        }
        const Range range = rangeOf(field->kind);
        if (raw < range.least || raw > range.most)
            m_error = beyond(id, QString::number(raw));
        QByteArray bytes(field->size, '\0');
        storeNumber(field->kind, raw, bytes.data());
        put(*field, bytes);
    }

    void setArea(const QByteArray &area, const FrameWords &words)
    {
        m_area = area;
        const QString other = contradictionOf(area, words);
        if (!other.isEmpty())
            m_error = QStringLiteral("%1, but area=%2 says otherwise")
                          .arg(other, QString::fromLatin1(area.toHex().toUpper()));
    }

    void setCommand(const QString &word, const QMap<QString, QString> &params)
    {
        const CommandRow *row = commandNamed(word);
        quint8 code = 0;
        if (row && m_kind == FrameKind::Host) {
            m_area = payload(*row, params);
            return;
        }
        if (!readCommandCode(word, code))
            m_error = QStringLiteral("no such command: ") + word;
        else if (!params.isEmpty())
            m_error = QStringLiteral("%1 takes no %2; area= takes any bytes")
                          .arg(word, params.firstKey());
        m_area = QByteArray(1, char(code));
    }

    void setResult(const QString &word)
    {
        quint8 code = 0;
        if (!readResult(word, code) || m_area.isEmpty())
            m_error =
                QStringLiteral("result=%1: 0 to 255, success, failure or executing is needed, "
                               "and a feedback")
                    .arg(word);
        else
            m_area = m_area.left(1) + char(code);
    }

    Composed finished()
    {
        Composed made;
        made.error = m_error;
        QByteArray &frame = made.record.bytes;
        frame = m_fixed + m_area;
        if (!m_hasLength)
            writeU16At(frame.data(), 2, quint16(frame.size() + kCrcSize));
        if (m_crc)
            frame.append(*m_crc);
        else
            appendCrc(frame);
        return made;
    }

private:
    void beginWith(const QByteArray &base)
    {
        m_fixed = (base.left(kFixedSize) + m_fixed.mid(base.size())).left(kFixedSize);
        const Span span = areaOf(m_kind, base.constData(), base.size());
        m_area = base.mid(span.offset, span.size);
    }

    void put(const protocol::Field &field, const QByteArray &bytes)
    {
        if (field.kind == FieldKind::Crc)
            m_crc = bytes;
        else if (m_error.isEmpty())
            m_fixed.replace(field.offset, field.size, bytes);
        m_hasLength = m_hasLength || field.kind == FieldKind::Length;
    }

    QByteArray numberBytes(const protocol::Field &field, const QString &text)
    {
        const ModeRow *mode = field.kind == FieldKind::Mode ? modeNamed(text) : nullptr;
        const QString plain =
            mode ? QString::number(mode->code)
                 : plainText(QLatin1String(field.id), text, parsingOf(field), m_error);
        return fieldBytes(field, plain);
    }

    QByteArray digitBytes(const protocol::Field &field, const QString &text)
    {
        QByteArray bytes;
        if (!readDigits(text.toLatin1(), bytes) || bytes.size() != field.size)
            m_error = QStringLiteral("%1=%2: %3 digits are needed")
                          .arg(QLatin1String(field.id), text)
                          .arg(2 * field.size);
        return bytes;
    }

    QByteArray payload(const CommandRow &row, const QMap<QString, QString> &params)
    {
        std::array<QString, kMaxParams> texts;
        QStringList left = params.keys();
        for (std::size_t i = 0; i < std::size_t(paramCount(row)); ++i) {
            const Param &param = row.params[i];
            const QString id = QLatin1String(param.id);
            if (left.removeAll(id) > 0)
                texts[i] = plainText(id, params[id], parsingOf(param.kind), m_error);
            else if (m_error.isEmpty())
                m_error = QStringLiteral("%1 needs %2").arg(QLatin1String(row.id), nameOfParam(id));
        }
        if (!left.isEmpty() && m_error.isEmpty())
            m_error = QStringLiteral("%1 has no %2").arg(QLatin1String(row.id), left.first());
        return commandBytes(row, texts);
    }

    /// As it has to be given: the name alone is that of a field where there is one.
    QString nameOfParam(const QString &id) const
    {
        return fieldNamed(m_kind, id) ? QStringLiteral("param.") + id : id;
    }

    FrameKind m_kind;
    QByteArray m_fixed;
    QByteArray m_area;
    std::optional<QByteArray> m_crc;
    bool m_hasLength = false;
    QString m_error;
};

QString takeArea(const QString &digits, FrameWords &words)
{
    QByteArray area;
    if (!readDigits(digits.toLatin1(), area))
        return QStringLiteral("area=%1: not in hexadecimal digits").arg(digits);
    words.area = area;
    return {};
}

QString takeRaw(const QString &id, const QString &value, FrameWords &words)
{
    qint64 raw = 0;
    if (!readNumber(value, raw))
        return QStringLiteral("raw.%1=%2: not a whole number").arg(id, value);
    words.raws.append({id, raw});
    return {};
}

/// Puts one value where its name belongs.
QString takePair(const QString &name, const QString &value, FrameWords &words)
{
    const bool isHost = words.kind == FrameKind::Host;
    if (name == QLatin1String("area"))
        return takeArea(value, words);
    if (name.startsWith(QLatin1String("raw.")))
        return takeRaw(name.mid(4), value, words);
    if (name == QLatin1String(isHost ? "command" : "feedback"))
        words.command = value;
    else if (name == QLatin1String("result") && !isHost)
        words.result = value;
    else if (fieldNamed(words.kind, name))
        words.values.append({name, value});
    else if (isHost && name.startsWith(QLatin1String("param.")))
        words.params.insert(name.mid(6), value);
    else if (isHost && name.indexOf(QLatin1Char('.')) < 0)
        words.params.insert(name, value);
    else
        return QStringLiteral("no such field: ") + name;
    return {};
}

/// What a name sets, which may stand once: a field has two names, and a parameter.
QString targetOf(FrameKind kind, const QString &name)
{
    if (name.startsWith(QLatin1String("raw.")))
        return name.mid(4);
    const QString id = name.startsWith(QLatin1String("param.")) ? name.mid(6) : QString();
    return id.isEmpty() || fieldNamed(kind, id) ? name : id;
}

int digitOf(char c)
{
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                  : -1;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

} // namespace

bool readCommandCode(const QString &word, quint8 &code)
{
    if (const CommandRow *row = commandNamed(word)) {
        code = row->code;
        return true;
    }
    return readByte(word, code);
}

bool readResult(const QString &word, quint8 &code)
{
    for (code = 0; code < 3; ++code) {
        if (word == QLatin1String(resultWord(code)))
            return true;
    }
    return readByte(word, code);
}

Composed composeFrame(const FrameWords &words)
{
    Draft draft(words);
    if (words.area)
        draft.setArea(*words.area, words);
    else if (!words.command.isEmpty())
        draft.setCommand(words.command, words.params);
    if (!words.area && !words.result.isEmpty())
        draft.setResult(words.result);
    for (const auto &value : words.values)
        draft.setValue(value.first, value.second);
    for (const auto &raw : words.raws)
        draft.setRaw(raw.first, raw.second);
    return draft.finished();
}

Composed composePairs(FrameKind kind, const QStringList &pairs)
{
    FrameWords words;
    words.kind = kind;
    Composed failed;
    QSet<QString> given;
    for (const QString &pair : pairs) {
        const int sign = pair.indexOf(QLatin1Char('='));
        const QString name = pair.left(sign), target = targetOf(kind, name);
        failed.error = sign <= 0                ? QStringLiteral("name=value is needed: ") + pair
                       : given.contains(target) ? target + QStringLiteral(" is given twice")
                                                : takePair(name, pair.mid(sign + 1), words);
        given.insert(target);
        if (!failed.error.isEmpty())
            return failed;
    }
    if (words.command.isEmpty() && !words.params.isEmpty()) {
        failed.error =
            QStringLiteral("no such field, and no command to take it: ") + words.params.firstKey();
        return failed;
    }
    return composeFrame(words);
}

bool readDigits(const char *text, int size, QByteArray &bytes)
{
    bytes.resize(size / 2 + 1);
    int high = -1, count = 0;
    for (int i = 0; i < size; ++i) {
        const int digit = digitOf(text[i]);
        if (digit < 0 && !isBlank(text[i]))
            return false;
        if (digit < 0)
            continue;
        if (high < 0) {
            high = digit;
            continue;
        }
        bytes[count++] = char(high << 4 | digit);
        high = -1;
    }
    bytes.resize(count);
    return high < 0;
}

bool readDigits(const QByteArray &text, QByteArray &bytes)
{
    return readDigits(text.constData(), text.size(), bytes);
}

} // namespace wire
