// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace quorvel::command {

/// \param text value of --size: "640x480"
/// \return the picture's size, pixels
/// \throws InputError when it is no size, or one that no picture has
cv::Size parseSize(const std::string& text);

}  // namespace quorvel::command
