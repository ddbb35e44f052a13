// SPDX-License-Identifier: Apache-2.0
#include "kit/draw/stage_drawings.h"

#include <algorithm>
#include <cstdint>

#include <opencv2/imgproc.hpp>

#include "kit/account/text_format.h"
#include "kit/draw/color_scale.h"
#include "kit/draw/stage_sheet.h"
#include "measure/ground_removal.h"

namespace quorvel::kit {

namespace {

/// Values beyond these quantiles do not stretch a colour scale.
constexpr double kLowShare = 0.01;
constexpr double kHighShare = 0.995;

cv::Mat dimmed(const cv::Mat& color) {
    constexpr double kBrightness = 0.4;
    cv::Mat grey;
    cv::cvtColor(color, grey, cv::COLOR_BGR2GRAY);
    cv::cvtColor(grey, grey, cv::COLOR_GRAY2BGR);
    return grey * kBrightness;
}

std::vector<float> presentHeights(const Plane& plane, const cv::Mat_<cv::Vec3f>& cloud) {
    std::vector<float> heights;
    for (const cv::Vec3f& point : cloud) {
        if (isPresent(point)) {
            heights.push_back(heightAbove(plane, point));
        }
    }
    return heights;
}

/// Paints the cloud's present points by their height.
void paintHeights(cv::Mat& picture, const Plane& plane, const cv::Mat& cloud, const ColorScale& scale) {
    for (int row = 0; row < cloud.rows; ++row) {
        for (int col = 0; col < cloud.cols; ++col) {
            const auto& point = cloud.at<cv::Vec3f>(row, col);
            if (isPresent(point)) {
                picture.at<cv::Vec3b>(row, col) = scale.color(static_cast<double>(heightAbove(plane, point)));
            }
        }
    }
}

std::string mm(float value) {
    return fixed(static_cast<double>(value), 1) + " mm";
}

}  // namespace

cv::Mat drawColorStage(const cv::Mat& color) {
    return makeSheet(color, {"1  Colour image", "The frame as it was taken in.", ""}, std::nullopt);
}

cv::Mat drawDepthStage(const cv::Mat& depth) {
    std::vector<float> values;
    for (const std::uint16_t value : cv::Mat_<std::uint16_t>(depth)) {
        if (value > 0) {
            values.push_back(value);
        }
    }
    if (values.empty()) {
        values = {0.0F};
    }
    const ColorScale scale(quantile(values, kLowShare), quantile(values, kHighShare));
    cv::Mat picture = cv::Mat::zeros(depth.size(), CV_8UC3);
    for (int row = 0; row < depth.rows; ++row) {
        for (int col = 0; col < depth.cols; ++col) {
            const auto value = depth.at<std::uint16_t>(row, col);
            if (value > 0) {
                picture.at<cv::Vec3b>(row, col) = scale.color(value);
            }
        }
    }
    return makeSheet(picture, {"2  Depth", "Distance along the optical axis; black where there is none.", "mm"}, scale);
}

cv::Mat drawHeightStage(const Measurement& measurement) {
    const internal::RulerState& state = measurement.state;
    std::vector<float> heights = presentHeights(state.plane, measurement.smallCloud);
    const double tallest = heights.empty() ? 0.0 : quantile(heights, kHighShare);
    // A scale of at least some minimum heights keeps the noise of an empty surface from looking like mountains.
    const ColorScale scale(0.0, std::max(tallest, 5.0 * static_cast<double>(state.minHeight)));
    cv::Mat picture = cv::Mat::zeros(measurement.smallCloud.size(), CV_8UC3);
    paintHeights(picture, state.plane, measurement.smallCloud, scale);
    return makeSheet(picture,
                     {"3  Height above the plane",
                      "Every point of the small picture against the reference plane " + vectorText(state.plane.normal) +
                          " at " + mm(state.plane.offset) + ".",
                      "mm"},
                     scale);
}

cv::Mat drawCandidateStage(const cv::Mat& color, const Measurement& measurement) {
    const internal::RulerState& state = measurement.state;
    cv::Mat candidates = measurement.candidates.clone();
    cv::Mat picture = dimmed(color);
    cv::resize(candidates, candidates, picture.size(), 0.0, 0.0, cv::INTER_NEAREST);
    constexpr double kOpacity = 0.75;
    cv::Mat painted = picture.clone();
    painted.setTo(cv::Scalar(60, 200, 255), candidates);
    cv::addWeighted(painted, kOpacity, picture, 1.0 - kOpacity, 0.0, picture);
    return makeSheet(picture,
                     {"4  Candidates",
                      "Pixels " + mm(state.minHeight) + " or more above the plane and no deeper than " +
                          mm(internal::groundDepth(state.filterWeight, state.plane.offset)) +
                          "; a region needs more than " + std::to_string(state.minPixels) + " of them.",
                      ""},
                     std::nullopt);
}

cv::Mat drawSurfaceStage(const cv::Mat& color, const Measurement& measurement) {
    const Plane& plane = measurement.state.plane;
    std::vector<float> heights = presentHeights(plane, measurement.surfaceCloud);
    const std::size_t count = heights.size();
    if (heights.empty()) {
        heights = {0.0F};
    }
    const ColorScale scale(quantile(heights, 0.0), quantile(heights, 1.0));
    cv::Mat picture = dimmed(color);
    paintHeights(picture, plane, measurement.surfaceCloud, scale);
    return makeSheet(
        picture,
        {"5  Surface points",
         std::to_string(count) + " points of the chosen region, without flanks, edges and outliers, by their height.",
         "mm"},
        scale);
}

}  // namespace quorvel::kit
