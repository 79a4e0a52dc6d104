#pragma once

#include <QObject>

/// Watches the reads of the window's TCP and serial links. A read that finds more than podsim
/// writes at a time is one for which the window came late: the frame cut takes one frame out of it
/// and passes over the rest, since pods write one frame at a time. GUI thread; filters the events
/// of the application.
class ReadTap : public QObject
{
public:
    /// `piece`: most bytes that are written at a time.
    explicit ReadTap(int piece);

    int lateReads() const { return m_lateReads; }
    /// Answers that those reads may have cost.
    int cost() const { return m_cost; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int m_piece;
    int m_lateReads = 0;
    int m_cost = 0;
};
