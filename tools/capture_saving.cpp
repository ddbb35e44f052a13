// SPDX-License-Identifier: Apache-2.0
#include "capture_saving.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <set>
#include <system_error>
#include <thread>

#include "input_error.h"
#include "stream_redirect.h"

namespace quorvel::command {

namespace {

namespace fs = std::filesystem;
using Folders = std::set<fs::path>;

const char* const kLog = "log";

Folders foldersIn(const fs::path& parent) {
    Folders folders;
    std::error_code error;
    for (fs::directory_iterator entry(parent, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        std::error_code ignored;
        if (entry->is_directory(ignored)) {
            folders.insert(entry->path());
        }
    }
    return folders;
}

Folders captureFolders() {
    Folders captures;
    for (const fs::path& month : foldersIn(kLog)) {
        captures.merge(foldersIn(month));
    }
    return captures;
}

void awaitNextSecond() {
    using std::chrono::system_clock;
    std::this_thread::sleep_until(std::chrono::floor<std::chrono::seconds>(system_clock::now()) +
                                  std::chrono::seconds(1));
}

/// \return the folder that was made; empty when none was
fs::path saveOnce(Quorvel& ruler, const Folders& before) {
    {
        const LibraryOutputToStderr redirected;
        ruler.saveOfflineData();
    }
    const Folders after = captureFolders();
    Folders made;
    std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::inserter(made, made.end()));
    return made.empty() ? fs::path() : *made.rbegin();
}

void requireFiles(const fs::path& folder) {
    for (const char* name : {"para.txt", "res.txt", "color.png", "depth.tif"}) {
        std::error_code error;
        const auto bytes = fs::file_size(folder / name, error);
        if (error || bytes == 0) {
            throw InputError((folder / name).generic_string() +
                             ": was not written; check the space on the disk and the folder's permissions");
        }
    }
}

}  // namespace

std::string saveCapture(Quorvel& ruler) {
    // Another process may take the next second as well, but hardly several in a row.
    constexpr int kTries = 4;
    for (int i = 0; i < kTries; ++i) {
        const Folders before = captureFolders();
        const fs::path folder = saveOnce(ruler, before);
        if (!folder.empty()) {
            requireFiles(folder);
            return folder.generic_string();
        }
        if (before.empty()) {
            break;  // no folder was in the way
        }
        awaitNextSecond();
    }
    throw InputError(fs::absolute(kLog).string() +
                     ": no capture folder can be made in it; check that it is a folder and may be written to");
}

}  // namespace quorvel::command
