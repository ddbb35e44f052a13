// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <limits>

#include "kit/input/camera_formats.h"
#include "kit/input/input_error.h"

namespace quorvel::kit {

namespace {

constexpr std::array<const char*, 6> kKeys{"fx", "fy", "cx", "cy", "width", "height"};
constexpr const char* kFileWanted = "a camera file has fx, fy, cx, cy, width and height, in pixels";

double number(const nlohmann::json& document, const std::string& key, const std::string& path) {
    const auto entry = document.find(key);
    if (entry == document.end()) {
        throw InputError(path + ": has no \"" + key + "\"; " + kFileWanted);
    }
    if (!entry->is_number()) {
        throw InputError(path + ": \"" + key + "\" is not a number; " + kFileWanted);
    }
    return entry->get<double>();
}

int wholeNumber(const nlohmann::json& document, const std::string& key, const std::string& path) {
    const double value = number(document, key, path);
    if (value < 0.0 || value > std::numeric_limits<int>::max() || value != static_cast<int>(value)) {
        throw InputError(path + ": \"" + key + "\" is not a whole number of pixels; " + kFileWanted);
    }
    return static_cast<int>(value);
}

}  // namespace

Camera cameraFromOwnJson(const nlohmann::json& document, const std::string& path) {
    for (const auto& entry : document.items()) {
        if (std::find(kKeys.begin(), kKeys.end(), entry.key()) == kKeys.end()) {
            throw InputError(path + ": has the unknown key \"" + entry.key() + "\"; " + kFileWanted);
        }
    }
    Camera camera;
    camera.fx = number(document, "fx", path);
    camera.fy = number(document, "fy", path);
    camera.cx = number(document, "cx", path);
    camera.cy = number(document, "cy", path);
    camera.width = wholeNumber(document, "width", path);
    camera.height = wholeNumber(document, "height", path);
    return camera;
}

}  // namespace quorvel::kit
