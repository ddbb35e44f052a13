// SPDX-License-Identifier: Apache-2.0
#include "kit/output/ruler_params_file.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <system_error>

#include "files/parameter_file.h"
#include "kit/input/input_error.h"
#include "kit/input/input_file.h"
#include "kit/output/output_file.h"

namespace quorvel::kit {

namespace {

namespace fs = std::filesystem;

/// The part of the file name that chooses the format, such as ".yml"; empty when it chooses none.
std::string formatExtension(const fs::path& path) {
    const std::string extension = path.extension().string();
    std::string format = extension;
    std::transform(format.begin(), format.end(), format.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    constexpr std::array<const char*, 4> kFormats{".yml", ".yaml", ".xml", ".json"};
    const bool known = std::find(kFormats.begin(), kFormats.end(), format) != kFormats.end();
    return known ? extension : std::string();
}

/// Refuses other endings, because the library would write XML or YAML under any name.
void requireFormat(const fs::path& file, const std::string& path) {
    if (formatExtension(file).empty()) {
        throw InputError(path +
                         ": the extension chooses the format, and this one chooses none; name the file .yml, .yaml, "
                         ".xml or .json");
    }
}

/// The file that symbolic links lead to.
fs::path existingFile(const std::string& path) {
    fs::path file = fileBehindLinks(path);
    std::error_code error;
    if (fs::is_symlink(path, error) && !fs::exists(file, error)) {
        throw InputError(path + ": is a link that leads to no file; make it lead to one, or remove it");
    }
    return file;
}

[[noreturn]] void refuseLoss(const std::string& path, const std::string& what) {
    throw InputError(path + ": holds " + what +
                     " besides the ruler's parameters, and writing it anew would lose that; edit the file by hand, or "
                     "keep the parameters in a file of their own");
}

void requireOnlyParameters(const std::string& path) {
    // From memory, in the same way as the library has just read it. OpenCV reads some texts differently from a file, or
    // without end.
    const cv::FileStorage storage(readInputFile(path, kLargestText, "check the path"),
                                  cv::FileStorage::READ | cv::FileStorage::MEMORY);
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

}  // namespace

std::optional<RulerParams> readEditableParams(const std::string& path) {
    const fs::path file = existingFile(path);
    requireFormat(file, path);
    std::error_code error;
    if (!fs::exists(file, error)) {
        return std::nullopt;
    }
    if (!fs::is_regular_file(file, error)) {
        throw InputError(path + ": is not a regular file; check the path");
    }
    requireWritable(path);
    const RulerParams params = readRulerParams(path);
    requireOnlyParameters(path);
    return params;
}

void replaceRulerParams(const std::string& path, const RulerParams& params) {
    const std::string format = formatExtension(existingFile(path));
    writeOutputFile(path, internal::rulerParametersText(format, params), FileContent::Text);
}

}  // namespace quorvel::kit
