// SPDX-License-Identifier: Apache-2.0
#include "ruler_params_file.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <random>
#include <system_error>

#include "input_error.h"

namespace quorvel::command {

namespace {

namespace fs = std::filesystem;

/// The part of the file name that chooses the format, such as ".yml" or ".xml.gz"; empty when it chooses none.
std::string formatExtension(const fs::path& path) {
    fs::path name = path.filename();
    std::string compression;
    if (name.extension() == ".gz") {
        compression = ".gz";
        name = name.stem();
    }
    const std::string extension = name.extension().string();
    std::string format = extension;
    std::transform(format.begin(), format.end(), format.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    constexpr std::array<const char*, 4> kFormats{".yml", ".yaml", ".xml", ".json"};
    const bool known = std::find(kFormats.begin(), kFormats.end(), format) != kFormats.end();
    return known ? extension + compression : std::string();
}

/// Other names would be written as XML or YAML whatever they promise.
void requireFormat(const fs::path& file, const std::string& path) {
    if (formatExtension(file).empty()) {
        throw InputError(path +
                         ": the extension chooses the format, and this one chooses none; name the file .yml, .yaml, "
                         ".xml or .json, or one of these with .gz behind it");
    }
}

/// The file behind the symbolic links, so that replacing it leaves the links alone.
fs::path fileBehindLinks(const std::string& path) {
    std::error_code error;
    if (!fs::is_symlink(path, error)) {
        return path;
    }
    fs::path target = fs::canonical(path, error);
    if (error) {
        throw InputError(path + ": is a link that leads to no file; make it lead to one, or remove it");
    }
    return target;
}

[[noreturn]] void refuseLoss(const std::string& path, const std::string& what) {
    throw InputError(path + ": holds " + what +
                     " besides the ruler's parameters, and writing it anew would lose that; edit the file by hand, or "
                     "keep the parameters in a file of their own");
}

void requireOnlyParameters(const std::string& path) {
    const cv::FileStorage storage(path, cv::FileStorage::READ);
    constexpr std::array<const char*, 3> kKeys{"Calibration_Area", "Detect_Area", "Ground_Weight"};
    for (const std::string& key : storage.root().keys()) {
        if (std::find(kKeys.begin(), kKeys.end(), key) == kKeys.end()) {
            refuseLoss(path, "\"" + key + "\"");
        }
    }
    if (!storage.root(1).empty()) {
        refuseLoss(path, "a second document");
    }
}

/// A rename would replace even a file that is protected against writing.
void requireWritable(const fs::path& file, const std::string& path) {
    if (!fs::is_regular_file(file)) {
        throw InputError(path + ": is no regular file; check the path");
    }
    const std::fstream probe(file, std::ios::in | std::ios::out | std::ios::binary);
    if (!probe) {
        throw InputError(path + ": cannot be written; check its permissions");
    }
}

/// A file name beside the file that nobody else uses, of the same format; removed with the object if it is still there.
class NewFileBeside {
public:
    explicit NewFileBeside(const fs::path& file)
        : path_(file.parent_path() / (".quorvel-" + std::to_string(std::random_device()()) + formatExtension(file))) {}
    ~NewFileBeside() {
        std::error_code ignored;
        fs::remove(path_, ignored);
    }
    NewFileBeside(const NewFileBeside&) = delete;
    NewFileBeside& operator=(const NewFileBeside&) = delete;
    NewFileBeside(NewFileBeside&&) = delete;
    NewFileBeside& operator=(NewFileBeside&&) = delete;

    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

/// A full disk does not fail the writing itself.
bool holds(const fs::path& file, const RulerParams& params) {
    try {
        const RulerParams kept = readRulerParams(file.string());
        return kept.calibrationArea == params.calibrationArea && kept.detectArea == params.detectArea &&
               kept.groundWeight == params.groundWeight;
    } catch (const InputError&) {
        return false;
    }
}

void writeBeside(const fs::path& fresh, const RulerParams& params, const std::string& path) {
    try {
        writeRulerParams(fresh.string(), params);
    } catch (const InputError&) {
        throw InputError(path + ": cannot be written; check the folder and its permissions");
    }
    if (!holds(fresh, params)) {
        throw InputError(path + ": cannot be written whole; check the space on the disk");
    }
}

}  // namespace

std::optional<RulerParams> readEditableParams(const std::string& path) {
    const fs::path file = fileBehindLinks(path);
    requireFormat(file, path);
    std::error_code error;
    if (!fs::exists(file, error)) {
        return std::nullopt;
    }
    requireWritable(file, path);
    const RulerParams params = readRulerParams(path);
    requireOnlyParameters(path);
    return params;
}

void replaceRulerParams(const std::string& path, const RulerParams& params) {
    const fs::path file = fileBehindLinks(path);
    const NewFileBeside fresh(file);
    writeBeside(fresh.path(), params, path);
    std::error_code error;
    if (fs::exists(file, error)) {
        fs::permissions(fresh.path(), fs::status(file).permissions(), error);
    }
    fs::rename(fresh.path(), file, error);
    if (error) {
        throw InputError(path + ": cannot be replaced (" + error.message() + "); check the folder and its permissions");
    }
}

}  // namespace quorvel::command
