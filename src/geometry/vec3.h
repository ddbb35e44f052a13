// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

#include <opencv2/core.hpp>

#include "simd/loop_variant.h"

namespace quorvel::internal {

/// \return sqrt(x^2 + y^2 + z^2): squares, sum and root in double
inline double lengthOf(const cv::Vec3d& v) {
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

/// \return the vector divided by its length in double, then rounded to float; NaN for (0, 0, 0)
inline cv::Vec3f normalized(const cv::Vec3d& v) {
    const double length = lengthOf(v);
    return {static_cast<float>(v[0] / length), static_cast<float>(v[1] / length), static_cast<float>(v[2] / length)};
}

/// \return the same for the pixel loops
inline Direction direction(const cv::Vec3f& v) {
    return {v[0], v[1], v[2]};
}

/// \return whether a cloud's entry is a point: its length is at least 1e-9 mm or NaN
inline bool isValidPoint(const cv::Vec3f& point) {
    return !(lengthOf(point) < 1e-9);
}

/// \return whether a cloud's entry differs from (0, 0, 0); a NaN component counts as present
inline bool isPresent(const cv::Vec3f& point) {
    return !(point[0] == 0.0F && point[1] == 0.0F && point[2] == 0.0F);
}

}  // namespace quorvel::internal
