// SPDX-License-Identifier: Apache-2.0
#include "files/time_text.h"

#include <array>
#include <cstddef>

namespace quorvel::internal {

std::string timeText(const std::tm& time, const char* format) {
    constexpr std::size_t kLength = 80;
    std::array<char, kLength> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format, &time)};
}

}  // namespace quorvel::internal
