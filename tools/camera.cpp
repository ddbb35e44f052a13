// SPDX-License-Identifier: Apache-2.0
#include "camera.h"

#include <cmath>

#include "input_error.h"
#include "text_format.h"

namespace quorvel::command {

void requireSensible(const Camera& camera, const std::string& source) {
    constexpr int kSmallest = 16;
    constexpr int kLargest = 16384;
    const bool finite =
        std::isfinite(camera.fx) && std::isfinite(camera.fy) && std::isfinite(camera.cx) && std::isfinite(camera.cy);
    if (!finite || camera.fx <= 0.0 || camera.fy <= 0.0) {
        throw InputError(source + ": the focal lengths are " + fixed(camera.fx, 3) + " and " + fixed(camera.fy, 3) +
                         ", the principal point is (" + fixed(camera.cx, 3) + ", " + fixed(camera.cy, 3) +
                         "); give finite pixels, the focal lengths above 0");
    }
    const auto sensible = [](int side) { return side >= kSmallest && side <= kLargest; };
    if (!sensible(camera.width) || !sensible(camera.height)) {
        throw InputError(source + ": the picture size is " + std::to_string(camera.width) + " x " +
                         std::to_string(camera.height) + "; width and height are between " + std::to_string(kSmallest) +
                         " and " + std::to_string(kLargest) + " pixels");
    }
}

}  // namespace quorvel::command
