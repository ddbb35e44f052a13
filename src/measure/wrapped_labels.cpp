// SPDX-License-Identifier: Apache-2.0
#include "measure/wrapped_labels.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include <opencv2/imgproc.hpp>

namespace quorvel::internal {

namespace {

struct Region {
    int pixels = 0;
    float distanceSum = 0.0F;
};

/// Pixel count and sum of distances from the middle of every label, in one pass. The pixels of a label are met in
/// row-major order, so that its float sum has the bits of a scan of that label alone.
std::vector<Region> describeRegions(const cv::Mat& labels, int labelCount) {
    std::vector<Region> regions(static_cast<std::size_t>(labelCount));
    const cv::Point middle(labels.cols / 2, labels.rows / 2);
    for (int row = 0; row < labels.rows; ++row) {
        const auto* labelRow = labels.ptr<ushort>(row);
        const double dy = row - middle.y;
        for (int column = 0; column < labels.cols; ++column) {
            const std::size_t label = labelRow[column];
            // More regions than 16-bit labels can name wrap around; labels beyond the count name no region.
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
std::size_t nearestRegion(const std::vector<Region>& regions, int minPixels) {
    float bestScore = std::numeric_limits<float>::max();
    std::size_t best = 0;
    for (std::size_t label = 1; label < regions.size(); ++label) {
        const Region& region = regions[label];
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

bool keepNearestWrappedRegion(const cv::Mat& depth, int minPixels, cv::Mat& mask) {
    cv::Mat candidates;
    depth.convertTo(candidates, CV_8U);
    cv::Mat labels;
    const int labelCount = cv::connectedComponents(candidates, labels, 4, CV_16U, cv::CCL_WU);
    const std::size_t best = nearestRegion(describeRegions(labels, labelCount), minPixels);
    if (best != 0) {
        mask.setTo(0, labels != static_cast<double>(best));
    }
    return best != 0;
}

}  // namespace quorvel::internal
