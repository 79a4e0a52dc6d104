#pragma once

#include "tools/check/localtext.h"
#include "tools/check/times.h"
#include "tools/wire/record.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

// What a session has found: all that terminal, JUnit, JSON and the printed report show.

namespace check {

enum class Judgement : quint8 { Passed, Failed, NotJudged };

/// "passed", "failed", "not judged", and in Chinese.
LocalText wordOf(Judgement judgement);

/// A number that a case has measured, and what was allowed.
struct Figure
{
    QString id; ///< as the case files name it: answer_p99
    LocalText name;
    double value = 0;
    QString unit;  ///< ms, %, B or nothing
    QString limit; ///< "<= 40", ">= 1", "29 … 31", or nothing
};

/// A limit as it is shown: "≤ 40".
QString shownLimit(QString limit);

struct CaseResult
{
    QString id; ///< link.answers
    QString group;
    LocalText name;
    LocalText reason; ///< why the case is there
    Judgement judgement = Judgement::NotJudged;
    bool isNeutral = false; ///< not judged, since it doesn't apply to the link
    LocalText why; ///< why it failed or can't be judged; of a passed one a remark, or nothing
    double seconds = 0;
    int attempts = 1;
    QVector<Figure> figures;
    /// Of a failed case the frames, or bytes between frames, that show it, in the order of their
    /// times.
    QVector<wire::Record> evidence;
};

/// A file of the user's that groups were read from.
struct CaseFile
{
    QString name;
    QString sha256; ///< digits
};

/// How long a run of cycles was to be.
struct CycleCount
{
    QString measure; ///< with its group: link/cycle
    qint64 cycles = 0;
    int usual = 0; ///< by its file; 0 for the length that the user gives
};

struct GroupTitle
{
    QString id;
    LocalText title;
};

/// The times of a run of cycles, in the order of the answers.
struct Series
{
    QString id;
    LocalText name;
    Times answers; ///< from a frame to its answer
    Times periods; ///< from an answer to the next
};

/// What the pod says of itself in its first good frame.
struct Versions
{
    bool areKnown = false;
    int protocol = 0;
    int hardware = 0;
    int firmware = 0;
    int podCode = 0;
};

enum class Ending : quint8 { Whole, BrokenOff, LinkLost };

struct SessionResult
{
    QString tool;      ///< name and version
    QString link;      ///< as it was given
    QString device;    ///< what the user calls it; nothing where it isn't given
    QString inspector; ///< likewise
    QDateTime begin;
    double seconds = 0;
    Versions versions;
    Ending ending = Ending::Whole;
    QString lossReason; ///< of a lost link
    QString recording;  ///< the file, or nothing
    QVector<CycleCount> cycles;
    QVector<CaseFile> caseFiles; ///< beside those that come with the tool
    QStringList notRun;          ///< groups, and cases of those that ran in part
    QVector<GroupTitle> groups;
    QVector<CaseResult> cases;
    QVector<Series> series;

    int count(Judgement judgement) const;
    /// Whole, something passed, nothing failed, and all has been judged that applies.
    bool isPassed() const;
};

/// One line for the whole: passed, failed, broken off, link lost.
LocalText verdictOf(const SessionResult &result);

} // namespace check
