// SPDX-License-Identifier: Apache-2.0
#include "calib/least_squares_loops.h"

#include "simd/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

struct RowSums {
    EightSums sums;
    Floats counts;
};

/// kLanes points. Those without depth add +0, which changes nothing: a sum that starts with +0 is never -0 when
/// rounding to nearest.
inline void addPoints(RowSums& row, const float* points) {
    Floats x;
    Floats y;
    Floats z;
    loadPoints(points, x, y, z);
    const Mask present = z != all(0.0F);
    if (laneBits(present) == 0) {
        return;
    }
    x = valueWhere(present, x);
    y = valueWhere(present, y);
    z = valueWhere(present, z);
    addInTurn(row.sums, {x, y, z, x * x, x * y, y * y, x * z, y * z});
    row.counts = row.counts + valueWhere(present, all(1.0F));
}

int addRow(const float* points, int count, float* sums) {
    RowSums row{loadSums(sums), all(0.0F)};
    int i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        addPoints(row, points + 3 * i);
    }
    if (i < count) {
        float last[3 * kLanes] = {};
        for (int k = 0; k < 3 * (count - i); ++k) {
            last[k] = points[3 * i + k];
        }
        addPoints(row, last);
    }
    storeSums(sums, row.sums);
    float counts[kLanes];
    store(counts, row.counts);
    int added = 0;
    for (const float lane : counts) {
        added += static_cast<int>(lane);
    }
    return added;
}

}  // namespace

const LeastSquaresLoops leastSquaresLoops{addRow};

}  // namespace quorvel::internal::QUORVEL_VARIANT
