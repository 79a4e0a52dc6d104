#include "tools/check/jsonentry.h"

#include "tools/wire/filter.h"

#include <QJsonArray>

#include <cctype>
#include <cmath>

namespace check {

namespace {

/// Where the text that begins with the quote at `at` has its other one.
int endOfText(const QByteArray &json, int at)
{
    int end = at + 1;
    while (end < json.size() && json[end] != '"')
        end += json[end] == '\\' ? 2 : 1;
    return end;
}

/// Whether it is one, by what follows its end.
bool isKey(const QByteArray &json, int end)
{
    int next = end + 1;
    while (next < json.size() && std::isspace(quint8(json[next])))
        ++next;
    return next < json.size() && json[next] == ':';
}

} // namespace

JsonEntry::JsonEntry(const QJsonValue &value, const QString &place, QString &error)
    : m_object(value.toObject()), m_place(place), m_error(error)
{
    if (!value.isObject())
        complain(QStringLiteral("an object { … } is needed"));
}

JsonEntry::~JsonEntry()
{
    for (const QString &key : m_object.keys())
        if (!m_taken.contains(key))
            complain(QStringLiteral("\"%1\" isn't known here").arg(key));
}

void JsonEntry::complain(const QString &text)
{
    if (m_error.isEmpty())
        m_error = m_place + QStringLiteral(": ") + text;
}

QString JsonEntry::placeOf(const char *key) const
{
    return m_place + QLatin1Char('.') + QLatin1String(key);
}

QJsonValue JsonEntry::take(const char *key)
{
    m_taken.append(QLatin1String(key));
    return m_object.value(QLatin1String(key));
}

QString JsonEntry::text(const char *key)
{
    const QJsonValue value = take(key);
    if (!value.isString() || value.toString().isEmpty())
        complain(QStringLiteral("a text \"%1\" is needed").arg(QLatin1String(key)));
    return value.toString();
}

LocalText JsonEntry::localText(const char *key)
{
    const QJsonValue value = take(key);
    if (value.isUndefined())
        return {};
    JsonEntry entry(value, placeOf(key), m_error);
    LocalText texts;
    texts.zh = entry.text("zh");
    texts.en = entry.text("en");
    return texts;
}

double JsonEntry::number(const char *key, double usual)
{
    const QJsonValue value = take(key);
    if (!value.isUndefined() && !value.isDouble())
        complain(QStringLiteral("\"%1\": a number is needed").arg(QLatin1String(key)));
    return value.toDouble(usual);
}

int JsonEntry::count(const char *key, int usual)
{
    constexpr double kMost = 1e7;
    const double value = number(key, usual);
    if (value < 0 || value > kMost || value != std::floor(value))
        complain(QStringLiteral("\"%1\": a whole number is needed").arg(QLatin1String(key)));
    return int(qBound(0.0, value, kMost));
}

bool JsonEntry::flag(const char *key)
{
    const QJsonValue value = take(key);
    if (!value.isUndefined() && !value.isBool())
        complain(QStringLiteral("\"%1\": true or false is needed").arg(QLatin1String(key)));
    return value.toBool();
}

qint64 JsonEntry::duration(const char *key, qint64 usual)
{
    const QJsonValue value = take(key);
    if (value.isUndefined())
        return usual;
    qint64 microseconds = 0;
    const QString text = value.toString();
    const bool hasUnit = !text.isEmpty() && text.back().isLetter();
    if (!hasUnit || !wire::readDuration(text, microseconds) || microseconds < 1000)
        complain(QStringLiteral("\"%1\": a time as 30ms or 2s is needed").arg(QLatin1String(key)));
    return microseconds;
}

QStringList JsonEntry::words(const char *key)
{
    const QJsonValue value = take(key);
    const QJsonArray all = value.isArray() ? value.toArray() : QJsonArray{value};
    QStringList words;
    for (const QJsonValue &each : all)
        words.append(wordOf(each));
    if (words.contains(QString()))
        complain(QStringLiteral("\"%1\": texts or numbers are needed").arg(QLatin1String(key)));
    return words;
}

QJsonObject JsonEntry::object(const char *key)
{
    const QJsonValue value = take(key);
    if (!value.isUndefined() && !value.isObject())
        complain(QStringLiteral("\"%1\": an object { … } is needed").arg(QLatin1String(key)));
    return value.toObject();
}

QJsonArray JsonEntry::array(const char *key)
{
    const QJsonValue value = take(key);
    if (!value.isUndefined() && !value.isArray())
        complain(QStringLiteral("\"%1\": a list [ … ] is needed").arg(QLatin1String(key)));
    return value.toArray();
}

QString doubledKey(const QByteArray &json)
{
    QVector<QStringList> open; // the keys so far of each object or list around
    for (int at = 0; at < json.size(); ++at) {
        const char c = json[at];
        if (c == '{' || c == '[')
            open.append(QStringList());
        else if ((c == '}' || c == ']') && !open.isEmpty())
            open.removeLast();
        if (c != '"')
            continue;
        const int end = endOfText(json, at);
        const QString text = QString::fromUtf8(json.mid(at + 1, end - at - 1));
        at = end;
        if (open.isEmpty() || !isKey(json, end))
            continue;
        if (open.last().contains(text))
            return text;
        open.last().append(text);
    }
    return {};
}

QString wordOf(const QJsonValue &value)
{
    return value.isDouble() ? QString::number(value.toDouble(), 'g', 15) : value.toString();
}

} // namespace check
