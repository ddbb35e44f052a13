// SPDX-License-Identifier: Apache-2.0
#include "measure/wrapped_labels.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include <opencv2/imgproc.hpp>

namespace quorvel::internal {

namespace {

struct LabelledRegion {
    int pixels = 0;
    float distanceSum = 0.0F;
};

/// The pixel count and the sum of distances from the middle for every label, in one pass. Each label's pixels are added
/// in row-major order, so its float sum has the same bits as in a scan of that label alone.
std::vector<LabelledRegion> describeRegions(const cv::Mat& labels, int labelCount) {
    std::vector<LabelledRegion> regions(static_cast<std::size_t>(labelCount));
    const cv::Point middle(labels.cols / 2, labels.rows / 2);
    for (int row = 0; row < labels.rows; ++row) {
        const auto* labelRow = labels.ptr<ushort>(row);
        const double dy = row - middle.y;
        for (int column = 0; column < labels.cols; ++column) {
            const std::size_t label = labelRow[column];
            // With more regions than 16-bit labels the labels wrap around. Labels at or above the count are ignored.
            if (label == 0 || label >= regions.size()) {
                continue;
            }
            const double dx = column - middle.x;
            ++regions[label].pixels;
            regions[label].distanceSum += static_cast<float>(std::sqrt(dx * dx + dy * dy));
        }
    }
    return regions;
}

/// \return the label of the large enough region nearest the middle, 0 when there is none
std::size_t nearestRegion(const std::vector<LabelledRegion>& regions, int minPixels) {
    float bestScore = std::numeric_limits<float>::max();
    std::size_t best = 0;
    for (std::size_t label = 1; label < regions.size(); ++label) {
        const LabelledRegion& region = regions[label];
        if (region.pixels <= minPixels) {
            continue;
        }
        const float score = region.distanceSum / static_cast<float>(region.pixels);
        if (bestScore > score) {
            bestScore = score;
            best = label;
        }
    }
    return best;
}

}  // namespace

int keepNearestWrappedRegion(const cv::Mat& depth, int minPixels, cv::Mat& mask) {
    cv::Mat candidates;
    depth.convertTo(candidates, CV_8U);
    cv::Mat labels;
    const int labelCount = cv::connectedComponents(candidates, labels, 4, CV_16U, cv::CCL_WU);
    const std::vector<LabelledRegion> regions = describeRegions(labels, labelCount);
    const std::size_t best = nearestRegion(regions, minPixels);
    if (best == 0) {
        return 0;
    }
    mask.setTo(0, labels != static_cast<double>(best));
    return regions[best].pixels;
}

}  // namespace quorvel::internal
