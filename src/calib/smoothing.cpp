// SPDX-License-Identifier: Apache-2.0
#include "calib/smoothing.h"

#include <opencv2/imgproc.hpp>

namespace quorvel::internal {

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
