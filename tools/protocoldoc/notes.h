#pragma once

#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

/// The explanations in one language. Whoever makes the tables takes each row's note; what was
/// asked for in vain, and what nobody asked for, is a problem.
class Notes
{
public:
    /// Reads lines "table|row|Chinese|English"; those that begin with "#" don't count.
    Notes(const QString &path, bool chinese);

    /// What the documents say of a row beyond what the program's tables know.
    QString take(const QString &table, const QString &row);
    void complain(const QString &problem) { m_problems.append(problem); }

    /// All that was found wrong, the orphans last.
    QStringList problems() const;

private:
    void readLine(const QString &line, bool chinese);

    QMap<QString, QString> m_notes;
    QSet<QString> m_taken;
    QStringList m_problems;
};
