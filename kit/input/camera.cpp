// SPDX-License-Identifier: Apache-2.0
#include "kit/input/camera.h"

#include <cmath>

#include "kit/account/text_format.h"
#include "kit/input/input_error.h"

namespace quorvel::kit {

void requireSensible(const Camera& camera, const std::string& source) {
    constexpr int kSmallest = 16;
    constexpr int kLargest = 16384;
    // Pixels. A lens with a view of 1 degree at the largest picture size has a little less. The library keeps floats.
    constexpr double kLongest = 1e6;
    const auto isFocal = [](double focal) { return focal >= 1.0 && focal <= kLongest; };
    const auto isPoint = [](double coordinate) { return std::abs(coordinate) <= kLongest; };
    if (!isFocal(camera.fx) || !isFocal(camera.fy) || !isPoint(camera.cx) || !isPoint(camera.cy)) {
        throw InputError(source + ": the focal lengths are " + fixed(camera.fx, 3) + " and " + fixed(camera.fy, 3) +
                         ", the principal point is (" + fixed(camera.cx, 3) + ", " + fixed(camera.cy, 3) +
                         "); give pixels, the focal lengths from 1 to 1000000");
    }
    const auto sensible = [](int side) { return side >= kSmallest && side <= kLargest; };
    if (!sensible(camera.width) || !sensible(camera.height)) {
        throw InputError(source + ": the picture size is " + std::to_string(camera.width) + " x " +
                         std::to_string(camera.height) + "; width and height are between " + std::to_string(kSmallest) +
                         " and " + std::to_string(kLargest) + " pixels");
    }
}

}  // namespace quorvel::kit
