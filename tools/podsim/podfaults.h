#pragma once

#include "tools/podsim/faultoptions.h"

#include <QByteArray>
#include <QVector>

#include <random>

namespace podsim {

/// What is to be written for an answer: nothing if it is dropped or held back.
struct PodWrite
{
    QVector<QByteArray> pieces; ///< each by itself
    int frames = 0;             ///< whole answers in them
    int late = 0;               ///< milliseconds, beside the delay that all answers have
};

/// Turns the answers of one connection into the pieces that are written, with the faults of order,
/// time and pieces that were asked for. Plain data.
class PodFaults
{
public:
    explicit PodFaults(const FaultOptions &options);

    /// Takes the next answer, a whole frame.
    PodWrite take(const QByteArray &answer);

private:
    bool isTurn(int every) const { return every > 0 && m_count % every == 0; }
    QVector<QByteArray> ordered(const QByteArray &frame);
    void collect(const QByteArray &frame, PodWrite &write);
    int lateness();
    QByteArray noise();

    FaultOptions m_options;
    std::mt19937 m_random;
    int m_count = 0;      ///< answers so far
    QByteArray m_swapped; ///< the answer that waits for the one that follows it
    int m_heldCount = 0;
    QByteArray m_held; ///< answers that are to be written together
};

} // namespace podsim
