#pragma once

#include <QVector>

#include <algorithm>
#include <cmath>

namespace check {

/// The least of the sorted values that a share of them, from 0 to 1, doesn't exceed (nearest rank:
/// always a value that was measured); 0 for none. The median is that of 0.5.
inline int percentile(const QVector<int> &sorted, double share)
{
    if (sorted.isEmpty())
        return 0;
    // 0.07 * 100 is a little over 7 in binary.
    const int rank = int(std::ceil(share * sorted.size() - 1e-9));
    return sorted[std::clamp(rank, 1, sorted.size()) - 1];
}

} // namespace check
