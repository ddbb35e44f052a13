// SPDX-License-Identifier: Apache-2.0
#include "kit/input/region.h"

#include <cmath>
#include <limits>
#include <vector>

#include "kit/account/text_format.h"
#include "kit/input/input_error.h"
#include "kit/input/numbers.h"

namespace quorvel::kit {

namespace {

int wholePixels(double value, const std::string& option) {
    if (value != std::floor(value) || std::abs(value) > std::numeric_limits<int>::max()) {
        throw InputError(option + ": X,Y,W,H are whole pixels, and " + std::to_string(value) + " is not");
    }
    return static_cast<int>(value);
}

}  // namespace

Region parseRegion(const std::string& text, const std::string& option) {
    const std::vector<double> numbers = parseNumbers(text, option);
    if (numbers.size() == 1) {
        const double ratio = numbers[0];
        if (ratio <= 0.0 || ratio > 1.0) {
            throw InputError(option + ": a ratio is above 0 and at most 1 (the share of the picture's width and " +
                             "height), and " + text + " is not");
        }
        return static_cast<float>(ratio);
    }
    if (numbers.size() != 4) {
        throw InputError(option + ": \"" + text + "\" has " + std::to_string(numbers.size()) +
                         " numbers; give a ratio such as 0.5, or X,Y,W,H in pixels such as 160,120,320,240");
    }
    const cv::Rect rect(wholePixels(numbers[0], option), wholePixels(numbers[1], option),
                        wholePixels(numbers[2], option), wholePixels(numbers[3], option));
    if (rect.width <= 0 || rect.height <= 0) {
        throw InputError(option + ": width and height of the rectangle must be positive, and " + rectangleText(rect) +
                         " has not both");
    }
    return rect;
}

void requireInside(const Region& region, cv::Size picture, const std::string& option) {
    const auto* rect = std::get_if<cv::Rect>(&region);
    if (rect == nullptr) {
        return;
    }
    const bool inside = rect->x >= 0 && rect->y >= 0 && rect->x <= picture.width - rect->width &&
                        rect->y <= picture.height - rect->height;
    if (!inside) {
        throw InputError(option + ": the rectangle " + rectangleText(*rect) + " leaves the picture of " +
                         std::to_string(picture.width) + " x " + std::to_string(picture.height) +
                         " pixels; give X,Y,W,H inside it");
    }
}

}  // namespace quorvel::kit
