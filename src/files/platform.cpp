// SPDX-License-Identifier: Apache-2.0
#include "files/platform.h"

#include <cstdio>

#ifdef _WIN32
#include <windows.h>
#else
#include <array>
#include <cerrno>
#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <sys/types.h>
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

std::optional<std::string> linkTarget(const std::string& path) {
    // On Windows symbolic links need a privilege and are very rare. A link is replaced like a file.
    return path;
}

std::string folderOf(const std::string& path) {
    return path.substr(0, path.find_last_of("/\\:") + 1);
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    WIN32_FIND_DATAA entry{};
    const HANDLE search = FindFirstFileA((folder + "*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return names;
    }
    do {
        names.emplace_back(entry.cFileName);
    } while (FindNextFileA(search, &entry) != 0);
    FindClose(search);
    return names;
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
    // On Windows a new file inherits the permissions of its folder.
}

int moveOver(const std::string& from, const std::string& to) {
    for (int tries = 0; MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0;
         ++tries) {
        const DWORD reason = GetLastError();
        if (!(isHeldByOthers() && awaitRelease(tries))) {
            return static_cast<int>(reason);
        }
    }
    return 0;
}

unsigned long processNumber() {
    return GetCurrentProcessId();
}

bool isRunning(unsigned long process) {
    const HANDLE handle = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process);
    if (handle == nullptr) {
        return GetLastError() != ERROR_INVALID_PARAMETER;  // what it says of a number that no process has
    }
    DWORD code = STILL_ACTIVE;
    const bool told = GetExitCodeProcess(handle, &code) != 0;
    CloseHandle(handle);
    return !told || code == STILL_ACTIVE;
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

std::optional<std::string> linkTarget(const std::string& path) {
    constexpr int kLongestChain = 40;  // as long as the system itself follows
    constexpr std::size_t kLongestPath = 4096;
    std::string target = path;
    for (int i = 0; i <= kLongestChain; ++i) {
        std::array<char, kLongestPath> text{};
        const ssize_t length = readlink(target.c_str(), text.data(), text.size());
        if (length < 0) {
            return target;
        }
        const bool fromRoot = length > 0 && text.front() == '/';
        target = fromRoot ? std::string() : folderOf(target);
        target.append(text.data(), static_cast<std::size_t>(length));
    }
    return std::nullopt;
}

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    DIR* const entries = opendir(folder.empty() ? "." : folder.c_str());
    if (entries == nullptr) {
        return names;
    }
    // This handle is this function's own, so readdir() is safe. NOLINTNEXTLINE(concurrency-mt-unsafe)
    while (const dirent* entry = readdir(entries)) {
        names.emplace_back(static_cast<const char*>(entry->d_name));
    }
    closedir(entries);
    return names;
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

int moveOver(const std::string& from, const std::string& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        return errno;
    }
    // A loss of power could also undo the change of the folder's entry, so that is flushed too. If this fails, the old
    // or the new content is still complete.
    const std::string folder = folderOf(to);
    static_cast<void>(flushFile(folder.empty() ? "." : folder));
    return 0;
}

unsigned long processNumber() {
    return static_cast<unsigned long>(getpid());
}

bool isRunning(unsigned long process) {
    // kill() takes 0 and negative numbers for groups of processes, so those are not asked about.
    constexpr auto kMost = static_cast<unsigned long>(std::numeric_limits<pid_t>::max());
    return process == 0 || process > kMost || kill(static_cast<pid_t>(process), 0) == 0 || errno != ESRCH;
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
