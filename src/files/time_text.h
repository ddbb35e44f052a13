// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ctime>
#include <string>

namespace quorvel::internal {

/// \param format of strftime; the text has fewer than 80 characters
std::string timeText(const std::tm& time, const char* format);

}  // namespace quorvel::internal
