// SPDX-License-Identifier: Apache-2.0
#include "plane.h"

#include <algorithm>
#include <cmath>

namespace quorvel::command {

bool isUsable(const Plane& plane) {
    // What the library measures from: a normal typed in with two decimals is good to about 1e-2.
    constexpr double kUnitLengthTolerance = 1e-2;
    const double length = cv::norm(plane.normal);
    const bool hasDirections = plane.normal[0] != 0.0F || plane.normal[1] != 0.0F || plane.normal[2] == 1.0F;
    return std::abs(length - 1.0) <= kUnitLengthTolerance && std::isfinite(plane.offset) && plane.offset > 0.0F &&
           hasDirections;
}

double tiltDegrees(const Plane& plane) {
    const double cosine = static_cast<double>(plane.normal[2]) / cv::norm(plane.normal);
    return std::acos(std::clamp(cosine, -1.0, 1.0)) * 180.0 / CV_PI;
}

float heightAbove(const Plane& plane, const cv::Vec3f& point) {
    const float distance =
        point[0] * plane.normal[0] + point[1] * plane.normal[1] + point[2] * plane.normal[2] - plane.offset;
    return -distance;
}

bool isPresent(const cv::Vec3f& point) {
    return point != cv::Vec3f(0.0F, 0.0F, 0.0F);
}

}  // namespace quorvel::command
