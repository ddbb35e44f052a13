// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include "sim/scene.h"

namespace quorvel::sim {

/// Sine and cosine of one angle.
struct SinCos {
    double sin;
    double cos;
};

/// Sine and cosine of an angle in degrees, rounded to multiples of 2^-40. The mathematics libraries of different
/// platforms may differ in the last bit of a sine. Without the low bits they agree. Everything after this uses only
/// + - * / and square roots, which every platform rounds in the same way. 2^-40 of a metre is about a picometre.
SinCos sinCosDeg(double degrees);

/// A right-angled frame standing on the surface, in camera coordinates: x and y lie in the surface, up points to the
/// camera's side. (x, y, -up) is right-handed.
struct Pose {
    cv::Vec3d origin;  ///< mm
    cv::Vec3d x;       ///< unit vector
    cv::Vec3d y;       ///< unit vector
    cv::Vec3d up;      ///< unit vector

    /// A camera-space direction in this frame's coordinates.
    cv::Vec3d directionToLocal(const cv::Vec3d& direction) const;
    /// A camera-space point in this frame's coordinates, mm.
    cv::Vec3d pointToLocal(const cv::Vec3d& point) const;
    /// A point of this frame in camera coordinates, mm.
    cv::Vec3d pointToCamera(const cv::Vec3d& local) const;
};

/// Frame of the plane coordinates: origin where the optical axis meets the surface.
Pose surfacePose(const Surface& surface);

/// Frame of an object that stands at (x, y) of the surface, mm, turned by yaw from the surface's x towards its y.
Pose standingPose(const Pose& surface, double x, double y, const SinCos& yaw);

/// Direction of the ray through image position (u, v), pixels, in camera coordinates; its z is 1, so that the length
/// of a point along it is the point's depth.
cv::Vec3d rayThrough(const Camera& camera, double u, double v);

/// Image position, pixels, of a camera-space point; NaN for a point that does not lie in front of the camera.
cv::Point2d project(const Camera& camera, const cv::Vec3d& point);

}  // namespace quorvel::sim
