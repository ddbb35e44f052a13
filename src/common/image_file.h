// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Writes an image in the format that its file's extension names, with OpenCV's default parameters, whole or not at
/// all. An image that is empty or not of two dimensions is not written, and what was there stays.
/// \throws cv::Exception when OpenCV has no encoder for the image
void writeImageFile(const std::string& path, const cv::Mat& image);

/// Reads an image; one that cannot be read, or that OpenCV refuses for the size that it claims, is empty.
/// \param mode a cv::ImreadModes
cv::Mat readImageFile(const std::string& path, int mode);

}  // namespace quorvel::internal
