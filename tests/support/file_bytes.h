// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace quorvel::test {

/// \return a file's bytes; empty when it cannot be opened
inline std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

/// Writes a file of these bytes over what was there.
inline void put(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace quorvel::test
