// SPDX-License-Identifier: Apache-2.0
#include "calib/smoothing_loops.h"

#include "common/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

/// Whole numbers up to 256 * 65535 + 128 < 2^24 throughout: every float operation here is exact, in any order.
inline Floats weighed(Floats a, Floats b, Floats c, Floats d, Floats e) {
    return (a + e) + all(4.0F) * (b + d) + all(6.0F) * c;
}

void weighRow(const uint16_t* depths, int count, float* sums) {
    for (int i = 0; i < count; i += kLanes) {
        const uint16_t* from = depths + i;
        store(sums + i, weighed(loadDepths(from), loadDepths(from + 1), loadDepths(from + 2), loadDepths(from + 3),
                                loadDepths(from + 4)));
    }
}

inline Ints smoothedDepths(const float* const* rows, int i) {
    const Floats sum =
        weighed(load(rows[0] + i), load(rows[1] + i), load(rows[2] + i), load(rows[3] + i), load(rows[4] + i));
    return truncated((sum + all(128.0F)) * all(1.0F / 256.0F));
}

void weighColumns(const float* const* rows, int count, uint16_t* smoothed) {
    int i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        storeDepths(smoothed + i, smoothedDepths(rows, i));
    }
    if (i < count) {
        uint16_t last[kLanes] = {};
        storeDepths(last, smoothedDepths(rows, i));
        for (int lane = 0; i + lane < count; ++lane) {
            smoothed[i + lane] = last[lane];
        }
    }
}

}  // namespace

const SmoothingLoops smoothingLoops{weighRow, weighColumns};

}  // namespace quorvel::internal::QUORVEL_VARIANT
