// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Writes a depth image as the TIFF file that cv::imwrite makes of it, byte for byte. A file that cannot be opened is
/// skipped.
/// \param depth CV_16UC1, mm, not empty
void writeDepthFile(const std::string& path, const cv::Mat& depth);

}  // namespace quorvel::internal
