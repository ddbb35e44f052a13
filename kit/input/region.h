// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <variant>

#include <opencv2/core.hpp>

namespace quorvel::kit {

/// A region as the user gives it: the centred share of the picture's width and height, or a rectangle in pixels.
using Region = std::variant<float, cv::Rect>;

/// Reads "RATIO" (above 0, at most 1) or "X,Y,W,H" (whole pixels, W and H positive).
/// \param option name of the option, for the message
/// \throws InputError when the text is neither
Region parseRegion(const std::string& text, const std::string& option);

/// Checks that a rectangle lies inside the picture; a ratio always does.
/// \param picture size in pixels
/// \param option name of the option, for the message
/// \throws InputError when the rectangle leaves the picture
void requireInside(const Region& region, cv::Size picture, const std::string& option);

}  // namespace quorvel::kit
