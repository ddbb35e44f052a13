// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Scales an image down, every pixel taken from its nearest neighbour: depths stay unblended.
/// \param image colour or depth, not empty
/// \param size of the small image, pixels
/// \param[out] small the image in that size; its storage is used again when it fits and nobody else holds it
void scaleDown(const cv::Mat& image, const cv::Size& size, cv::Mat& small);

}  // namespace quorvel::internal
