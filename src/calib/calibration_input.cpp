// SPDX-License-Identifier: Apache-2.0
#include "calib/calibration_input.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <opencv2/imgproc.hpp>

#include "image/image_form.h"
#include "image/numbers.h"

namespace quorvel::internal {

namespace {

int throughFloat(std::int64_t coordinate) {
    return roundToInt(static_cast<float>(coordinate));
}

/// The whole numbers strictly between two bounds that also lie in 0 ... limit - 1.
cv::Range strictlyBetween(int bound, int otherBound, int limit) {
    const std::int64_t low = std::min(bound, otherBound);
    const std::int64_t high = std::max(bound, otherBound);
    const auto first = static_cast<int>(std::clamp<std::int64_t>(low + 1, 0, limit));
    const auto end = static_cast<int>(std::clamp<std::int64_t>(high, first, limit));
    return {first, end};
}

}  // namespace

RegionCorners regionCorners(const cv::Rect& region) {
    const int left = throughFloat(region.x);
    const int top = throughFloat(region.y);
    const int right = throughFloat(static_cast<std::int64_t>(region.x) + region.width);
    const int bottom = throughFloat(static_cast<std::int64_t>(region.y) + region.height);
    return {cv::Point(left, top), cv::Point(left, bottom), cv::Point(right, top)};
}

cv::Rect insideOf(const RegionCorners& corners, const cv::Size& image) {
    const cv::Range rows = strictlyBetween(corners[0].y, corners[1].y, image.height);
    const cv::Range columns = strictlyBetween(corners[0].x, corners[2].x, image.width);
    return {columns.start, rows.start, columns.size(), rows.size()};
}

void pointsInsideRegion(const cv::Mat& cloud, const RegionCorners& corners, cv::Mat& inside) {
    createExclusive(inside, cloud.size(), CV_32FC3);
    inside.setTo(0);
    const cv::Rect region = insideOf(corners, cloud.size());
    for (int row = region.y; row < region.y + region.height; ++row) {
        const auto* from = cloud.ptr<cv::Vec3f>(row);
        auto* to = inside.ptr<cv::Vec3f>(row);
        for (int column = region.x; column < region.x + region.width; ++column) {
            if (std::fabs(from[column][2]) > 0.0F) {
                to[column] = from[column];
            }
        }
    }
}

float halfRegionArea(const RegionCorners& corners) {
    const double height = std::fabs(static_cast<double>(corners[1].y) - corners[0].y);
    const double width = std::fabs(static_cast<double>(corners[2].x) - corners[0].x);
    return static_cast<float>(height * width * 0.5);
}

namespace {

cv::Mat smoothedOnce(const cv::Mat& depth) {
    // Isolated: a depth image that is a window of the host's larger one ends at its own border too.
    constexpr int kBorder = cv::BORDER_REFLECT_101 | cv::BORDER_ISOLATED;
    constexpr double kSigmaOfTheSize = 0.0;
    cv::Mat smoothed;
    cv::GaussianBlur(depth, smoothed, cv::Size(5, 5), kSigmaOfTheSize, kSigmaOfTheSize, kBorder);
    return smoothed;
}

}  // namespace

cv::Mat smoothDepth(const cv::Mat& depth) {
    return smoothedOnce(smoothedOnce(depth));
}

}  // namespace quorvel::internal
