// SPDX-License-Identifier: Apache-2.0
#include "capture_saving.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <set>
#include <system_error>
#include <thread>

#include "capture_files.h"
#include "input_error.h"
#include "muted_errors.h"
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
        const HeldBackLibraryOutput output;
        const MutedErrors muted;
        ruler.saveOfflineData();
    }
    const Folders after = captureFolders();
    Folders made;
    std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::inserter(made, made.end()));
    return made.empty() ? fs::path() : *made.rbegin();
}

/// Whether the folder holds all that the ruler was asked to keep; a full disk cuts files or leaves them out.
bool isWhole(const fs::path& folder, const Quorvel& ruler) {
    try {
        const Capture capture = readCapture(folder);
        return capture.frame && cv::norm(capture.frame->depth, ruler.depthImage, cv::NORM_INF) == 0.0 &&
               cv::norm(capture.frame->color, ruler.colorImage, cv::NORM_INF) == 0.0 &&
               capture.recorded.corners.size() == ruler.result.corners.size();
    } catch (const InputError&) {
        return false;
    }
}

void requireWhole(const fs::path& folder, const Quorvel& ruler) {
    if (isWhole(folder, ruler)) {
        return;
    }
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    throw InputError(folder.generic_string() +
                     ": the capture cannot be written whole and was removed; check the space on the disk");
}

}  // namespace

std::string saveCapture(Quorvel& ruler) {
    // Another process may take the next second as well, but hardly several in a row.
    constexpr int kTries = 4;
    for (int i = 0; i < kTries; ++i) {
        const Folders before = captureFolders();
        const fs::path folder = saveOnce(ruler, before);
        if (!folder.empty()) {
            requireWhole(folder, ruler);
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
