// SPDX-License-Identifier: Apache-2.0
// Runs a target over files instead of inputs made by a fuzzer, with any compiler and on any platform.
// Usage: fuzz_TARGET FILE_OR_FOLDER...
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "fuzz/target.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(const std::vector<std::string>& names) {
    std::vector<fs::path> files;
    for (const std::string& name : names) {
        if (!fs::is_directory(name)) {
            files.push_back(fs::absolute(name));
            continue;
        }
        for (const auto& entry : fs::directory_iterator(name)) {
            files.push_back(fs::absolute(entry.path()));
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<fs::path> files = filesOf({argv + 1, argv + argc});
    if (files.empty()) {
        std::cerr << "usage: " << argv[0] << " FILE_OR_FOLDER..., with a file at least\n";
        return 2;
    }
    for (const fs::path& file : files) {
        // Printed before the run, so that the last line names the input that ended the process.
        std::cerr << file.filename().string() << std::endl;
        const std::string bytes = quorvel::fuzz::readFile(file.string());
        const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
        LLVMFuzzerTestOneInput(data.data(), data.size());
    }
    std::cerr << files.size() << " inputs" << std::endl;
    return 0;
}
