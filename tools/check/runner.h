#pragma once

#include "tools/check/cases.h"
#include "tools/check/cyclestats.h"
#include "tools/check/judge.h"
#include "tools/check/podline.h"
#include "tools/check/results.h"

#include <QElapsedTimer>
#include <QMap>

namespace check {

/// What the user wants of the groups.
struct Plan
{
    QVector<Group> groups;   ///< in the order of their running
    QVector<Group> measured; ///< whose measures the cases may name; all that there are
    int cycles = 0;          ///< in place of those of the measures; 0 for theirs
    double minutes = 0;      ///< of the measures that have no cycles
};

/// Frames that do nothing to a pod: one of them is asked between two of one command.
QVector<QByteArray> framesBetween();

/// The cycles of a measure in a plan.
qint64 cyclesOf(const Plan &plan, const Measure &measure);
/// Whether a case of the plan asks for a number of it.
bool usesMeasure(const Plan &plan, const Measure &measure);
/// What takes photos or toggles goes out once in a step; the frames after it are these, without a
/// command.
bool goesOutOnce(const Step &step);
QByteArray idleFrame();

/// Gets what happens while it does.
class Watcher
{
public:
    virtual ~Watcher() = default;
    virtual void groupBegins(const Group &) {}
    virtual void caseBegins(const Case &) {}
    /// A long step has come so far.
    virtual void progress(qint64 done, qint64 whole) = 0;
    virtual void caseEnds(const CaseResult &result) = 0;
    /// The user has stopped it: what leaves the pod in order has gone out, its answers are waited
    /// for.
    virtual void leaves() {}
};

/// How a step, or a case, ended.
struct Outcome
{
    Judgement judgement = Judgement::Passed;
    LocalText why;
    QVector<wire::Record> evidence;
};

/// Makes it that of the case.
void take(const Outcome &outcome, CaseResult &result);

/// Why nothing can be said of a pod that also sends without being asked.
Outcome talks();

/// Runs groups of cases over an open line, one case after another.
class Runner
{
public:
    Runner(PodLine &line, const Plan &plan, Watcher &watcher);
    /// Fills groups, cases, series, versions and ending.
    void run(SessionResult &result);

private:
    void runGroup(const Group &group, SessionResult &result);
    void leaveInOrder(const Group &group, SessionResult &result);
    CaseResult left(const Group &group, bool &isStopped);
    Outcome leave(Step step, bool &isStopped);
    Outcome unanswered() const;
    CaseResult runCase(const Case &each);
    Outcome attempt(const Case &each);
    Outcome attempts(const Case &each, int &count);
    void lookForAnswers(const Case &failedCase);
    Outcome whyNot() const;
    Outcome broken() const;
    void settle();
    bool isTalkative();

    Outcome runStep(const Step &step);
    Outcome ask(const Step &step);
    Outcome asked(const Step &step);
    Outcome forget(char code);
    bool namesOther(const QByteArray &frame, char code);
    Outcome prepare();
    Outcome send(const Step &step);
    Outcome answer(const Step &step);
    Outcome quiet(const Step &step);
    Outcome hold(const Step &step);
    Outcome reach(const Step &step);
    Outcome remember(const Step &step);
    Outcome measured(const Step &step);

    /// Sends the step's frame at its pace while `take` says no, for the step's time. True when it
    /// said yes.
    bool sendUntil(const Step &step, const PodLine::Take &take);
    void write(const QByteArray &bytes);
    const Measure &measureOf(const QString &key) const;
    struct Reply
    {
        Acknowledged acknowledged = Acknowledged::Not;
        bool hasAny = false;
    };
    bool takeReply(const QByteArray &frame, const wire::Record &record, Reply &reply);
    Outcome judged(const FigureRow &row, const CycleStats &stats, const Step &step);
    void makeStats(const Measure &measure, CycleStats &stats);
    void noteAnswer(const wire::Record &record);
    Outcome failed(const LocalText &why) const;
    Outcome met(const Step &step) const;

    PodLine &m_line;
    const Plan &m_plan;
    Watcher &m_watcher;
    QMap<QString, CycleStats> m_stats;
    QMap<QString, double> m_remembered;
    QVector<Figure> m_figures; ///< of the case that runs
    wire::Record m_sent;       ///< the newest
    wire::Record m_answer;     ///< the newest good one
    int m_named = -1; ///< the command that the pod has named last; below 0 before any answer
    Versions m_versions;
    const Case *m_essentialCase = nullptr; ///< the newest
    LocalText m_essential;                 ///< why nothing more can be judged
    qint64 m_slowest = 0;                  ///< microseconds that an answer has taken so far
    bool m_isTalkative = false; ///< the pod sends without being asked, as has been heard so far
    bool m_hasListened = false; ///< long enough for what it sends seldom
    char m_awaited = 0;         ///< the command whose answer the case looks at next
    int m_sentInStep = 0;
    quint8 m_effects = kStill; ///< of what the group has sent
};

} // namespace check
