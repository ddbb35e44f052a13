// SPDX-License-Identifier: Apache-2.0
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "sim/scene_json.h"

namespace quorvel::sim {

Scene readScene(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    file.peek();  // opening a folder can succeed; reading from it does not
    if (!file.is_open() || file.bad()) {
        throw std::runtime_error(path + ": cannot be read; check that the file exists and may be read");
    }
    std::ostringstream text;
    text << file.rdbuf();
    try {
        return sceneFromJson(text.str());
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(path + ": " + error.what());
    }
}

void writeScene(const std::string& path, const Scene& scene) {
    const std::string text = sceneToJson(scene);
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        throw std::runtime_error(path + ": cannot be written; check that the folder exists and may be written to");
    }
}

}  // namespace quorvel::sim
