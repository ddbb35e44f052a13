// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Writes an image in the format that its file's extension names, with OpenCV's default parameters, whole or not at
/// all. An image that is empty or does not have two dimensions is not written, and an old file stays.
/// \return whether it was written
/// \throws cv::Exception when OpenCV has no encoder for the image
bool writeImageFile(const std::string& path, const cv::Mat& image);

/// Reads an image. The result is empty when the file cannot be read or when OpenCV refuses the size in its header.
/// \param mode a cv::ImreadModes
cv::Mat readImageFile(const std::string& path, int mode);

}  // namespace quorvel::internal
