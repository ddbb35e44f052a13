// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

#include <opencv2/core.hpp>

#include "output_file.h"

namespace quorvel::command {

/// Makes a folder, with those above it, unless it is there.
/// \throws InputError when it cannot be made
void makeFolder(const std::filesystem::path& folder);

/// Adds a picture in the format of the file name's ending, and as PNG when it is for a pipe or a device without one.
/// \throws InputError when it cannot be written or the format is unknown
void addPicture(OutputFiles& outputs, const std::filesystem::path& path, const cv::Mat& picture);

}  // namespace quorvel::command
