// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "simd/loop_variant.h"

namespace quorvel::internal {

/// The loops of cutAboveReferencePlane.
struct HeightCutLoops {
    /// Finds the pixels of a row whose points stand high enough.
    /// \param points `count` points (x, y, z), mm
    /// \param normal,offset the plane
    /// \param minHeight mm
    /// \param[out] high one bit a pixel, as in BitImage: the point is at least minHeight above the plane; 0 on entry
    /// \param[out] doubt one bit a pixel: the point is so near the camera that its exact length decides whether it is a
    ///             point; 0 on entry
    void (*findHigh)(const float* points, int count, Direction normal, float offset, float minHeight,
                     std::uint64_t* high, std::uint64_t* doubt);
};

QUORVEL_DECLARE_LOOPS(HeightCutLoops, heightCutLoops)

}  // namespace quorvel::internal
