// SPDX-License-Identifier: Apache-2.0
#include "kit/input/depth_unit.h"

#include <cmath>
#include <cstdint>

#include <opencv2/imgproc.hpp>

namespace quorvel::kit {

cv::Mat depthInMillimetres(const cv::Mat& stored, double millimetresPerUnit) {
    if (stored.type() == CV_16UC1 && millimetresPerUnit == 1.0) {
        return stored.clone();
    }
    cv::Mat values;
    stored.convertTo(values, CV_64F);
    cv::Mat depth(stored.size(), CV_16UC1);
    for (int row = 0; row < values.rows; ++row) {
        for (int col = 0; col < values.cols; ++col) {
            const double millimetres = values.at<double>(row, col) * millimetresPerUnit;
            depth.at<std::uint16_t>(row, col) =
                std::isfinite(millimetres) ? cv::saturate_cast<std::uint16_t>(millimetres) : std::uint16_t{0};
        }
    }
    return depth;
}

cv::Mat greyFromDepth(const cv::Mat& depth) {
    // The farthest depth is still visibly brighter than black, which means no depth.
    constexpr double kNearGrey = 235.0;
    constexpr double kFarGrey = 60.0;
    const cv::Mat measured = depth > 0;
    double nearest = 0.0;
    double farthest = 0.0;
    cv::minMaxLoc(depth, &nearest, &farthest, nullptr, nullptr, measured);
    const double span = farthest > nearest ? farthest - nearest : 1.0;
    const double slope = (kFarGrey - kNearGrey) / span;
    cv::Mat grey;
    depth.convertTo(grey, CV_8U, slope, kNearGrey - slope * nearest);
    grey.setTo(0, ~measured);
    cv::Mat picture;
    cv::cvtColor(grey, picture, cv::COLOR_GRAY2BGR);
    return picture;
}

}  // namespace quorvel::kit
