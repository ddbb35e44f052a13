// SPDX-License-Identifier: Apache-2.0
#include "measure/box_geometry.h"

#include <cmath>
#include <cstddef>

namespace quorvel::internal {

namespace {

constexpr float kNearVertical = 0.87F;
constexpr float kTiltedShrink = 0.99F;
constexpr std::size_t kManyPoints = 20000;

cv::Point2f projected(const cv::Vec3f& point, const Projection& camera) {
    return {point[0] * camera.fx / point[2] + camera.cx, point[1] * camera.fy / point[2] + camera.cy};
}

cv::Vec3f onPlane(const cv::Point2f& corner, const PlaneBasis& basis, const Plane& plane) {
    cv::Vec3f point;
    for (int axis = 0; axis < 3; ++axis) {
        point[axis] = (corner.x * basis.e1[axis] + corner.y * basis.e2[axis]) + plane.offset * plane.normal[axis];
    }
    return point;
}

cv::Vec3f shifted(const cv::Vec3f& point, float distance, const cv::Vec3f& normal) {
    return {point[0] + distance * normal[0], point[1] + distance * normal[1], point[2] + distance * normal[2]};
}

double length(const cv::Point2f& difference) {
    const double x = difference.x;
    const double y = difference.y;
    return std::sqrt(x * x + y * y);
}

/// Share of the way between two image positions that runs vertically, 0 ... 1; NaN when they coincide.
float verticalShare(const cv::Point2f& from, const cv::Point2f& to) {
    const cv::Point2f difference = from - to;
    return std::fabs(static_cast<float>(static_cast<double>(difference.y) / length(difference)));
}

float distanceCoefficient(float offset) {
    if (offset > 1300.0F && offset < 1400.0F) {
        return 0.0055F;
    }
    if (offset > 1400.0F && offset < 1500.0F) {
        return 0.0065F;
    }
    return 0.007F;
}

}  // namespace

std::vector<cv::Point2f> boxCorners(const FootprintCorners& footprint, const PlaneBasis& basis, const Plane& plane,
                                    float topDistance, const Projection& camera) {
    constexpr std::size_t kFootprintCorners = 4;
    std::vector<cv::Point2f> corners(2 * kFootprintCorners);
    for (std::size_t k = 0; k < kFootprintCorners; ++k) {
        const cv::Vec3f ground = onPlane(footprint[k], basis, plane);
        corners[k] = projected(ground, camera);
        corners[k + kFootprintCorners] = projected(shifted(ground, topDistance, plane.normal), camera);
    }
    return corners;
}

float correctedHeight(float height, float offset) {
    return height - distanceCoefficient(offset) * (offset - height);
}

Sides footprintSides(const FootprintCorners& footprint) {
    return {static_cast<float>(length(footprint[0] - footprint[1])),
            static_cast<float>(length(footprint[1] - footprint[2]))};
}

Sides correctedSides(Sides sides, const std::vector<cv::Point2f>& corners, std::size_t points) {
    const float shareA = verticalShare(corners[4], corners[5]);
    const float shareB = verticalShare(corners[5], corners[6]);
    if (shareA <= kNearVertical && shareB <= kNearVertical) {
        return {sides.a * kTiltedShrink, sides.b * kTiltedShrink};
    }
    if (points >= kManyPoints) {
        return sides;
    }
    const float growth = 5000.0F / static_cast<float>(points) * 0.05F + 1.0F;
    // A side of no length has a NaN share, which is not greater: the other side grows.
    if (shareA > shareB) {
        return {sides.a * growth, sides.b};
    }
    return {sides.a, sides.b * growth};
}

}  // namespace quorvel::internal
