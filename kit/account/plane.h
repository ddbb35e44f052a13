// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include "geometry/plane_model.h"
#include "geometry/vec3.h"

namespace quorvel::kit {

using internal::isPresent;
using internal::Plane;

/// \return whether the library measures with the plane
inline bool isUsable(const Plane& plane) {
    return internal::planeProblem(plane).empty();
}

/// \return angle between the plane's normal and the optical axis, degrees; 0 for a camera looking straight down
double tiltDegrees(const Plane& plane);

/// \return height of a point above the plane, mm; negative beyond the plane
inline float heightAbove(const Plane& plane, const cv::Vec3f& point) {
    return -internal::signedDistance(point, plane.normal, plane.offset);
}

}  // namespace quorvel::kit
