// SPDX-License-Identifier: Apache-2.0
#include "common/platform.h"

#include <cstdio>

#ifdef _WIN32
#include <windows.h>
#else
#include <array>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace quorvel::internal {

void removeFile(const std::string& path) {
    static_cast<void>(std::remove(path.c_str()));
}

#ifdef _WIN32

namespace {

/// \return whether the last call failed because somebody has the file open
bool isHeldByOthers() {
    const DWORD reason = GetLastError();
    return reason == ERROR_ACCESS_DENIED || reason == ERROR_SHARING_VIOLATION;
}

}  // namespace

bool pathExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool isFolder(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool isPlainFile(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    constexpr DWORD kNoFile = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE;
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & kNoFile) == 0;
}

bool mayReplace(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES || (isPlainFile(path) && (attributes & FILE_ATTRIBUTE_READONLY) == 0);
}

std::string linkTarget(const std::string& path) {
    // Links need a privilege there and are next to unknown: one in a file's place is replaced like a file.
    return path;
}

bool awaitRelease(int tries) {
    constexpr int kMostTries = 250;
    constexpr DWORD kPause = 4;  // ms
    if (tries >= kMostTries) {
        return false;
    }
    Sleep(kPause);
    return true;
}

bool flushFile(const std::string& path) {
    HANDLE file = INVALID_HANDLE_VALUE;
    for (int tries = 0; file == INVALID_HANDLE_VALUE; ++tries) {
        file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE && !(isHeldByOthers() && awaitRelease(tries))) {
            return false;
        }
    }
    const bool flushed = FlushFileBuffers(file) != 0;
    CloseHandle(file);
    return flushed;
}

void copyPermissions(const std::string& /*from*/, const std::string& /*to*/) {
    // A new file inherits those of its folder.
}

bool moveOver(const std::string& from, const std::string& to) {
    for (int tries = 0; MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0;
         ++tries) {
        if (!(isHeldByOthers() && awaitRelease(tries))) {
            return false;
        }
    }
    return true;
}

unsigned long processNumber() {
    return GetCurrentProcessId();
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

bool isPlainFile(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool mayReplace(const std::string& path) {
    return !pathExists(path) || (isPlainFile(path) && access(path.c_str(), W_OK) == 0);
}

std::string linkTarget(const std::string& path) {
    constexpr int kLongestChain = 40;  // as long as the system itself follows
    constexpr std::size_t kLongestPath = 4096;
    std::string target = path;
    for (int i = 0; i < kLongestChain; ++i) {
        std::array<char, kLongestPath> text{};
        const ssize_t length = readlink(target.c_str(), text.data(), text.size());
        if (length < 0) {
            return target;
        }
        const bool fromRoot = length > 0 && text.front() == '/';
        const std::size_t folder = target.rfind('/');
        target.resize(fromRoot || folder == std::string::npos ? 0 : folder + 1);
        target.append(text.data(), static_cast<std::size_t>(length));
    }
    return target;
}

bool awaitRelease(int /*tries*/) {
    return false;
}

bool flushFile(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    const bool flushed = fsync(file) == 0;
    close(file);
    return flushed;
}

void copyPermissions(const std::string& from, const std::string& to) {
    struct stat status {};
    if (stat(from.c_str(), &status) == 0) {
        constexpr mode_t kPermissions = 0777;
        static_cast<void>(chmod(to.c_str(), status.st_mode & kPermissions));
    }
}

bool moveOver(const std::string& from, const std::string& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        return false;
    }
    // The folder's entry is the other half of what a loss of power could take. The content is safe either way.
    const std::size_t folder = to.rfind('/');
    static_cast<void>(flushFile(folder == std::string::npos ? "." : to.substr(0, folder + 1)));
    return true;
}

unsigned long processNumber() {
    return static_cast<unsigned long>(getpid());
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
