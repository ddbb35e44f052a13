// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "simd/loop_variant.h"

namespace quorvel::internal {

/// Sums of the normal equations over points: x, y, z, xx, xy, yy, xz, yz.
constexpr int kPlaneSums = 8;

/// The loops of fitPlaneLeastSquares.
struct LeastSquaresLoops {
    /// Adds the points of a row whose z is not 0, in their order.
    /// \param points count times (x, y, z), mm
    /// \param[in,out] sums kPlaneSums sums
    /// \return how many points were added
    int (*addRow)(const float* points, int count, float* sums);
};

QUORVEL_DECLARE_LOOPS(LeastSquaresLoops, leastSquaresLoops)

}  // namespace quorvel::internal
