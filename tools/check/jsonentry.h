#pragma once

#include "tools/check/localtext.h"

#include <QJsonObject>
#include <QStringList>

namespace check {

/// An object of a case file as it is read: what is asked for has to be there and of its kind, and
/// what nobody asks for is a mistake. The first thing that is wrong is kept, with its place, in a
/// text that all entries of a file share.
class JsonEntry
{
public:
    JsonEntry(const QJsonValue &value, const QString &place, QString &error);
    /// Complains of keys that nobody asked for.
    ~JsonEntry();
    Q_DISABLE_COPY(JsonEntry)

    bool has(const char *key) const { return m_object.contains(QLatin1String(key)); }
    const QString &place() const { return m_place; }

    QString text(const char *key);
    LocalText localText(const char *key);
    double number(const char *key, double usual);
    int count(const char *key, int usual);
    bool flag(const char *key);
    /// Microseconds of a text as 30ms or 2s.
    qint64 duration(const char *key, qint64 usual);
    /// Texts or numbers, one alone or a list of them, as texts.
    QStringList words(const char *key);
    QJsonObject object(const char *key);
    QJsonArray array(const char *key);

    void complain(const QString &text);

private:
    QJsonValue take(const char *key);
    QString placeOf(const char *key) const;

    QJsonObject m_object;
    QString m_place;
    QString &m_error;
    QStringList m_taken;
};

/// A key that stands twice in one object of a text that is JSON, or nothing: a parser keeps one of
/// the two and says nothing.
QString doubledKey(const QByteArray &json);

/// A number as it is written, a text as it is.
QString wordOf(const QJsonValue &value);

} // namespace check
