// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::command {

/// The reference plane: p lies on it when normal . p = offset (mm, camera coordinates, normal with positive z).
struct Plane {
    cv::Vec3f normal{0.0F, 0.0F, 0.0F};
    /// Perpendicular distance from the camera, mm.
    float offset = 0.0F;
};

/// \return whether the library measures with the plane: finite, a unit normal, in front of the camera, and along the
///         optical axis only if the normal is exactly (0, 0, 1)
bool isUsable(const Plane& plane);

/// \return angle between the plane's normal and the optical axis, degrees; 0 for a camera looking straight down
double tiltDegrees(const Plane& plane);

/// \return height of a point above the plane, mm; negative beyond the plane. Computed in float in the library's
///         order of operations, so that comparisons with the minimum height come out alike.
float heightAbove(const Plane& plane, const cv::Vec3f& point);

/// \return whether a point cloud's entry holds a point; an entry without depth is (0, 0, 0)
bool isPresent(const cv::Vec3f& point);

}  // namespace quorvel::command
