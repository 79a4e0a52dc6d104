#include "tools/wire/compose.h"

#include "tools/wire/decode.h"
#include "tools/wire/framefields.h"
#include "tools/wire/jsonkeys.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace wire {

namespace {

const QString kFields = QStringLiteral("fields");
const QString kRaw = QStringLiteral("raw");
const QString kLength = QStringLiteral("length");
const QString kCrc = QStringLiteral("crc");
constexpr double kFarthest = 9e12; // seconds, as microseconds within 64 bits

/// Numbers as an operator would type them.
QString textOf(const QJsonValue &value)
{
    return value.isDouble() ? QString::number(value.toDouble(), 'g', 15) : value.toString();
}

/// Whether the value is what that integer is shown as.
bool isValueOf(const protocol::Field &field, const QJsonValue &value, qint64 raw)
{
    QByteArray bytes(4, '\0');
    storeNumber(field.kind, raw, bytes.data());
    TextBuffer shown;
    putValue(field, bytes.constData(), shown);
    return value.isDouble() ? shown.bytes().toDouble() == value.toDouble()
                            : value.toString().toUtf8() == shown.bytes();
}

QJsonObject decoded(const QByteArray &bytes)
{
    TextBuffer text;
    Record record;
    record.bytes = bytes;
    jsonFormat()->add(record, text);
    return QJsonDocument::fromJson(text.bytes()).object();
}

/// Length and checksum that are what they should be are made anew, others are kept.
bool isMade(const QString &id, const QJsonObject &frame)
{
    if (id == kCrc)
        return frame.value(kCrc).toString() == QLatin1String("ok");
    return id == kLength && frame.value(kFields).toObject().value(id) == frame.value(kLength);
}

void takeField(const protocol::Field &field, const QJsonObject &frame, const QJsonObject &base,
               FrameWords &words)
{
    const QString id = QLatin1String(field.id);
    const QJsonValue value = frame.value(kFields).toObject().value(id);
    const QJsonValue raw = frame.value(kRaw).toObject().value(id);
    const bool isOldValue = value == base.value(kFields).toObject().value(id);
    const bool isOldRaw = raw == base.value(kRaw).toObject().value(id);
    const bool isOuter = id == kLength || id == kCrc; // would be made anew with all that changes
    if (isMade(id, frame) || (isOldValue && isOldRaw && !base.isEmpty() && !isOuter))
        return;
    const bool isWhole = raw.isDouble() && std::abs(raw.toDouble()) < 1e10;
    const bool isAlone = value.isUndefined() || (isOldValue && !base.isEmpty());
    if (isWhole && (isAlone || isValueOf(field, value, qint64(raw.toDouble()))))
        words.raws.append({id, qint64(raw.toDouble())});
    else if (!value.isUndefined())
        words.values.append({id, textOf(value)});
}

/// The second of two keys that say the same, where it alone was edited, or stands alone.
QJsonValue eitherOf(const char *first, const char *second, const QJsonObject &object,
                    const QJsonObject &base)
{
    const QLatin1String one(first), other(second);
    const bool isOther = object.value(one) == base.value(one) && object.contains(other) &&
                         object.value(other) != base.value(other);
    return object.value(isOther ? other : one);
}

void takeArea(const QJsonObject &area, const QJsonObject &base, FrameWords &words, QString &error)
{
    const QJsonObject params = area.value(QStringLiteral("params")).toObject();
    for (auto param = params.begin(); param != params.end(); ++param)
        words.params.insert(param.key(), textOf(param.value()));
    words.command = textOf(eitherOf("name", "code", area, base));
    words.result = textOf(eitherOf("result", "state", area, base));
    const QJsonValue digits = area.value(QStringLiteral("area"));
    QByteArray bytes;
    if (digits.isUndefined()) {
        if (words.command.isEmpty())
            error = QStringLiteral("a name or code is needed");
        return;
    }
    if (!readDigits(digits.toString().toLatin1(), bytes))
        error = QStringLiteral("area isn't in hexadecimal digits");
    words.area = bytes;
}

FrameKind kindNamed(const QString &word, const QByteArray &base)
{
    if (word.isEmpty())
        return base.isEmpty() ? FrameKind::Host : kindOf(base);
    return word == QLatin1String("host")  ? FrameKind::Host
           : word == QLatin1String("gcu") ? FrameKind::Gcu
                                          : FrameKind::Unknown;
}

/// Whether fields and area are those of the base, so that its bytes go out whatever they are.
bool isUnchanged(const QJsonObject &frame, const QJsonObject &base)
{
    for (const char *key : {"fields", "raw", "command", "feedback"}) {
        const QJsonValue value = frame.value(QLatin1String(key));
        if (!value.isUndefined() && value != base.value(QLatin1String(key)))
            return false;
    }
    return true;
}

/// The bytes to begin with and the kind of frame; why the object isn't that of a frame, if it
/// isn't.
QString beginWith(const QJsonObject &frame, FrameWords &words)
{
    if (!readDigits(frame.value(QStringLiteral("hex")).toString().toLatin1(), words.base))
        return QStringLiteral("hex: not in hexadecimal digits");
    words.kind = kindNamed(frame.value(QStringLiteral("frame")).toString(), words.base);
    const QString mistake = mistakeIn(frame, words.kind);
    if (!mistake.isEmpty())
        return mistake;
    if (!words.base.isEmpty() && words.kind != kindOf(words.base))
        return QStringLiteral("frame: hex is of another one");
    return words.base.isEmpty() && words.kind == FrameKind::Unknown
               ? QStringLiteral("frame: host or gcu is needed")
               : QString();
}

Composed composeObject(const QJsonObject &frame)
{
    Composed made;
    FrameWords words;
    made.error = beginWith(frame, words);
    if (!made.error.isEmpty())
        return made;
    const QJsonObject base = words.base.isEmpty() ? QJsonObject() : decoded(words.base);
    if (!base.isEmpty() && (words.kind == FrameKind::Unknown || isUnchanged(frame, base))) {
        made.record.bytes = words.base;
        return made;
    }
    for (const protocol::Field &field : fieldsOf(words.kind))
        if (field.size > 0)
            takeField(field, frame, base, words);
    const QString key =
        words.kind == FrameKind::Host ? QStringLiteral("command") : QStringLiteral("feedback");
    const QJsonValue area = frame.value(key);
    if (area.isObject() && (base.isEmpty() || area != base.value(key)))
        takeArea(area.toObject(), base.value(key).toObject(), words, made.error);
    if (made.error.isEmpty())
        return composeFrame(words);
    made.error.prepend(key + QStringLiteral(": "));
    return made;
}

} // namespace

Composed composeJson(const QByteArray &line)
{
    QJsonParseError parsed;
    const QJsonDocument document = QJsonDocument::fromJson(line, &parsed);
    Composed made;
    if (!document.isObject()) {
        made.error = QStringLiteral("not a JSON object");
        if (parsed.error != QJsonParseError::NoError)
            made.error += QStringLiteral(": ") + parsed.errorString();
        return made;
    }
    const QJsonObject frame = document.object();
    made = composeObject(frame);
    made.record.direction = directionOf(frame.value(QStringLiteral("dir")).toString().toLatin1());
    const QJsonValue time = frame.value(QStringLiteral("time"));
    if (std::abs(time.toDouble()) > kFarthest)
        made.error = QStringLiteral("time: beyond what a recording holds");
    else if (time.isDouble())
        made.record.time = qRound64(time.toDouble() * 1e6);
    return made;
}

} // namespace wire
