// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <opencv2/core.hpp>

namespace quorvel::kit {

/// \return `value` with a fixed number of decimals, "-0.0" written as "0.0"
std::string fixed(double value, int decimals);

/// \return the shortest decimal that reads back as the same float
std::string shortestText(float value);

/// \return "W x H from (X, Y)", pixels
std::string rectangleText(const cv::Rect& rect);

/// \return "(X, Y, Z)" with four decimals
std::string vectorText(const cv::Vec3f& vector);

/// \return the text on one line: line breaks and runs of blanks become one blank
std::string oneLine(std::string_view text);

/// \return the text with blanks before it, `width` characters in all
std::string rightAligned(const std::string& text, std::size_t width);

/// \param rows pairs of label and value; a pair of empty texts makes an empty line
/// \return one indented line a row, the values aligned in a column
std::string tableText(const std::vector<std::pair<std::string, std::string>>& rows);

}  // namespace quorvel::kit
