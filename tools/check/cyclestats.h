#pragma once

#include "tools/check/localtext.h"
#include "tools/wire/record.h"

#include <QVector>

#include <vector>

namespace check {

/// What a run of cycles comes to, counted as the frames go. Which frame an answer belongs to is
/// found by the command that it acknowledges, in the order of sending; an answer that names none of
/// those waiting belongs to the oldest.
class CycleStats
{
public:
    qint64 every = 0; ///< microseconds from frame to frame as it should be; 0 for any

    void takeSent(const wire::Record &frame);
    /// A frame, or bytes between frames.
    void takeReceived(const wire::Record &record);

    int sent = 0;
    int answers = 0; ///< good ones that belong to a frame
    int doubled = 0; ///< good ones that belong to none
    int reordered = 0;
    int badChecksum = 0;
    int badLength = 0;
    qint64 noiseBytes = 0;
    QVector<int> answerTimes; ///< microseconds
    /// Microseconds between the answers to two frames in a row; of frames that this side sent too
    /// early or too late for itself there are none.
    QVector<int> periods;
    /// The first records that weren't as they should be.
    QVector<wire::Record> evidence;

    int lost() const;

private:
    struct Asked
    {
        int number;
        quint8 code;
        qint64 time;
    };
    void takeGood(const wire::Record &record);
    bool takeLate(quint8 code, const wire::Record &record);
    void takeBroken();
    std::size_t waitingFor(quint8 code) const;
    void settle(const Asked &asked, qint64 time);
    void keep(const wire::Record &record);

    std::vector<Asked> m_waiting; ///< in the order of sending
    std::vector<Asked> m_passed;  ///< overtaken by answers to later ones; some come after all
    int m_broken = 0;             ///< answered by a broken frame
    bool isPunctual(const Asked &asked) const;

    Asked m_last{-1, 0, 0}; ///< answered
    int m_lastCode = -1;    ///< of the frame answered last
    qint64 m_lastTime = 0;
};

/// A number of a run that cases can ask for.
struct FigureRow
{
    const char *id;
    const char *zh;
    const char *en;
    const char *unit;
    bool isOfAnswers;                 ///< says something of what answers what
    int (*basis)(const CycleStats &); ///< how many things it is made of; of none it says nothing
    double (*of)(const CycleStats &);
};

/// The row of an id, or null.
const FigureRow *figureRow(const QString &id);
/// Its name in both languages.
LocalText nameOf(const FigureRow &row);

} // namespace check
