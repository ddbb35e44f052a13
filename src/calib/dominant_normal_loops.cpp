// SPDX-License-Identifier: Apache-2.0
#include "calib/dominant_normal_loops.h"

#include "simd/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

constexpr int kAtATime = 8;

/// Bits 6 and 7 of each channel truncated to int, the first channel's lowest.
inline Ints binNumbers(const float* colours) {
    Floats x;
    Floats y;
    Floats z;
    loadPoints(colours, x, y, z);
    const Ints topBits = allInts(0xC0);
    return shiftedRight<6>(truncated(x) & topBits) | shiftedRight<4>(truncated(y) & topBits) |
           shiftedRight<2>(truncated(z) & topBits);
}

inline void countPixels(const float* colours, int32_t* counts) {
    int32_t bins[kAtATime];
    for (int i = 0; i < kAtATime; i += kLanes) {
        store(bins + i, binNumbers(colours + 3 * i));
    }
    for (int i = 0; i < kAtATime; ++i) {
        ++counts[(i % kCountsPerBin) * kNormalBins + bins[i]];
    }
}

void countRow(const float* colours, int count, int32_t* counts) {
    int i = 0;
    for (; i + kAtATime <= count; i += kAtATime) {
        countPixels(colours + 3 * i, counts);
    }
    for (; i < count; ++i) {
        float colour[3 * kLanes] = {colours[3 * i], colours[3 * i + 1], colours[3 * i + 2]};
        int32_t bins[kLanes];
        store(bins, binNumbers(colour));
        ++counts[bins[0]];
    }
}

}  // namespace

const DominantNormalLoops dominantNormalLoops{countRow};

}  // namespace quorvel::internal::QUORVEL_VARIANT
