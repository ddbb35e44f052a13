// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Finds the most frequent orientation in a normal map.
///
/// Each channel is sorted into four bins of 64; among bins of equal count the one that reached the count first wins.
/// Bin (0, 0, 0), the colour of empty and border pixels, never wins.
/// \param normalMap CV_32FC3, normal colours in [0, 255]
/// \return the bin number 0 ... 3 of each channel, without a half-bin offset; (0, 0, 0) when there is none
cv::Vec3f dominantNormalBin(const cv::Mat& normalMap);

}  // namespace quorvel::internal
