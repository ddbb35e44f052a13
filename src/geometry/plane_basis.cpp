// SPDX-License-Identifier: Apache-2.0
#include "geometry/plane_basis.h"

#include "geometry/vec3.h"

namespace quorvel::internal {

namespace {

cv::Vec3f firstDirection(const cv::Vec3f& normal) {
    if (normal[0] == 0.0F && normal[1] == 0.0F && normal[2] == 1.0F) {
        return {1.0F, 0.0F, 0.0F};
    }
    return normalized(cv::Vec3f(normal[1], -normal[0], 0.0F));
}

}  // namespace

PlaneBasis planeBasis(const cv::Vec3f& normal) {
    const cv::Vec3f e1 = firstDirection(normal);
    const cv::Vec3f e2(normal[1] * e1[2] - normal[2] * e1[1], normal[2] * e1[0] - normal[0] * e1[2],
                       normal[0] * e1[1] - normal[1] * e1[0]);
    return {e1, e2};
}

}  // namespace quorvel::internal
