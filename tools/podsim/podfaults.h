#pragma once

#include "tools/podsim/podoptions.h"

#include <QByteArray>
#include <QVector>

#include <random>

namespace podsim {

/// Turns the answers of one connection into the pieces that are written, with the faults that were
/// asked for. Plain data.
class PodFaults
{
public:
    explicit PodFaults(const FaultOptions &options);

    /// The pieces to be written now, each by itself. None if the answer is dropped or held back.
    QVector<QByteArray> pieces(const QByteArray &answer);

private:
    QByteArray noise();

    FaultOptions m_options;
    std::mt19937 m_random;
    int m_count = 0; ///< answers so far
    int m_heldCount = 0;
    QByteArray m_held;
};

} // namespace podsim
