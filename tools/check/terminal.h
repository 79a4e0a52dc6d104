#pragma once

#include "tools/check/runner.h"

namespace check {

bool isInputTerminal();

/// Shows a session on standard output, a line a case, in colours where that is a terminal, and how
/// far a long step has come on standard error where that is one.
class Terminal : public Watcher
{
public:
    explicit Terminal(wire::Language language);

    void groupBegins(const Group &group) override;
    void caseBegins(const Case &each) override;
    void progress(qint64 done, qint64 whole) override;
    void caseEnds(const CaseResult &result) override;
    void leaves() override;
    void sessionEnds(const SessionResult &result);

private:
    QString coloured(const QString &text, Judgement judgement) const;
    void clear();

    wire::Language m_language;
    bool m_hasColours;
    bool m_hasProgress;
    QString m_name; ///< of the case that runs
    QElapsedTimer m_clock;
    qint64 m_next = 0; ///< milliseconds
    bool m_isShown = false;
};

/// All frames of a plan, what each is for and how often it goes out; nothing is sent.
void listFrames(const Plan &plan, wire::Language language);
/// All groups and cases, with what the groups do.
void listCases(const QVector<Group> &groups, wire::Language language);

} // namespace check
