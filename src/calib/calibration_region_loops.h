// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/loop_variant.h"

namespace quorvel::internal {

/// The loops of pointsInsideRegion.
struct CalibrationRegionLoops {
    /// Copies the points whose |z| is greater than 0; (0, 0, 0) for the others.
    /// \param points count times (x, y, z), mm
    void (*copyPresent)(const float* points, int count, float* copy);
};

QUORVEL_DECLARE_LOOPS(CalibrationRegionLoops, calibrationRegionLoops)

}  // namespace quorvel::internal
