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
const QString kArea = QStringLiteral("area");
const QString kParams = QStringLiteral("params");
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

/// Whether an object has a key, with another value than the base where there is one.
bool isNew(const QString &key, const QJsonObject &object, const QJsonObject &base)
{
    return object.contains(key) && object.value(key) != base.value(key);
}

void takeField(const protocol::Field &field, const QJsonObject &frame, const QJsonObject &base,
               FrameWords &words, QString &error)
{
    const QString id = QLatin1String(field.id);
    const QJsonObject values = frame.value(kFields).toObject(), raws = frame.value(kRaw).toObject();
    const QJsonValue value = values.value(id), raw = raws.value(id);
    const bool isNewValue = isNew(id, values, base.value(kFields).toObject());
    const bool isNewRaw = isNew(id, raws, base.value(kRaw).toObject());
    if (isNewValue && isNewRaw && value != raw && !isValueOf(field, value, qint64(raw.toDouble())))
        error =
            QStringLiteral("raw.%1: %2, but fields.%1 is %3").arg(id, textOf(raw), textOf(value));
    // Old ones are those of the base. Of them length and checksum would be made anew.
    const bool isOld = base.isEmpty() ? isMade(id, frame) : !isNewValue && !isNewRaw;
    const bool isWrong = !base.isEmpty() && values.contains(id) && !isMade(id, base);
    const bool isKept = isOld && isWrong && (id == kLength || id == kCrc);
    if (isNewRaw && !isOld)
        words.raws.append({id, qint64(raw.toDouble())});
    else if (isKept || (isNewValue && !isOld))
        words.values.append({id, textOf(value)});
}

bool isSameCommand(const QString &one, const QString &other)
{
    quint8 code = 0, otherCode = 0;
    return readCommandCode(one, code) && readCommandCode(other, otherCode) && code == otherCode;
}

bool isSameResult(const QString &result, const QString &state)
{
    quint8 code = 0;
    return readResult(result, code) && state == QLatin1String(resultWord(code));
}

/// Of two keys that say the same the one that was edited, or the first. Where both were, they have
/// to agree.
QString eitherOf(const QString &first, const QString &second, const QJsonObject &object,
                 const QJsonObject &base, bool (*agree)(const QString &, const QString &),
                 QString &error)
{
    const QString one = textOf(object.value(first)), other = textOf(object.value(second));
    const bool isNewOne = isNew(first, object, base), isNewOther = isNew(second, object, base);
    if (isNewOne && isNewOther && !agree(one, other))
        error = QStringLiteral("%1 %2, but %3 %4").arg(first, one, second, other);
    return object.contains(first) && (isNewOne || !isNewOther) ? one : other;
}

/// Without what the base has too.
QJsonObject newOnly(QJsonObject object, const QJsonObject &base)
{
    for (const QString &key : object.keys())
        if (!isNew(key, object, base))
            object.remove(key);
    return object;
}

void takeArea(const QJsonObject &area, const QJsonObject &base, FrameWords &words, QString &error)
{
    // New digits stand for themselves, beside what was made of the old ones.
    const bool isDigits = area.contains(kArea);
    const bool isAlone = isDigits && isNew(kArea, area, base);
    const QJsonObject said = isAlone ? newOnly(area, base) : area;
    QJsonObject params = said.value(kParams).toObject();
    if (isAlone)
        params = newOnly(params, base.value(kParams).toObject());
    for (auto param = params.begin(); param != params.end(); ++param)
        words.params.insert(param.key(), textOf(param.value()));
    words.command =
        eitherOf(QStringLiteral("name"), QStringLiteral("code"), said, base, isSameCommand, error);
    words.result = eitherOf(QStringLiteral("result"), QStringLiteral("state"), said, base,
                            isSameResult, error);
    if (!isDigits && words.command.isEmpty())
        error = QStringLiteral("a name or code is needed");
    QByteArray bytes;
    if (!readDigits(area.value(kArea).toString().toLatin1(), bytes))
        error = QStringLiteral("area isn't in hexadecimal digits");
    if (isDigits)
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

/// Number of bytes and verdict can't be set: those of an object without digits, and edited ones,
/// have to be what the frame comes to.
QString outcomeMistake(const QJsonObject &frame, const QJsonObject &base, const QByteArray &made)
{
    // Without digits nobody knows whether both lengths are those from before other edits.
    const bool isSizeOpen = base.isEmpty() && isMade(kLength, frame);
    if (isNew(kLength, frame, base) && !isSizeOpen &&
        frame.value(kLength).toInt() != int(made.size()))
        return QStringLiteral("length: the frame has %1 bytes; fields.length is what it says")
            .arg(made.size());
    if (base.isEmpty() && frame.contains(kCrc) &&
        lengthOf(made.constData(), made.size()) != made.size())
        return QStringLiteral("fields.length: where it isn't that of the frame, hex is needed");
    const QString verdict = QLatin1String(wordOf(verdictOf(made)));
    if (isNew(kCrc, frame, base) && frame.value(kCrc).toString() != verdict)
        return QStringLiteral("crc: it is %1; fields.crc has the checksum").arg(verdict);
    return {};
}

/// The words of a frame with fields and area; why they can't be understood, if they can't.
QString takeWords(const QJsonObject &frame, const QJsonObject &base, FrameWords &words)
{
    QString error;
    for (const protocol::Field &field : fieldsOf(words.kind))
        if (field.size > 0)
            takeField(field, frame, base, words, error);
    const QString key =
        words.kind == FrameKind::Host ? QStringLiteral("command") : QStringLiteral("feedback");
    if (base.isEmpty() && !frame.contains(key) && frame.value(kLength).toInt() == kFrameOverhead)
        words.area = QByteArray(); // of a whole frame, and not one whose command is left open
    if (!error.isEmpty() || !isNew(key, frame, base))
        return error;
    takeArea(frame.value(key).toObject(), base.value(key).toObject(), words, error);
    return error.isEmpty() ? error : key + QStringLiteral(": ") + error;
}

Composed composeObject(const QJsonObject &frame)
{
    Composed made;
    FrameWords words;
    made.error = beginWith(frame, words);
    if (!made.error.isEmpty())
        return made;
    const QJsonObject base = words.base.isEmpty() ? QJsonObject() : decoded(words.base);
    if (!base.isEmpty() && (words.kind == FrameKind::Unknown || isUnchanged(frame, base)))
        made.record.bytes = words.base;
    else if (made.error = takeWords(frame, base, words); made.error.isEmpty())
        made = composeFrame(words);
    if (made.error.isEmpty())
        made.error = outcomeMistake(frame, base, made.record.bytes);
    return made;
}

} // namespace

Composed composeJson(const QByteArray &line)
{
    Composed made;
    made.error = mistakeInKeys(line);
    if (!made.error.isEmpty())
        return made;
    QJsonParseError parsed;
    const QJsonDocument document = QJsonDocument::fromJson(line, &parsed);
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
