// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// \param image colour or depth, not empty
/// \param size of the small image, pixels
/// \return the image in that size, in storage of its own, every pixel taken from its nearest neighbour: depths stay
///         unblended
cv::Mat scaledDown(const cv::Mat& image, const cv::Size& size);

}  // namespace quorvel::internal
