// SPDX-License-Identifier: Apache-2.0
#include "files/whole_file.h"

#include <atomic>
#include <charconv>
#include <fstream>
#include <ios>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "files/platform.h"

namespace quorvel::internal {

namespace {

constexpr std::string_view kEnding = ".new";

/// \return the first part of the new file's name: the name of the place, cut to 200 bytes, because file systems allow
///         names of 255 bytes
std::string stemOf(const std::string& place) {
    constexpr std::size_t kLongest = 200;
    std::string name = place.substr(folderOf(place).size());
    if (name.size() > kLongest) {
        std::size_t end = kLongest;
        // The cut must not split a letter of UTF-8, whose later bytes begin with the bits 10.
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) {
            --end;
        }
        name.resize(end);
    }
    return name;
}

/// \return a path in the same folder that no other writer uses at the same time, in this or in another process, such as
///         "cal.txt.4711-0.new" in process 4711
std::string nameBeside(const std::string& place) {
    static std::atomic<unsigned long> count{0};
    return folderOf(place) + stemOf(place) + "." + std::to_string(processNumber()) + "-" +
           std::to_string(count.fetch_add(1)) + std::string(kEnding);
}

struct NameBeside {
    std::string stem;
    unsigned long process = 0;
};

/// Reads a whole number as nameBeside() writes it, without sign or leading zeros.
std::optional<unsigned long> readNumber(std::string_view text) {
    unsigned long number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    const bool written = error == std::errc() && stop == end && std::to_string(number) == text;
    return written ? std::optional(number) : std::nullopt;
}

/// \return the parts of a name, or nothing when nameBeside() does not make such names
std::optional<NameBeside> readNameBeside(std::string_view name) {
    if (name.size() < kEnding.size() || name.substr(name.size() - kEnding.size()) != kEnding) {
        return std::nullopt;
    }
    name.remove_suffix(kEnding.size());
    const std::size_t point = name.rfind('.');
    const std::size_t hyphen = name.rfind('-');
    if (point == std::string_view::npos || hyphen == std::string_view::npos || hyphen < point) {
        return std::nullopt;
    }
    const std::optional<unsigned long> process = readNumber(name.substr(point + 1, hyphen - point - 1));
    if (!process || *process == 0 || !readNumber(name.substr(hyphen + 1))) {
        return std::nullopt;
    }
    return NameBeside{std::string(name.substr(0, point)), *process};
}

bool writeFile(const std::string& path, std::string_view content, FileContent kind, WriteProblem& problem) {
    std::ofstream file(path, kind == FileContent::Binary ? std::ios::out | std::ios::binary : std::ios::out);
    problem = file.is_open() ? WriteProblem::NotWhole : WriteProblem::NotStarted;
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    return file.good() && flushFile(path);
}

}  // namespace

StagedFile::StagedFile(std::string path) : place_(std::move(path)) {}

StagedFile::~StagedFile() {
    if (!beside_.empty()) {
        removeFile(beside_);
    }
}

StagedFile::StagedFile(StagedFile&& other) noexcept
    : place_(std::move(other.place_)),
      beside_(std::exchange(other.beside_, std::string())),
      systemError_(other.systemError_) {}

WriteProblem StagedFile::stage(std::string_view content, FileContent kind) {
    const std::optional<std::string> target = linkTarget(place_);
    if (!target) {
        return WriteProblem::EndlessLinks;
    }
    place_ = *target;
    if (isFolder(place_)) {
        return WriteProblem::Folder;
    }
    if (!mayReplace(place_)) {
        return WriteProblem::Protected;
    }
    beside_ = nameBeside(place_);
    WriteProblem problem = WriteProblem::None;
    return writeFile(beside_, content, kind, problem) ? WriteProblem::None : problem;
}

WriteProblem StagedFile::commit() {
    copyPermissions(place_, beside_);
    systemError_ = moveOver(beside_, place_);
    if (systemError_ != 0) {
        return WriteProblem::NotReplaced;
    }
    beside_.clear();
    return WriteProblem::None;
}

void removeLeftovers(const std::vector<std::string>& places) {
    std::map<std::string, std::set<std::string>> stems;
    for (const std::string& place : places) {
        stems[folderOf(place)].insert(stemOf(place));
    }
    for (const auto& [folder, wanted] : stems) {
        for (const std::string& name : namesIn(folder)) {
            const std::optional<NameBeside> beside = readNameBeside(name);
            const bool left = beside && wanted.count(beside->stem) != 0 && beside->process != processNumber() &&
                              !isRunning(beside->process);
            if (left && isPlainFile(folder + name)) {
                removeFile(folder + name);
            }
        }
    }
}

bool writeWholeFile(const std::string& path, std::string_view content, FileContent kind) {
    StagedFile file(path);
    if (file.stage(content, kind) != WriteProblem::None || file.commit() != WriteProblem::None) {
        return false;
    }
    removeLeftovers({file.place()});
    return true;
}

bool writeImageFile(const std::string& path, const cv::Mat& image) {
    // An image of three dimensions has -1 rows: the encoder of TIFF takes gigabytes for them.
    if (image.empty() || image.dims != 2) {
        return false;
    }
    std::vector<uchar> bytes;
    if (!cv::imencode(path.substr(path.rfind('.')), image, bytes)) {
        return false;
    }
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): bytes as the characters of a file
    const auto* const characters = reinterpret_cast<const char*>(bytes.data());
    return writeWholeFile(path, {characters, bytes.size()}, FileContent::Binary);
}

cv::Mat readImageFile(const std::string& path, int mode) {
    if (!isPlainFile(path)) {
        return {};
    }
    try {
        return cv::imread(path, mode);
    } catch (const cv::Exception&) {
        return {};
    }
}

}  // namespace quorvel::internal
