// SPDX-License-Identifier: Apache-2.0
#include "kit/input/ruler_params.h"

#include <cmath>
#include <cstddef>
#include <filesystem>
#include <system_error>

#include "files/parameter_file.h"
#include "kit/account/text_format.h"
#include "kit/input/input_error.h"
#include "kit/input/input_file.h"
#include "kit/input/nesting.h"

namespace quorvel::kit {

namespace {

bool isNumber(const cv::FileNode& node) {
    return node.isInt() || node.isReal();
}

[[noreturn]] void refuse(const std::string& path, const std::string& what) {
    throw InputError(path + ": " + what + "; remove it and write the file anew with quorvel param set");
}

void requireArea(const cv::FileStorage& storage, const std::string& key, const std::string& path) {
    constexpr std::size_t kValues = 4;
    const cv::FileNode node = storage[key];
    bool whole = node.isSeq() && node.size() == kValues;
    for (std::size_t i = 0; whole && i < kValues; ++i) {
        whole = node[static_cast<int>(i)].isInt();
    }
    if (!whole) {
        refuse(path, "\"" + key + "\" is not a sequence of four whole numbers x, y, width, height");
    }
}

/// The library reads a missing or malformed value as zero; here it is an error.
void requireValues(const std::string& path) {
    // From memory, in the same way as the library has just read it. OpenCV reads some texts differently from a file, or
    // without end.
    const cv::FileStorage storage(readInputFile(path, kLargestText, "check the path"),
                                  cv::FileStorage::READ | cv::FileStorage::MEMORY);
    requireArea(storage, "Calibration_Area", path);
    requireArea(storage, "Detect_Area", path);
    if (!isNumber(storage["Ground_Weight"])) {
        refuse(path, "\"Ground_Weight\" is not a number");
    }
}

void checkArea(const cv::Rect& area, const std::string& name, cv::Size picture, std::vector<std::string>& problems) {
    // In double, because x + width of a hostile area overflows int.
    const bool inside = area.x >= 0 && area.y >= 0 && area.width > 0 && area.height > 0 &&
                        static_cast<double>(area.x) + area.width <= picture.width &&
                        static_cast<double>(area.y) + area.height <= picture.height;
    if (!inside) {
        problems.push_back("the " + name + " area " + rectangleText(area) + " does not lie inside the picture of " +
                           std::to_string(picture.width) + " x " + std::to_string(picture.height));
    }
}

}  // namespace

RulerParams readRulerParams(const std::string& path) {
    RulerParams params;
    std::error_code ignored;
    requireOrdinaryFile(path);
    if (std::filesystem::is_regular_file(path, ignored)) {
        const std::string text = readInputFile(path, kLargestText, "check the path");
        if (text.empty()) {
            refuse(path, "is empty");
        }
        requireShallow(text, path);
    }
    try {
        const std::optional<internal::RulerParameters> read = internal::readRulerParameters(path);
        if (!read) {
            throw InputError(path + ": there is no such readable file; check the path");
        }
        requireValues(path);
        params = *read;
    } catch (const cv::Exception& error) {
        refuse(path, "is not a ruler parameter file (" + oneLine(error.err) + ")");
    }
    return params;
}

std::vector<std::string> rulerParamProblems(const RulerParams& params, cv::Size picture) {
    std::vector<std::string> problems;
    checkArea(params.calibrationArea, "calibration", picture, problems);
    checkArea(params.detectArea, "detection", picture, problems);
    if (!std::isfinite(params.groundWeight)) {
        problems.emplace_back("the ground weight is not finite");
    }
    return problems;
}

}  // namespace quorvel::kit
