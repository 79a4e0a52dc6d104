#pragma once

#include "tools/check/localtext.h"
#include "tools/check/times.h"
#include "tools/wire/record.h"

#include <QVector>

#include <bitset>
#include <vector>

namespace check {

/// What may be amiss with a record of a run.
enum class Amiss : quint8 { Nothing, Lost, Late, Doubled, Reordered, Checksum, Length, Noise };
constexpr int kAmissKinds = 8;

/// What a run of cycles comes to, counted as the frames go. Which frame an answer belongs to is
/// found by the command that it acknowledges, in the order of sending; an answer that names none of
/// those that were sent belongs to the oldest.
class CycleStats
{
public:
    qint64 every = 0; ///< microseconds from frame to frame as it should be; 0 for any

    void takeSent(const wire::Record &frame);
    /// A frame, or bytes between frames.
    void takeReceived(const wire::Record &record);

    int sent = 0;
    int answers = 0; ///< good ones that belong to a frame
    int unnamed = 0; ///< of these what belongs to one by its turn alone
    int doubled = 0; ///< good ones that belong to none
    int reordered = 0;
    int badChecksum = 0;
    int badLength = 0;
    qint64 noiseBytes = 0;
    Times answerTimes;
    /// Between the answers to two frames in a row; of frames that this side sent too early or too
    /// late for itself there are none.
    Times periods;
    int missedPeriods = 0; ///< since this side wasn't on time
    /// The first records of each kind that weren't as they should be; of what is lost the frames
    /// without an answer, as soon as none is awaited any more; of what is late the frame whose
    /// answer took longest, and that answer.
    QVector<wire::Record> evidence[kAmissKinds];

    int lost() const;

private:
    struct Asked
    {
        int number;
        quint8 code;
        wire::Record frame;
    };
    enum class Place : quint8 { Waiting, Passed, Twice, Nowhere };
    struct Match
    {
        Place place;
        std::size_t at = 0;
    };
    Match match(quint8 code) const;
    void takeGood(const wire::Record &record);
    void takeBroken(const wire::Record &record);
    Asked takeWaiting(std::size_t at);
    Asked takePassed(std::size_t at);
    void settle(const Asked &asked, const wire::Record &answer);
    void addPeriod(const Asked &asked, qint64 time);
    int momentOf(qint64 time) const;
    void keep(Amiss amiss, const wire::Record &record);

    std::vector<Asked> m_waiting; ///< in the order of sending
    std::vector<Asked> m_passed;  ///< overtaken by answers to later ones; some come after all
    std::bitset<256> m_codes;     ///< sent so far
    int m_broken = 0;             ///< answered by a broken frame
    Asked m_last{-1, 0, {}};      ///< answered
    qint64 m_lastTime = 0;        ///< of the answer to it
    int m_newest = -1;            ///< number of the newest frame that was answered
    int m_heardCode = -1;         ///< of the newest frame that came, a broken one included
    qint64 m_heardTime = 0;
    qint64 m_longest = -1; ///< time of an answer
    qint64 m_begin = 0;    ///< when the first frame was sent
};

/// A number of a run that cases can ask for.
struct FigureRow
{
    const char *id;
    const char *zh;
    const char *en;
    const char *unit;
    bool isOfAnswers;                        ///< says something of what answers what
    Amiss amiss;                             ///< what it counts
    LocalText (*whyNot)(const CycleStats &); ///< why it says nothing, or nothing
    double (*of)(const CycleStats &);
};

/// The row of an id, or null.
const FigureRow *figureRow(const QString &id);
/// Its name in both languages.
LocalText nameOf(const FigureRow &row);

} // namespace check
