// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdint>
#include <limits>

#include <opencv2/imgproc.hpp>

#include "diagnosis.h"

namespace quorvel::command {

namespace {

int largestRegion(const cv::Mat& candidates) {
    constexpr int kFourConnected = 4;
    cv::Mat labels;
    cv::Mat stats;
    cv::Mat centroids;
    const int count = cv::connectedComponentsWithStats(candidates, labels, stats, centroids, kFourConnected);
    int largest = 0;
    for (int label = 1; label < count; ++label) {  // label 0 is the background
        largest = std::max(largest, stats.at<int>(label, cv::CC_STAT_AREA));
    }
    return largest;
}

}  // namespace

HeightSurvey surveyHeights(const MeasurementFacts& facts) {
    HeightSurvey survey;
    const float groundDepth = (1.0F - facts.filterWeight) * facts.plane.offset;
    float highest = std::numeric_limits<float>::lowest();
    for (int row = 0; row < facts.smallCloud.rows; ++row) {
        for (int col = 0; col < facts.smallCloud.cols; ++col) {
            const auto& point = facts.smallCloud.at<cv::Vec3f>(row, col);
            if (!isPresent(point)) {
                continue;
            }
            ++survey.measured;
            const float height = heightAbove(facts.plane, point);
            highest = std::max(highest, height);
            if (static_cast<float>(facts.depthBefore.at<std::uint16_t>(row, col)) > groundDepth) {
                ++survey.removedAsGround;
                survey.raisedButRemoved += height >= facts.minObjectHeight ? 1 : 0;
            }
        }
    }
    survey.highest = survey.measured > 0 ? static_cast<double>(highest) : 0.0;
    const cv::Mat candidates = facts.depthAfter > 0;
    survey.candidates = cv::countNonZero(candidates);
    survey.largestRegion = largestRegion(candidates);
    return survey;
}

}  // namespace quorvel::command
