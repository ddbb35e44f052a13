// SPDX-License-Identifier: Apache-2.0
#include "common/text_file.h"

#include <fstream>
#include <iterator>

#include "common/platform.h"

namespace quorvel::internal {

bool canRead(const std::string& path) {
    // A folder opens as a stream on some platforms and fails only when it is read.
    return !isFolder(path) && std::ifstream(path).is_open();
}

std::optional<std::string> readTextFile(const std::string& path) {
    if (!canRead(path)) {
        return std::nullopt;
    }
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool writeTextFile(const std::string& path, const std::string& text) {
    std::ofstream file(path);
    file << text;
    file.close();
    return file.good();
}

void ensureFolder(const std::string& path) {
    if (!pathExists(path)) {
        makeFolder(path);
    }
}

}  // namespace quorvel::internal
