// SPDX-License-Identifier: Apache-2.0
#include "kit/input/capture_search.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>

namespace quorvel::kit {

namespace {

namespace fs = std::filesystem;

/// Whether a name is a capture's: "2026-11-16-02-31-32".
bool isTimeStamp(const std::string& name) {
    const std::string pattern = "dddd-dd-dd-dd-dd-dd";
    return std::equal(name.begin(), name.end(), pattern.begin(), pattern.end(), [](char c, char wanted) {
        return wanted == 'd' ? std::isdigit(static_cast<unsigned char>(c)) != 0 : c == wanted;
    });
}

bool isCapture(const fs::path& folder) {
    std::error_code ignored;
    return fs::exists(folder / "para.txt", ignored) || fs::exists(folder / "res.txt", ignored) ||
           isTimeStamp(folder.filename().string());
}

std::vector<std::string> capturesBelow(const fs::path& tree) {
    std::vector<std::string> found;
    std::error_code error;
    constexpr auto kOptions = fs::directory_options::skip_permission_denied;
    for (fs::recursive_directory_iterator entry(tree, kOptions, error);
         !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        std::error_code ignored;
        if (entry->is_directory(ignored) && !entry->is_symlink(ignored) && isCapture(entry->path())) {
            found.push_back(entry->path().string());
            entry.disable_recursion_pending();
        }
    }
    return found;
}

}  // namespace

std::vector<std::string> findCaptures(const std::string& path) {
    std::vector<std::string> found;
    if (!isCapture(path)) {
        found = capturesBelow(path);
    }
    if (found.empty()) {
        found.push_back(path);
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<std::string> readPathList(std::istream& stream) {
    std::vector<std::string> paths;
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!line.empty()) {
            paths.push_back(line);
        }
    }
    return paths;
}

}  // namespace quorvel::kit
