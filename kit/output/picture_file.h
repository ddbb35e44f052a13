// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

#include <opencv2/core.hpp>

#include "kit/output/output_file.h"

namespace quorvel::kit {

/// Makes a folder and its parents, unless they exist.
/// \throws InputError when it cannot be made
void makeFolder(const std::filesystem::path& folder);

/// Adds a picture in the format of the file name's ending; a pipe or a device without an ending gets PNG.
/// \throws InputError when it cannot be written or the format is unknown
void addPicture(OutputFiles& outputs, const std::filesystem::path& path, const cv::Mat& picture);

}  // namespace quorvel::kit
