// SPDX-License-Identifier: Apache-2.0
#include "calib/least_squares.h"

#include <array>
#include <cmath>

#include "calib/solve3x3.h"

namespace quorvel::internal {

void PlaneSums::add(const cv::Vec3f& point) {
    n_ += 1.0F;
    x_ += point[0];
    y_ += point[1];
    z_ += point[2];
    xx_ += point[0] * point[0];
    xy_ += point[0] * point[1];
    yy_ += point[1] * point[1];
    xz_ += point[0] * point[2];
    yz_ += point[1] * point[2];
}

Plane PlaneSums::solve() const {
    std::array<float, 3> slopes{0.0F, 0.0F, 0.0F};
    solve3x3({xx_, xy_, x_, xy_, yy_, y_, x_, y_, n_}, {xz_, yz_, z_}, slopes);
    return planeFromSlopes(slopes[0], slopes[1], slopes[2]);
}

int fitPlaneLeastSquares(const cv::Mat& cloud, cv::Vec3f& normal, float& offset, float minPoints) {
    PlaneSums sums;
    for (int row = 0; row < cloud.rows; ++row) {
        const auto* points = cloud.ptr<cv::Vec3f>(row);
        for (int column = 0; column < cloud.cols; ++column) {
            if (points[column][2] != 0.0F) {
                sums.add(points[column]);
            }
        }
    }
    if (std::ceil(minPoints) > sums.count()) {
        return -1;
    }
    const Plane plane = sums.solve();
    normal = plane.normal;
    offset = plane.offset;
    return 0;
}

}  // namespace quorvel::internal
