// SPDX-License-Identifier: Apache-2.0
#include "common/whole_file.h"

#include <atomic>
#include <fstream>
#include <ios>

#include "common/platform.h"

namespace quorvel::internal {

namespace {

/// \return a name beside this one that no other writer uses at the same time, in this process or another
std::string nameBeside(const std::string& path) {
    static std::atomic<unsigned long> count{0};
    return path + "." + std::to_string(processNumber()) + "-" + std::to_string(count.fetch_add(1)) + ".new";
}

bool writeFile(const std::string& path, std::string_view content, FileContent kind) {
    std::ofstream file(path, kind == FileContent::Binary ? std::ios::out | std::ios::binary : std::ios::out);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    return file.good();
}

}  // namespace

bool writeWholeFile(const std::string& path, std::string_view content, FileContent kind) {
    const std::string place = linkTarget(path);
    if (place.empty() || !mayReplace(place)) {
        return false;
    }
    const std::string beside = nameBeside(place);
    const bool written = writeFile(beside, content, kind) && flushFile(beside);
    if (written) {
        copyPermissions(place, beside);
    }
    if (written && moveOver(beside, place)) {
        return true;
    }
    removeFile(beside);
    return false;
}

}  // namespace quorvel::internal
