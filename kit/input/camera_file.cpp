// SPDX-License-Identifier: Apache-2.0
#include "kit/input/camera_file.h"

#include "kit/input/camera_formats.h"
#include "kit/input/input_error.h"
#include "kit/input/input_file.h"
#include "kit/input/nesting.h"

namespace quorvel::kit {

namespace {

Camera cameraFromJsonText(const std::string& text, const std::string& path) {
    nlohmann::json document;
    try {
        document = nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error& error) {
        throw InputError(path + ": is not valid JSON at byte " + std::to_string(error.byte) + "; correct it there");
    } catch (const nlohmann::json::out_of_range&) {
        throw InputError(path + ": holds a number that is too large to be read; give the intrinsics in pixels");
    }
    const auto matrix = document.find("camera_matrix");
    if (matrix != document.end() && matrix->is_object() && matrix->contains("type_id")) {
        return cameraFromFileStorage(text, path);
    }
    if (matrix != document.end() || document.contains("K") || document.contains("k")) {
        return cameraFromCameraInfo(text, path);
    }
    return cameraFromOwnJson(document, path);
}

Camera cameraFromText(const std::string& text, const std::string& path) {
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    if (start == std::string::npos) {
        throw InputError(path + ": is empty; give a camera file with the intrinsics");
    }
    if (text[start] == '{') {
        return cameraFromJsonText(text, path);
    }
    if (text[start] == '<' || text.compare(start, 6, "%YAML:") == 0) {
        return cameraFromFileStorage(text, path);
    }
    return cameraFromCameraInfo(text, path);
}

}  // namespace

Camera readCameraFile(const std::string& path) {
    const std::string text = readInputFile(path, kLargestText, "give the camera file, or --intrinsics fx,fy,cx,cy");
    requireShallow(text, path);
    const Camera camera = cameraFromText(text, path);
    requireSensible(camera, path);
    return camera;
}

std::string cameraFileText(const Camera& camera) {
    const nlohmann::ordered_json document{{"fx", camera.fx}, {"fy", camera.fy},       {"cx", camera.cx},
                                          {"cy", camera.cy}, {"width", camera.width}, {"height", camera.height}};
    return document.dump(2) + "\n";
}

}  // namespace quorvel::kit
