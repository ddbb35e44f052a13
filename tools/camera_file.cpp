// SPDX-License-Identifier: Apache-2.0
#include "camera_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "camera_formats.h"
#include "input_error.h"

namespace quorvel::command {

namespace {

std::string readText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file || std::filesystem::is_directory(path)) {
        throw InputError(path + ": there is no such readable file; give the camera file, or --intrinsics fx,fy,cx,cy");
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Camera cameraFromJsonText(const std::string& text, const std::string& path) {
    nlohmann::json document;
    try {
        document = nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error& error) {
        throw InputError(path + ": is no valid JSON at byte " + std::to_string(error.byte) + "; correct it there");
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
    const Camera camera = cameraFromText(readText(path), path);
    requireSensible(camera, path);
    return camera;
}

void writeCameraFile(const std::string& path, const Camera& camera) {
    const nlohmann::ordered_json document{{"fx", camera.fx}, {"fy", camera.fy},       {"cx", camera.cx},
                                          {"cy", camera.cy}, {"width", camera.width}, {"height", camera.height}};
    std::ofstream file(path, std::ios::binary);
    file << document.dump(2) << '\n';
    file.close();
    if (!file) {
        throw InputError(path + ": cannot be written; check the folder and its permissions");
    }
}

}  // namespace quorvel::command
