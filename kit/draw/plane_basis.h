// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "kit/account/plane.h"
#include "kit/input/camera.h"

namespace quorvel::kit {

/// Two axes in the plane that look like the picture's: u to the right, v down, both unit vectors.
struct PlaneBasis {
    cv::Vec3d u;
    cv::Vec3d v;
};

/// \param plane usable
PlaneBasis basisOf(const Plane& plane);

/// \return (u, v) of a point's foot on the plane, mm
cv::Point2d footOnPlane(const PlaneBasis& basis, const cv::Vec3d& point);

/// The point of the plane that a pixel sees: its ray (x - cx) / fx, (y - cy) / fy, 1 cut with the plane.
/// \return camera coordinates, mm; not finite when the ray runs along the plane
cv::Vec3d pixelOnPlane(const Camera& camera, const Plane& plane, const cv::Point2f& pixel);

/// \param corners eight corners of a box in the picture
/// \return width: the side between ground corners 0 and 1, height: that between 1 and 2, measured on the plane, mm
cv::Size2d groundSides(const Camera& camera, const Plane& plane, const std::vector<cv::Point2f>& corners);

}  // namespace quorvel::kit
