// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace quorvel::kit {

/// \param text value of --size: "640x480"
/// \return the picture's size, pixels
/// \throws InputError when the text is not a size, or a size that is not possible for a picture
cv::Size parseSize(const std::string& text);

}  // namespace quorvel::kit
