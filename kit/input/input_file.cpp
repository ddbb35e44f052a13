// SPDX-License-Identifier: Apache-2.0
#include "kit/input/input_file.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

#include "kit/input/input_error.h"
#include "kit/input/stream_file.h"

namespace quorvel::kit {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuseSize(const std::string& path, std::size_t most) {
    constexpr std::size_t kMegabyte = 1'000'000;
    throw InputError(path + ": has more than " + std::to_string(most / kMegabyte) +
                     " MB, and no file of this kind is as large; check the path");
}

std::string readRegular(const std::string& path, std::size_t most, const std::string& advice) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw InputError(path + ": there is no such readable file; " + advice);
    }
    std::error_code ignored;
    if (fs::file_size(path, ignored) > most && !ignored) {
        refuseSize(path, most);
    }
    constexpr std::size_t kBlock = 1'000'000;  // bytes
    std::vector<char> block(kBlock);
    std::string bytes;
    while (file && bytes.size() <= most) {
        file.read(block.data(), static_cast<std::streamsize>(block.size()));
        bytes.append(block.data(), static_cast<std::size_t>(file.gcount()));
    }
    if (file.bad()) {
        throw InputError(path + ": cannot be read to its end; copy it again");
    }
    return bytes;
}

}  // namespace

std::string readInputFile(const std::string& path, std::size_t most, const std::string& advice) {
    std::error_code ignored;
    if (fs::is_directory(path, ignored)) {
        throw InputError(path + ": is a folder; " + advice);
    }
    std::string bytes = isStream(path) ? readStream(path, most) : readRegular(path, most, advice);
    if (bytes.size() > most) {
        refuseSize(path, most);
    }
    return bytes;
}

void requireOrdinaryFile(const std::string& path) {
    if (isStream(path)) {
        throw InputError(path + ": is a pipe or a device; a regular file is needed here");
    }
    std::error_code error;
    const bool regular = fs::is_regular_file(path, error);
    if (regular && fs::file_size(path, error) > kLargestText) {
        refuseSize(path, kLargestText);
    }
}

}  // namespace quorvel::kit
