// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace quorvel::sim {

/// A colour (blue, green, red) written "#rrggbb", lower case.
std::string colorToText(const cv::Vec3b& color);

/// Reads "#rrggbb", upper or lower case, into blue, green, red. Returns false and leaves the colour alone for any other
/// text.
bool colorFromText(const std::string& text, cv::Vec3b& color);

}  // namespace quorvel::sim
