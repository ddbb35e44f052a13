// SPDX-License-Identifier: Apache-2.0
#include "kit/draw/plane_basis.h"

namespace quorvel::kit {

PlaneBasis basisOf(const Plane& plane) {
    const cv::Vec3d normal = cv::normalize(cv::Vec3d(plane.normal));
    // The camera's x axis projected onto the plane. The camera looks down on the surface, so the axis is never
    // perpendicular to it.
    const cv::Vec3d cameraX(1.0, 0.0, 0.0);
    const cv::Vec3d u = cv::normalize(cameraX - normal * cameraX.dot(normal));
    return {u, normal.cross(u)};
}

cv::Point2d footOnPlane(const PlaneBasis& basis, const cv::Vec3d& point) {
    return {basis.u.dot(point), basis.v.dot(point)};
}

cv::Vec3d pixelOnPlane(const Camera& camera, const Plane& plane, const cv::Point2f& pixel) {
    const cv::Vec3d ray((static_cast<double>(pixel.x) - camera.cx) / camera.fx,
                        (static_cast<double>(pixel.y) - camera.cy) / camera.fy, 1.0);
    return ray * (static_cast<double>(plane.offset) / cv::Vec3d(plane.normal).dot(ray));
}

cv::Size2d groundSides(const Camera& camera, const Plane& plane, const std::vector<cv::Point2f>& corners) {
    const cv::Vec3d a = pixelOnPlane(camera, plane, corners[0]);
    const cv::Vec3d b = pixelOnPlane(camera, plane, corners[1]);
    const cv::Vec3d c = pixelOnPlane(camera, plane, corners[2]);
    return {cv::norm(a - b), cv::norm(b - c)};
}

}  // namespace quorvel::kit
