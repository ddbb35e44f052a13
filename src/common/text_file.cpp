// SPDX-License-Identifier: Apache-2.0
#include "common/text_file.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace quorvel::internal {

std::optional<std::string> readTextFile(const std::string& path) {
    // A directory opens as a stream on some platforms and fails only when it is read.
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        return std::nullopt;
    }
    std::ifstream file(path);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool writeTextFile(const std::string& path, const std::string& text) {
    std::ofstream file(path);
    file << text;
    file.close();
    return file.good();
}

void ensureFolder(const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) {
        std::filesystem::create_directory(path, ignored);
    }
}

}  // namespace quorvel::internal
