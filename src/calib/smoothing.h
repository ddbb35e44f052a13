// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Smooths a depth image twice with a 5 x 5 Gaussian (border reflected without the edge pixel).
/// \param depth CV_16UC1, mm, not empty; not changed
/// \return CV_16UC1 of the same size; a pixel without depth next to valid ones gets a smoothed, smaller depth
cv::Mat smoothDepth(const cv::Mat& depth);

}  // namespace quorvel::internal
