// SPDX-License-Identifier: Apache-2.0
#include "sim/color_text.h"

#include <cstddef>
#include <cstdint>

namespace quorvel::sim {

namespace {

const std::string kDigits = "0123456789abcdef";
const std::string kUpperDigits = "0123456789ABCDEF";

int digitValue(char digit) {
    const std::size_t lower = kDigits.find(digit);
    const std::size_t found = lower != std::string::npos ? lower : kUpperDigits.find(digit);
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

}  // namespace

std::string colorToText(const cv::Vec3b& color) {
    std::string text = "#";
    for (const int channel : {2, 1, 0}) {
        text += kDigits[color[channel] / 16U];
        text += kDigits[color[channel] % 16U];
    }
    return text;
}

bool colorFromText(const std::string& text, cv::Vec3b& color) {
    if (text.size() != 7 || text[0] != '#') {
        return false;
    }
    cv::Vec3b read;
    for (const int channel : {0, 1, 2}) {
        const auto place = static_cast<std::size_t>(5 - 2 * channel);
        const int high = digitValue(text[place]);
        const int low = digitValue(text[place + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        read[channel] = static_cast<std::uint8_t>(16 * high + low);
    }
    color = read;
    return true;
}

}  // namespace quorvel::sim
