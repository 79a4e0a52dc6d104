#include "tools/wire/compose.h"

#include "tools/wire/decode.h"
#include "tools/wire/framefields.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace wire {

namespace {

const QString kFields = QStringLiteral("fields");
const QString kRaw = QStringLiteral("raw");
const QString kLength = QStringLiteral("length");
const QString kCrc = QStringLiteral("crc");

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

void takeArea(const QJsonObject &area, FrameWords &words, QString &error)
{
    const QJsonObject params = area.value(QStringLiteral("params")).toObject();
    for (auto param = params.begin(); param != params.end(); ++param)
        words.params.insert(param.key(), textOf(param.value()));
    const QJsonValue name = area.value(QStringLiteral("name"));
    words.command = textOf(name.isUndefined() ? area.value(QStringLiteral("code")) : name);
    words.result = textOf(area.value(QStringLiteral("result")));
    if (words.result.isEmpty())
        words.result = textOf(area.value(QStringLiteral("state")));
    const QJsonValue digits = area.value(QStringLiteral("area"));
    QByteArray bytes;
    if (digits.isUndefined())
        return;
    if (!readDigits(digits.toString().toLatin1(), bytes))
        error = QStringLiteral("area: not in hexadecimal digits");
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

Composed composeObject(const QJsonObject &frame)
{
    Composed made;
    FrameWords words;
    if (!readDigits(frame.value(QStringLiteral("hex")).toString().toLatin1(), words.base))
        made.error = QStringLiteral("hex: not in hexadecimal digits");
    const QJsonObject base = words.base.isEmpty() ? QJsonObject() : decoded(words.base);
    words.kind = kindNamed(frame.value(QStringLiteral("frame")).toString(), words.base);
    if (!base.isEmpty() && (words.kind == FrameKind::Unknown || isUnchanged(frame, base))) {
        made.record.bytes = words.base;
        return made;
    }
    if (words.kind == FrameKind::Unknown)
        made.error = QStringLiteral("frame: host or gcu is needed");
    for (const protocol::Field &field : fieldsOf(words.kind))
        if (field.size > 0)
            takeField(field, frame, base, words);
    const QString areaKey =
        words.kind == FrameKind::Host ? QStringLiteral("command") : QStringLiteral("feedback");
    const QJsonValue area = frame.value(areaKey);
    if (area.isObject() && (base.isEmpty() || area != base.value(areaKey)))
        takeArea(area.toObject(), words, made.error);
    return made.error.isEmpty() ? composeFrame(words) : made;
}

} // namespace

Composed composeJson(const QByteArray &line)
{
    QJsonParseError parsed;
    const QJsonDocument document = QJsonDocument::fromJson(line, &parsed);
    Composed made;
    if (!document.isObject()) {
        made.error = QStringLiteral("not a JSON object: ") + parsed.errorString();
        return made;
    }
    const QJsonObject frame = document.object();
    made = composeObject(frame);
    made.record.direction = directionOf(frame.value(QStringLiteral("dir")).toString().toLatin1());
    const QJsonValue time = frame.value(QStringLiteral("time"));
    if (time.isDouble() && std::abs(time.toDouble()) < 1e12)
        made.record.time = qRound64(time.toDouble() * 1e6);
    return made;
}

} // namespace wire
