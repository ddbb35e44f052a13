// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorvel::kit {

/// Reads numbers separated by commas, as options take them: decimal point, no blanks, no unit.
/// \param text such as "525,525,319.5,239.5"
/// \param option name of the option, for the message
/// \return the numbers, at least one
/// \throws InputError when a part is no finite number
std::vector<double> parseNumbers(std::string_view text, const std::string& option);

}  // namespace quorvel::kit
