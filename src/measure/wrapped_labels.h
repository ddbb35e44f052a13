// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Runs of candidates that 16-bit labels can tell apart whatever their shape.
constexpr int kMostLabelledRuns = 65000;

/// The choice of selectObjectComponent for images with more regions than 16-bit labels can name: the labels wrap
/// around, and what wears one label counts as one region. It takes an image of 130000 candidates' worth of checkerboard
/// to get here.
/// \param depth CV_16UC1; the candidates are its non-zero pixels
/// \param minPixels a region needs more pixels than this
/// \param[in,out] mask CV_8UC1 of the same size, reduced to the region
/// \return whether there is a large enough region
bool keepNearestWrappedRegion(const cv::Mat& depth, int minPixels, cv::Mat& mask);

}  // namespace quorvel::internal
