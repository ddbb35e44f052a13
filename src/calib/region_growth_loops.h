// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "simd/loop_variant.h"

namespace quorvel::internal {

/// The loops of growPlaneRegion. Rows of `count` pixels become bits, one a pixel, in as many 64-bit words as they
/// fill; the bits beyond the last pixel are 0.
struct RegionGrowthLoops {
    /// The pixels whose colour, each channel rounded to the nearest whole number (ties to even) and clamped to
    /// 0 ... 255, lies in the band.
    /// \param colours `count` normal colours
    /// \param low,high the open band, one value a channel
    void (*findOriented)(const float* colours, int count, const float* low, const float* high, std::uint64_t* oriented);
    /// The points that are not (0, 0, 0).
    /// \param points count times (x, y, z), mm
    void (*findPresent)(const float* points, int count, std::uint64_t* present);
    /// Copies the chosen points; (0, 0, 0) for the others.
    void (*copyChosen)(const float* points, int count, const std::uint64_t* chosen, float* copy);
};

QUORVEL_DECLARE_LOOPS(RegionGrowthLoops, regionGrowthLoops)

}  // namespace quorvel::internal
