#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QQueue>
#include <QTimer>
#include <QVector>

namespace podsim {

class PodChannel;

/// Writes pieces to a channel when their time has come, in order. Owned by the session, in the main
/// thread.
class PodOutbox : public QObject
{
    Q_OBJECT

public:
    /// Answers are written `delay` milliseconds after they were handed over.
    PodOutbox(PodChannel *channel, int delay, QObject *parent);

    /// Takes an answer's pieces; several of them are written with a pause in between. They are
    /// `late` milliseconds later than usual, and so is what comes after them.
    void add(const QVector<QByteArray> &pieces, int late);
    /// Pieces that are waiting for their time, and their bytes.
    int size() const { return m_entries.size(); }
    qint64 bytes() const { return m_bytes; }

signals:
    /// Nothing is waiting any more.
    void emptied();

private:
    struct Entry
    {
        qint64 due;
        QByteArray bytes;
    };

    void writeDue();

    PodChannel *m_channel;
    int m_delay;
    QElapsedTimer m_clock;
    QTimer m_timer;
    QQueue<Entry> m_entries;
    qint64 m_lastDue = 0;
    qint64 m_bytes = 0;
};

} // namespace podsim
