// SPDX-License-Identifier: Apache-2.0
#include "calib/calibration_region_loops.h"

#include "common/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

inline void copyPixels(const float* points, float* copy) {
    Floats x;
    Floats y;
    Floats z;
    loadPoints(points, x, y, z);
    const Mask present = absolute(z) > all(0.0F);
    storePoints(copy, valueWhere(present, x), valueWhere(present, y), valueWhere(present, z));
}

void copyPresent(const float* points, int count, float* copy) {
    int i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        copyPixels(points + 3 * i, copy + 3 * i);
    }
    if (i < count) {
        float last[3 * kLanes] = {};
        float copied[3 * kLanes];
        for (int k = 0; k < 3 * (count - i); ++k) {
            last[k] = points[3 * i + k];
        }
        copyPixels(last, copied);
        for (int k = 0; k < 3 * (count - i); ++k) {
            copy[3 * i + k] = copied[k];
        }
    }
}

}  // namespace

const CalibrationRegionLoops calibrationRegionLoops{copyPresent};

}  // namespace quorvel::internal::QUORVEL_VARIANT
