// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Two directions that span a plane, in which footprints are measured.
struct PlaneBasis {
    cv::Vec3f e1;
    cv::Vec3f e2;
};

/// \param normal unit normal; (0, 0, 1) gives e1 = (1, 0, 0), any other e1 = (ny, -nx, 0) / |(nx, ny)|. Any
///        other normal with nx = ny = 0 is not allowed: its e1 would be NaN.
/// \return e1 and e2 = normal x e1
PlaneBasis planeBasis(const cv::Vec3f& normal);

}  // namespace quorvel::internal
