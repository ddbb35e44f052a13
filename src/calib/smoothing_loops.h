// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "common/loop_variant.h"

namespace quorvel::internal {

/// The loops of smoothDepth: the two directions of the kernel (1 4 6 4 1) / 16, unnormalised until the end.
struct SmoothingLoops {
    /// Weighs along a row.
    /// \param depths count + 4 depths, the first two and the last two beyond the row's ends, and as many values more
    ///        as fill the last lanes; mm
    /// \param[out] sums room for `count` values and those that fill the last lanes: 16 times the depth, mm
    void (*weighRow)(const std::uint16_t* depths, int count, float* sums);
    /// Weighs across five rows of such sums and rounds halves up.
    /// \param[out] smoothed `count` depths, mm
    void (*weighColumns)(const float* const* rows, int count, std::uint16_t* smoothed);
};

QUORVEL_DECLARE_LOOPS(SmoothingLoops, smoothingLoops)

}  // namespace quorvel::internal
