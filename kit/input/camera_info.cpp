// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <vector>

#include <yaml-cpp/yaml.h>

#include "kit/account/text_format.h"
#include "kit/input/camera_formats.h"
#include "kit/input/input_error.h"

namespace quorvel::kit {

namespace {

constexpr const char* kInfoWanted =
    "camera-info YAML has image_width, image_height and camera_matrix: {rows: 3, cols: 3, data: [...]} or K";

/// The list of numbers under `name`, which stands alone or as the `data` of a matrix.
std::vector<double> numbers(const YAML::Node& document, const std::string& name) {
    const YAML::Node node = document[name];
    if (!node) {
        return {};
    }
    return (node.IsMap() ? node["data"] : node).as<std::vector<double>>();
}

std::vector<double> cameraMatrix(const YAML::Node& document, const std::string& path) {
    for (const char* name : {"camera_matrix", "K", "k"}) {
        if (document[name]) {
            std::vector<double> values = numbers(document, name);
            if (values.size() != 9) {
                throw InputError(path + ": \"" + name + "\" has " + std::to_string(values.size()) +
                                 " numbers instead of 9; " + kInfoWanted);
            }
            return values;
        }
    }
    throw InputError(path + ": has no camera matrix; " + kInfoWanted);
}

int size(const YAML::Node& document, const std::string& name, const std::string& path) {
    for (const std::string& key : {"image_" + name, name}) {
        if (document[key]) {
            return document[key].as<int>();
        }
    }
    throw InputError(path + ": has no \"image_" + name + "\"; " + kInfoWanted);
}

bool anyNonZero(const std::vector<double>& values) {
    return std::any_of(values.begin(), values.end(), [](double value) { return value != 0.0; });
}

}  // namespace

Camera cameraFromCameraInfo(const std::string& text, const std::string& path) {
    try {
        const YAML::Node document = YAML::Load(text);
        if (!document.IsMap()) {
            throw InputError(path + ": is not a camera file; " + kInfoWanted);
        }
        const std::vector<double> matrix = cameraMatrix(document, path);
        Camera camera;
        camera.fx = matrix[0];
        camera.cx = matrix[2];
        camera.fy = matrix[4];
        camera.cy = matrix[5];
        camera.width = size(document, "width", path);
        camera.height = size(document, "height", path);
        camera.distorted = anyNonZero(numbers(document, "distortion_coefficients")) ||
                           anyNonZero(numbers(document, "D")) || anyNonZero(numbers(document, "d"));
        return camera;
    } catch (const YAML::Exception& error) {
        throw InputError(path + ": line " + std::to_string(error.mark.line + 1) + " cannot be understood (" +
                         oneLine(error.msg) + "); " + kInfoWanted);
    }
}

}  // namespace quorvel::kit
