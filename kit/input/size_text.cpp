// SPDX-License-Identifier: Apache-2.0
#include "kit/input/size_text.h"

#include <charconv>
#include <system_error>

#include "kit/input/camera.h"
#include "kit/input/input_error.h"

namespace quorvel::kit {

cv::Size parseSize(const std::string& text) {
    const char* const end = text.data() + text.size();
    Camera camera;
    camera.fx = 1.0;
    camera.fy = 1.0;
    const auto [cross, widthError] = std::from_chars(text.data(), end, camera.width);
    if (widthError == std::errc() && cross != end && *cross == 'x') {
        const auto [rest, heightError] = std::from_chars(cross + 1, end, camera.height);
        if (heightError == std::errc() && rest == end) {
            requireSensible(camera, "--size");
            return camera.size();
        }
    }
    throw InputError("--size: \"" + text + "\" is not a picture size; give WxH in pixels, such as 640x480");
}

}  // namespace quorvel::kit
