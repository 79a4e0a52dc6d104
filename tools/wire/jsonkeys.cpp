#include "tools/wire/jsonkeys.h"

#include "tools/wire/framefields.h"

#include <QSet>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <cmath>

namespace wire {

namespace {

enum Type { Whole = 1, Number = 2, Text = 4, Object = 8 };
constexpr double kLargest = 1e10; ///< beyond any integer of the wire

/// A key, the types that its value may have, and its words where it hasn't any other text.
struct KeyRow
{
    const char *key;
    int types;
    const char *words = nullptr;
};

constexpr KeyRow kHead[] = {
    {"time", Number},  {"dir", Text, "tx rx"},       {"frame", Text, "host gcu unknown"},
    {"length", Whole}, {"crc", Text, "ok bad none"}, {"hex", Text},
};
constexpr KeyRow kParts[] = {{"fields", Object}, {"raw", Object}};
constexpr KeyRow kCommand[] = {{"command", Object}};
constexpr KeyRow kFeedback[] = {{"feedback", Object}};
constexpr KeyRow kCommandKeys[] = {
    {"code", Whole}, {"name", Whole | Text}, {"params", Object}, {"area", Text}};
/// A command's own parameters are looked at where they become bytes.
constexpr KeyRow kParams[] = {{"*", Number | Text}};
constexpr KeyRow kFeedbackKeys[] = {{"code", Whole},
                                    {"name", Whole | Text},
                                    {"result", Whole | Text},
                                    {"state", Text, "success failure executing"},
                                    {"area", Text}};

bool isOf(int types, const QJsonValue &value)
{
    const double number = value.toDouble();
    const bool isWhole =
        value.isDouble() && std::trunc(number) == number && std::abs(number) < kLargest;
    return ((types & Whole) && isWhole) || ((types & Number) && value.isDouble()) ||
           ((types & Text) && value.isString()) || ((types & Object) && value.isObject());
}

QString wordsFor(int types)
{
    return types & Object   ? QStringLiteral("an object")
           : types & Whole  ? QStringLiteral("a whole number")
           : types & Number ? QStringLiteral("a number")
                            : QStringLiteral("a text");
}

QString mistakeIn(const KeyRow &row, const QJsonValue &value)
{
    if (!isOf(row.types, value))
        return wordsFor(row.types) + QStringLiteral(" is needed");
    const QStringList words = QString::fromLatin1(row.words).split(QLatin1Char(' '));
    if (row.words && !words.contains(value.toString()))
        return QStringLiteral("one of ") + words.join(QStringLiteral(", "));
    return {};
}

template <std::size_t N>
QVector<KeyRow> rowsOf(const KeyRow (&rows)[N])
{
    return QVector<KeyRow>(std::begin(rows), std::end(rows));
}

QVector<KeyRow> topRows(FrameKind kind)
{
    const QVector<KeyRow> head = rowsOf(kHead);
    if (kind == FrameKind::Unknown)
        return head;
    return head + rowsOf(kParts) + rowsOf(kind == FrameKind::Host ? kCommand : kFeedback);
}

/// The keys of `fields`, or of `raw`, which only numbers have.
QVector<KeyRow> fieldRows(FrameKind kind, bool isRaw)
{
    QVector<KeyRow> rows;
    for (const protocol::Field &field : fieldsOf(kind)) {
        if (field.size > 0 && (!isRaw || isNumber(field.kind)))
            rows.append({field.id, isRaw ? Whole : isNumber(field.kind) ? Number | Text : Text});
    }
    return rows;
}

/// The object under a key, and the rows of its own.
struct Part
{
    QString path;
    QJsonObject object;
    QVector<KeyRow> rows;
};

QString mistakeIn(const Part &part, FrameKind kind)
{
    for (auto each = part.object.begin(); each != part.object.end(); ++each) {
        const auto row = std::find_if(part.rows.begin(), part.rows.end(), [&](const KeyRow &known) {
            return each.key() == QLatin1String(known.key) || *known.key == '*';
        });
        const QString mistake =
            row == part.rows.end()
                ? QStringLiteral("no such key (frame: %1)").arg(QLatin1String(wordOf(kind)))
                : mistakeIn(*row, each.value());
        if (!mistake.isEmpty())
            return part.path + each.key() + QStringLiteral(": ") + mistake;
    }
    return {};
}

/// The text of the string that begins at `at`, which moves past its end.
QByteArray takeString(const QByteArray &json, int &at)
{
    const int first = ++at;
    for (; at < json.size() && json[at] != '"'; ++at)
        at += json[at] == '\\';
    return json.mid(first, at++ - first);
}

bool isKeyEnd(const QByteArray &json, int at)
{
    while (at < json.size() &&
           (json[at] == ' ' || json[at] == '\t' || json[at] == '\r' || json[at] == '\n'))
        ++at;
    return at < json.size() && json[at] == ':';
}

} // namespace

QString mistakeIn(const QJsonObject &frame, FrameKind kind)
{
    const auto objectAt = [](const QJsonObject &object, const char *key) {
        return object.value(QLatin1String(key)).toObject();
    };
    const QJsonObject command = objectAt(frame, "command");
    const Part parts[] = {
        {QString(), frame, topRows(kind)},
        {QStringLiteral("fields."), objectAt(frame, "fields"), fieldRows(kind, false)},
        {QStringLiteral("raw."), objectAt(frame, "raw"), fieldRows(kind, true)},
        {QStringLiteral("command."), command, rowsOf(kCommandKeys)},
        {QStringLiteral("command.params."), objectAt(command, "params"), rowsOf(kParams)},
        {QStringLiteral("feedback."), objectAt(frame, "feedback"), rowsOf(kFeedbackKeys)}};
    for (const Part &part : parts) {
        const QString mistake = mistakeIn(part, kind);
        if (!mistake.isEmpty())
            return mistake;
    }
    return {};
}

QString mistakeInKeys(const QByteArray &json)
{
    QVector<QSet<QByteArray>> levels;
    for (int at = 0; at < json.size();) {
        if (json[at] != '"') {
            if (json[at] == '{')
                levels.append(QSet<QByteArray>());
            else if (json[at] == '}' && !levels.isEmpty())
                levels.removeLast();
            ++at;
            continue;
        }
        const QByteArray text = takeString(json, at);
        if (levels.isEmpty() || !isKeyEnd(json, at))
            continue;
        if (text.contains('\\'))
            return QString::fromUtf8(text) + QStringLiteral(": a key without escapes is needed");
        if (levels.last().contains(text))
            return QString::fromUtf8(text) + QStringLiteral(": is there twice");
        levels.last().insert(text);
    }
    return {};
}

} // namespace wire
