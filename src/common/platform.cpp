// SPDX-License-Identifier: Apache-2.0
#include "common/platform.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/stat.h>
#endif

namespace quorvel::internal {

#ifdef _WIN32

bool pathExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool isFolder(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool makeFolder(const std::string& path) {
    return CreateDirectoryA(path.c_str(), nullptr) != 0;
}

std::tm localTime(std::time_t time) {
    std::tm local{};
    localtime_s(&local, &time);
    return local;
}

#else

bool pathExists(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}

bool isFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool makeFolder(const std::string& path) {
    constexpr mode_t kAllThatTheMaskAllows = 0777;
    return mkdir(path.c_str(), kAllThatTheMaskAllows) == 0;
}

std::tm localTime(std::time_t time) {
    std::tm local{};
    // Unlike localtime, localtime_r need not notice that the zone has changed.
    tzset();
    localtime_r(&time, &local);
    return local;
}

#endif

}  // namespace quorvel::internal
