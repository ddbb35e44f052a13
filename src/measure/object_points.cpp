// SPDX-License-Identifier: Apache-2.0
#include "measure/object_points.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "calib/plane_model.h"
#include "common/numbers.h"
#include "measure/points.h"

namespace quorvel::internal {

namespace {

constexpr double kHeightQuantile = 0.99;

float dot(const cv::Vec3f& a, const cv::Vec3f& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

}  // namespace

ObjectPoints collectObjectPoints(const cv::Mat& cloud, const cv::Vec3f& normal, float offset, const PlaneBasis& basis) {
    ObjectPoints object;
    for (int row = 0; row < cloud.rows; ++row) {
        const auto* points = cloud.ptr<cv::Vec3f>(row);
        for (int column = 0; column < cloud.cols; ++column) {
            const cv::Vec3f& point = points[column];
            if (!isValidPoint(point)) {
                continue;
            }
            const float distance = signedDistance(point, normal, offset);
            object.heights.push_back(std::fabs(distance));
            if (std::fabs(distance) > std::fabs(object.largestDistance)) {
                object.largestDistance = distance;
            }
            const cv::Vec3f foot(point[0] - distance * normal[0], point[1] - distance * normal[1],
                                 point[2] - distance * normal[2]);
            object.footprint.emplace_back(truncateToInt(dot(basis.e1, foot)), truncateToInt(dot(basis.e2, foot)));
        }
    }
    return object;
}

float heightQuantile(std::vector<float>& heights) {
    const auto index = static_cast<std::ptrdiff_t>(static_cast<double>(heights.size()) * kHeightQuantile);
    // NaN has no place in an order; sorted to the end it cannot upset the selection among the numbers.
    const auto numbersEnd =
        std::partition(heights.begin(), heights.end(), [](float height) { return !std::isnan(height); });
    if (index >= numbersEnd - heights.begin()) {
        return std::numeric_limits<float>::quiet_NaN();
    }
    std::nth_element(heights.begin(), heights.begin() + index, numbersEnd);
    return heights[static_cast<std::size_t>(index)];
}

}  // namespace quorvel::internal
