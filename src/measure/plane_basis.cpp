// SPDX-License-Identifier: Apache-2.0
#include "measure/plane_basis.h"

#include <cmath>

namespace quorvel::internal {

namespace {

cv::Vec3f firstDirection(const cv::Vec3f& normal) {
    if (normal[0] == 0.0F && normal[1] == 0.0F && normal[2] == 1.0F) {
        return {1.0F, 0.0F, 0.0F};
    }
    const double nx = normal[0];
    const double ny = normal[1];
    const double length = std::sqrt(nx * nx + ny * ny);
    return {static_cast<float>(ny / length), static_cast<float>(-nx / length), static_cast<float>(0.0 / length)};
}

}  // namespace

PlaneBasis planeBasis(const cv::Vec3f& normal) {
    const cv::Vec3f e1 = firstDirection(normal);
    const cv::Vec3f e2(normal[1] * e1[2] - normal[2] * e1[1], normal[2] * e1[0] - normal[0] * e1[2],
                       normal[0] * e1[1] - normal[1] * e1[0]);
    return {e1, e2};
}

}  // namespace quorvel::internal
