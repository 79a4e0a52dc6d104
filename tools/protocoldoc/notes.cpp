#include "tools/protocoldoc/notes.h"

#include <QFile>
#include <QTextStream>

namespace {

QString noteKey(const QString &table, const QString &row)
{
    return table + QLatin1Char('|') + row;
}

} // namespace

Notes::Notes(const QString &path, bool chinese)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        complain(path + QStringLiteral(": ") + file.errorString());
        return;
    }
    QTextStream stream(&file);
    stream.setCodec("utf-8");
    while (!stream.atEnd()) {
        const QString line = stream.readLine();
        if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')))
            readLine(line, chinese);
    }
}

void Notes::readLine(const QString &line, bool chinese)
{
    const QStringList parts = line.split(QLatin1Char('|'));
    if (parts.size() != 4 || parts.at(2).isEmpty() || parts.at(3).isEmpty()) {
        complain(QStringLiteral("not in both languages, or not four parts: ") + line);
        return;
    }
    const QString key = noteKey(parts.at(0), parts.at(1));
    if (m_notes.contains(key))
        complain(QStringLiteral("explained twice: ") + key);
    m_notes.insert(key, parts.at(chinese ? 2 : 3));
}

QString Notes::take(const QString &table, const QString &row)
{
    const QString key = noteKey(table, row);
    if (!m_notes.contains(key))
        complain(QStringLiteral("no explanation: ") + key);
    m_taken.insert(key);
    return m_notes.value(key);
}

QStringList Notes::problems() const
{
    QStringList all = m_problems;
    for (auto note = m_notes.begin(); note != m_notes.end(); ++note)
        if (!m_taken.contains(note.key()))
            all.append(QStringLiteral("explains nothing: ") + note.key());
    return all;
}
