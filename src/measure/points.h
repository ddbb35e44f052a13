// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// \return whether a cloud's entry is a point: its length is not below 1e-9 mm (a NaN length is not below)
inline bool isValidPoint(const cv::Vec3f& point) {
    const double x = point[0];
    const double y = point[1];
    const double z = point[2];
    return !(std::sqrt(x * x + y * y + z * z) < 1e-9);
}

/// \return whether a cloud's entry differs from (0, 0, 0); a NaN component counts as present
inline bool isPresent(const cv::Vec3f& point) {
    return !(point[0] == 0.0F && point[1] == 0.0F && point[2] == 0.0F);
}

}  // namespace quorvel::internal
