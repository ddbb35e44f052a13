// SPDX-License-Identifier: Apache-2.0
#include "library/plain/object_points.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>

namespace quorvel::test::plain {

namespace {

float dot(const cv::Vec3f& a, const cv::Vec3f& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

}  // namespace

int truncatedToInt(float value) {
    const bool fits = value >= -2147483648.0F && value < 2147483648.0F;
    return fits ? static_cast<int>(value) : INT_MIN;
}

Basis planeBasis(const cv::Vec3f& normal) {
    Basis basis{{1.0F, 0.0F, 0.0F}, {}};
    const cv::Vec3f& n = normal;
    cv::Vec3f& e1 = basis.e1;
    if (!(n[0] == 0.0F && n[1] == 0.0F && n[2] == 1.0F)) {
        const double x = n[0];
        const double y = n[1];
        const double length = std::sqrt(x * x + y * y);
        e1 = {static_cast<float>(y / length), static_cast<float>(-x / length), static_cast<float>(0.0 / length)};
    }
    basis.e2 = {n[1] * e1[2] - n[2] * e1[1], n[2] * e1[0] - n[0] * e1[2], n[0] * e1[1] - n[1] * e1[0]};
    return basis;
}

Points collectObjectPoints(const cv::Mat& cloud, const cv::Vec3f& normal, float offset, const Basis& basis) {
    const cv::Vec3f& n = normal;
    Points points;
    for (int row = 0; row < cloud.rows; ++row) {
        for (int column = 0; column < cloud.cols; ++column) {
            const auto& p = cloud.at<cv::Vec3f>(row, column);
            const double x = p[0];
            const double y = p[1];
            const double z = p[2];
            if (std::sqrt(x * x + y * y + z * z) < 1e-9) {
                continue;
            }
            const float d = n[0] * p[0] + n[1] * p[1] + n[2] * p[2] - offset;
            points.heights.push_back(std::abs(d));
            if (std::abs(d) > std::abs(points.largest)) {
                points.largest = d;
            }
            const cv::Vec3f q(p[0] - d * n[0], p[1] - d * n[1], p[2] - d * n[2]);
            points.footprint.emplace_back(truncatedToInt(dot(basis.e1, q)), truncatedToInt(dot(basis.e2, q)));
        }
    }
    return points;
}

float heightQuantile(std::vector<float> heights) {
    std::sort(heights.begin(), heights.end(), [](float a, float b) { return std::isnan(b) ? !std::isnan(a) : a < b; });
    return heights[static_cast<std::size_t>(static_cast<double>(heights.size()) * 0.99)];
}

}  // namespace quorvel::test::plain
