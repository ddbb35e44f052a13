// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

#include <opencv2/core.hpp>

namespace quorvel::command {

/// Makes a folder, with those above it, unless it is there.
/// \throws InputError when it cannot be made
void makeFolder(const std::filesystem::path& folder);

/// Writes a picture in the format of the file name's ending.
/// \throws InputError when it cannot be written or the format is unknown
void writePicture(const std::filesystem::path& path, const cv::Mat& picture);

}  // namespace quorvel::command
