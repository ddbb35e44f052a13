// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "simd/loop_variant.h"

namespace quorvel::internal {

/// The loops of computeNormalMap.
struct NormalMapLoops {
    /// One row of normal colours.
    /// \param points count + 1 points (x, y, z), mm
    /// \param below the points in the row below
    /// \param[out] colours `count` normal colours
    void (*colourRow)(const float* points, const float* below, int count, float* colours);
};

QUORVEL_DECLARE_LOOPS(NormalMapLoops, normalMapLoops)

}  // namespace quorvel::internal
