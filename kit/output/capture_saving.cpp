// SPDX-License-Identifier: Apache-2.0
#include "kit/output/capture_saving.h"

#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

#include "kit/input/input_error.h"

namespace quorvel::kit {

namespace {

namespace fs = std::filesystem;

void awaitNextSecond() {
    using std::chrono::system_clock;
    std::this_thread::sleep_until(std::chrono::floor<std::chrono::seconds>(system_clock::now()) +
                                  std::chrono::seconds(1));
}

}  // namespace

std::string saveCapture(const internal::Ruler& ruler) {
    // Another process may take the next second as well, but hardly several in a row.
    constexpr int kTries = 4;
    for (int i = 0; i < kTries; ++i) {
        const internal::CaptureAccount capture = ruler.saveCapture();
        const fs::path folder = fs::path(capture.folder).lexically_normal();
        if (capture.whole) {
            return folder.generic_string();
        }
        if (!capture.folder.empty()) {
            std::error_code ignored;
            fs::remove_all(folder, ignored);
            throw InputError(folder.generic_string() +
                             ": the capture cannot be written whole and was removed; check the space on the disk");
        }
        if (!capture.exists) {
            break;
        }
        awaitNextSecond();
    }
    throw InputError(fs::absolute("log").string() +
                     ": no capture folder can be made in it; check that it is a folder and may be written to");
}

}  // namespace quorvel::kit
