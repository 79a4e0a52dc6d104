#pragma once

#include <QVector>

namespace check {

/// Times of a run, and when each was measured.
struct Times
{
    QVector<int> micros;  ///< microseconds
    QVector<int> moments; ///< milliseconds since the run's first frame; as many

    void add(int time, int moment)
    {
        micros.append(time);
        moments.append(moment);
    }
};

} // namespace check
