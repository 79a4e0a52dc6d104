#include "tools/wire/compose.h"

#include "protocol/codec.h"
#include "tools/wire/framefields.h"
#include "tools/wire/names.h"

#include <cmath>

namespace wire {

namespace {

constexpr int kVersionOffset = 4;
constexpr int kSubFrameOffset = 37;

QString beyond(const QString &id, const QString &text)
{
    return QStringLiteral("%1=%2: beyond what the field holds").arg(id, text);
}

/// The text as the bench takes it, in decimal; an error for what the bench would silently make a 0
/// or a number of the lower bits.
QString plainText(const QString &id, const QString &text, Range range, double k, QString &error)
{
    qint64 whole = 0;
    if (k <= 1) {
        if (!readNumber(text, whole))
            error = QStringLiteral("%1=%2: not a whole number").arg(id, text);
        else if (whole < range.least || whole > range.most)
            error = beyond(id, text);
        return QString::number(whole);
    }
    bool isGood = false;
    const double product = std::trunc(text.toDouble(&isGood) * k);
    if (!isGood || !std::isfinite(product))
        error = QStringLiteral("%1=%2: not a number").arg(id, text);
    else if (product < double(range.least) || product > double(range.most))
        error = beyond(id, text);
    return text;
}

bool isResult(const QString &text, qint64 &code)
{
    const char *const words[] = {"success", "failure", "executing"};
    for (code = 0; code < 3; ++code) {
        if (text == QLatin1String(words[code]))
            return true;
    }
    return readNumber(text, code) && code >= 0 && code <= 255;
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

    void setArea(const QByteArray &area) { m_area = area; }

    void setCommand(const QString &word, const QMap<QString, QString> &params)
    {
        const CommandRow *row = commandNamed(word);
        qint64 code = 0;
        if (row)
            m_area =
                m_kind == FrameKind::Host ? payload(*row, params) : QByteArray(1, char(row->code));
        else if (readNumber(word, code) && code >= 0 && code <= 255)
            m_area = QByteArray(1, char(code));
        else
            m_error = QStringLiteral("no such command: ") + word;
    }

    void setResult(const QString &word)
    {
        qint64 code = 0;
        if (!isResult(word, code) || m_area.isEmpty())
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
        const QString plain = mode ? QString::number(mode->code)
                                   : plainText(QLatin1String(field.id), text, rangeOf(field.kind),
                                               field.scale.k, m_error);
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
            if (left.removeAll(id) == 0)
                m_error = QStringLiteral("%1 needs %2").arg(QLatin1String(row.id), id);
            else
                texts[i] =
                    plainText(id, params[id], rangeOf(param.kind), scaleOf(param.kind), m_error);
        }
        if (!left.isEmpty())
            m_error = QStringLiteral("%1 has no %2").arg(QLatin1String(row.id), left.first());
        return commandBytes(row, texts);
    }

    FrameKind m_kind;
    QByteArray m_fixed;
    QByteArray m_area;
    std::optional<QByteArray> m_crc;
    bool m_hasLength = false;
    QString m_error;
};

/// Puts one `name=value` where it belongs.
QString takePair(const QString &pair, FrameWords &words)
{
    const int sign = pair.indexOf(QLatin1Char('='));
    if (sign <= 0)
        return QStringLiteral("name=value is needed: ") + pair;
    const QString name = pair.left(sign), value = pair.mid(sign + 1);
    qint64 raw = 0;
    QByteArray area;
    if (name == QLatin1String(words.kind == FrameKind::Host ? "command" : "feedback"))
        words.command = value;
    else if (name == QLatin1String("result") && words.kind == FrameKind::Gcu)
        words.result = value;
    else if (name == QLatin1String("area") && readDigits(value.toLatin1(), area))
        words.area = area;
    else if (name.startsWith(QLatin1String("raw.")) && readNumber(value, raw))
        words.raws.append({name.mid(4), raw});
    else if (name.startsWith(QLatin1String("param.")))
        words.params.insert(name.mid(6), value);
    else if (fieldNamed(words.kind, name))
        words.values.append({name, value});
    else if (words.kind == FrameKind::Host && name.indexOf(QLatin1Char('.')) < 0)
        words.params.insert(name, value);
    else
        return QStringLiteral("not understood: ") + pair;
    return {};
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

Composed composeFrame(const FrameWords &words)
{
    Draft draft(words);
    if (words.area)
        draft.setArea(*words.area);
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
    for (const QString &pair : pairs) {
        failed.error = takePair(pair, words);
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
