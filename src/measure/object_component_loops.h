// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "simd/loop_variant.h"

namespace quorvel::internal {

/// The loops of selectObjectComponent.
struct ObjectComponentLoops {
    /// Finds the pixels of a row with a depth.
    /// \param depths `count` depths
    /// \param[out] bits one bit a pixel, as in BitImage; 0 on entry
    void (*findDepths)(const std::uint16_t* depths, int count, std::uint64_t* bits);

    /// Distances of a row's pixels from a point of the image, in double, rounded to float.
    /// \param middle column of the point, below 2^24
    /// \param dy rows between the row and the point, below 2^24
    /// \param[out] distances room for `count`, rounded up to a multiple of 64
    void (*measureDistances)(int middle, int dy, int count, float* distances);
};

QUORVEL_DECLARE_LOOPS(ObjectComponentLoops, objectComponentLoops)

}  // namespace quorvel::internal
