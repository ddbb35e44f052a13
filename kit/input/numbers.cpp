// SPDX-License-Identifier: Apache-2.0
#include "kit/input/numbers.h"

#include <charconv>
#include <cmath>

#include "kit/input/input_error.h"

namespace quorvel::kit {

namespace {

double parseNumber(std::string_view text, const std::string& option) {
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || !std::isfinite(value)) {
        throw InputError(option + ": \"" + std::string(text) + "\" is not a number; write it like 0.5 or 320");
    }
    return value;
}

}  // namespace

std::vector<double> parseNumbers(std::string_view text, const std::string& option) {
    std::vector<double> numbers;
    std::size_t start = 0;
    while (true) {
        const std::size_t comma = text.find(',', start);
        numbers.push_back(parseNumber(text.substr(start, comma - start), option));
        if (comma == std::string_view::npos) {
            return numbers;
        }
        start = comma + 1;
    }
}

}  // namespace quorvel::kit
