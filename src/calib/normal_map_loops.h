// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

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

/// Orientation bins: four a channel.
constexpr int kNormalBins = 64;
/// Each bin has four counters, and four neighbouring pixels use one each. Neighbours mostly fall in the same bin, and a
/// counter that the pixel before has just written is slow to read.
constexpr int kCountsPerBin = 4;

/// The loops of dominantNormalBin.
struct DominantNormalLoops {
    /// Adds one row of normal colours to the counts.
    /// \param colours `count` normal colours
    /// \param[in,out] counts kCountsPerBin times kNormalBins counts; those of bin b are b, kNormalBins + b, ...
    void (*countRow)(const float* colours, int count, std::int32_t* counts);
};

QUORVEL_DECLARE_LOOPS(DominantNormalLoops, dominantNormalLoops)

}  // namespace quorvel::internal
