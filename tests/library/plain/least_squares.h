// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <vector>

#include <opencv2/core.hpp>

#include "library/plain/solve3x3.h"

namespace quorvel::test::plain {

/// Plane of least squares in z over a list of points, every sum taken in its own pass over the list.
/// \param[out] normal,t the plane; normal (0, 0, 1) and t 0 when the equations are singular
inline void planeThroughPoints(const std::vector<cv::Vec3f>& points, float normal[3], float& t) {
    const auto sumOf = [&points](int i, int j) {
        float sum = 0.0F;
        for (const auto& point : points) {
            sum += (j < 0 ? point[i] : point[i] * point[j]);
        }
        return sum;
    };
    float n = 0.0F;
    for (std::size_t i = 0; i < points.size(); ++i) {
        n += 1.0F;
    }
    const float sx = sumOf(0, -1);
    const float sy = sumOf(1, -1);
    const float sxy = sumOf(0, 1);
    float a[9] = {sumOf(0, 0), sxy, sx, sxy, sumOf(1, 1), sy, sx, sy, n};
    float b[3] = {sumOf(0, 2), sumOf(1, 2), sumOf(2, -1)};
    float x[3] = {0.0F, 0.0F, 0.0F};
    solve3x3(a, b, x);
    const double squared =
        static_cast<double>(x[0]) * static_cast<double>(x[0]) + static_cast<double>(x[1]) * static_cast<double>(x[1]);
    const auto length = static_cast<float>(std::sqrt(squared + 1.0));
    normal[0] = -x[0] / length;
    normal[1] = -x[1] / length;
    normal[2] = 1.0F / length;
    t = x[2] / length;
}

/// Least-squares plane of every point with z other than 0.
/// \return 0, or -1 (outputs untouched) when there are fewer than ceil(minimum) points
inline int fitPlaneLeastSquares(const cv::Mat& cloud, float normal[3], float& t, float minimum) {
    std::vector<cv::Vec3f> points;
    for (int row = 0; row < cloud.rows; ++row) {
        for (int column = 0; column < cloud.cols; ++column) {
            const auto point = cloud.at<cv::Vec3f>(row, column);
            if (point[2] != 0.0F) {
                points.push_back(point);
            }
        }
    }
    if (std::ceil(minimum) > static_cast<float>(points.size())) {
        return -1;
    }
    planeThroughPoints(points, normal, t);
    return 0;
}

}  // namespace quorvel::test::plain
