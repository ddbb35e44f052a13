// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// With at most so many runs of candidates there are fewer regions than 16-bit labels.
constexpr int kMostLabelledRuns = 65000;

/// The choice of selectObjectComponent() for images that may have more regions than there are 16-bit labels. The labels
/// then wrap around, and all pixels with the same label are taken as one region. Only extreme images come here, such as
/// a checkerboard with more than 65000 single candidates.
/// \param depth CV_16UC1; the candidates are its non-zero pixels
/// \param minPixels a region needs more pixels than this
/// \param[in,out] mask CV_8UC1 of the same size, reduced to the region
/// \return pixels of the region; 0 when none is large enough
int keepNearestWrappedRegion(const cv::Mat& depth, int minPixels, cv::Mat& mask);

}  // namespace quorvel::internal
