// SPDX-License-Identifier: Apache-2.0
#include "kit/account/text_format.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace quorvel::kit {

std::string fixed(double value, int decimals) {
    std::array<char, 400> text{};  // the widest double has 309 digits before the point
    static_cast<void>(std::snprintf(text.data(), text.size(), "%.*f", decimals, value));
    if (text[0] == '-' && std::strtod(text.data(), nullptr) == 0.0) {
        return text.data() + 1;
    }
    return text.data();
}

std::string shortestText(float value) {
    std::array<char, 64> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

std::string rectangleText(const cv::Rect& rect) {
    return std::to_string(rect.width) + " x " + std::to_string(rect.height) + " from (" + std::to_string(rect.x) +
           ", " + std::to_string(rect.y) + ")";
}

std::string vectorText(const cv::Vec3f& vector) {
    constexpr int kDecimals = 4;
    return "(" + fixed(vector[0], kDecimals) + ", " + fixed(vector[1], kDecimals) + ", " + fixed(vector[2], kDecimals) +
           ")";
}

std::string oneLine(std::string_view text) {
    std::string line;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool blank = std::isspace(byte) != 0;
        if (!blank) {
            line += std::iscntrl(byte) != 0 ? '?' : c;
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    if (!line.empty() && line.back() == ' ') {
        line.pop_back();
    }
    return line;
}

std::string rightAligned(const std::string& text, std::size_t width) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

std::string tableText(const std::vector<std::pair<std::string, std::string>>& rows) {
    std::size_t labelWidth = 0;
    for (const auto& row : rows) {
        labelWidth = std::max(labelWidth, row.first.size());
    }
    std::string text;
    for (const auto& [label, value] : rows) {
        if (!label.empty() || !value.empty()) {
            text.append("  ").append(label).append(labelWidth - label.size() + 3, ' ').append(value);
        }
        text += '\n';
    }
    return text;
}

}  // namespace quorvel::kit
