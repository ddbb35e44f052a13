// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace quorvel::test {

/// A fresh, empty working directory for one test: the library writes its files relative to it. Goes back and removes
/// the folder at the end.
class WorkingDirectory {
public:
    WorkingDirectory() : previous_(std::filesystem::current_path()), path_(freshPath()) {
        std::filesystem::create_directories(path_);
        std::filesystem::current_path(path_);
    }
    ~WorkingDirectory() {
        std::error_code ignored;
        std::filesystem::current_path(previous_, ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    static std::filesystem::path freshPath() {
        std::random_device device;
        const std::string first = std::to_string(device());
        return std::filesystem::temp_directory_path() / ("quorvel-test-" + first + "-" + std::to_string(device()));
    }

    std::filesystem::path previous_;
    std::filesystem::path path_;
};

}  // namespace quorvel::test
