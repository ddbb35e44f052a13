// SPDX-License-Identifier: Apache-2.0
#include "sim/geometry.h"

#include <cmath>
#include <limits>

namespace quorvel::sim {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kGrid = 1099511627776.0;  // 2^40

double snap(double value) {
    return std::round(value * kGrid) / kGrid;
}

double dot(const cv::Vec3d& a, const cv::Vec3d& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

}  // namespace

SinCos sinCosDeg(double degrees) {
    const double radians = degrees * (kPi / 180.0);
    return {snap(std::sin(radians)), snap(std::cos(radians))};
}

cv::Vec3d Pose::directionToLocal(const cv::Vec3d& direction) const {
    return {dot(x, direction), dot(y, direction), dot(up, direction)};
}

cv::Vec3d Pose::pointToLocal(const cv::Vec3d& point) const {
    return directionToLocal(point - origin);
}

cv::Vec3d Pose::pointToCamera(const cv::Vec3d& local) const {
    return origin + local[0] * x + local[1] * y + local[2] * up;
}

Pose surfacePose(const Surface& surface) {
    const SinCos a = sinCosDeg(surface.tiltXDeg);
    const SinCos b = sinCosDeg(surface.tiltYDeg);
    Pose pose;
    pose.x = {b.cos, 0.0, -b.sin};
    pose.y = {a.sin * b.sin, a.cos, a.sin * b.cos};
    pose.up = {-a.cos * b.sin, a.sin, -a.cos * b.cos};
    pose.origin = {0.0, 0.0, surface.distance / (a.cos * b.cos)};
    return pose;
}

Pose standingPose(const Pose& surface, double x, double y, const SinCos& yaw) {
    Pose pose;
    pose.origin = surface.pointToCamera({x, y, 0.0});
    pose.x = yaw.cos * surface.x + yaw.sin * surface.y;
    pose.y = yaw.cos * surface.y - yaw.sin * surface.x;
    pose.up = surface.up;
    return pose;
}

cv::Vec3d rayThrough(const Camera& camera, double u, double v) {
    return {(u - camera.cx) / camera.fx, (v - camera.cy) / camera.fy, 1.0};
}

cv::Point2d project(const Camera& camera, const cv::Vec3d& point) {
    if (!(point[2] > 0.0)) {
        constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
        return {kNone, kNone};
    }
    return {camera.fx * point[0] / point[2] + camera.cx, camera.fy * point[1] / point[2] + camera.cy};
}

}  // namespace quorvel::sim
