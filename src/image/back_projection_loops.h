// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "simd/loop_variant.h"

namespace quorvel::internal {

/// The loops of backProject.
struct BackProjectionLoops {
    /// One row of points.
    /// \param depths `count` depths, mm
    /// \param cx,invFx as in BackProjection
    /// \param v row of the pixels minus cy, pixels
    /// \param[out] points `count` points (x, y, z), mm
    void (*projectRow)(const std::uint16_t* depths, int count, float cx, float invFx, float v, float invFy,
                       float* points);
};

QUORVEL_DECLARE_LOOPS(BackProjectionLoops, backProjectionLoops)

}  // namespace quorvel::internal
