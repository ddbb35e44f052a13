// SPDX-License-Identifier: Apache-2.0
#include "ruler_params.h"

#include <cmath>
#include <cstddef>
#include <filesystem>
#include <system_error>

#include <quorvel/quorvel.h>

#include "input_error.h"
#include "input_file.h"
#include "nesting.h"
#include "text_format.h"

namespace quorvel::command {

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
    // From memory, as the library has just read it: OpenCV reads some texts otherwise from a file, or without end.
    const cv::FileStorage storage(readInputFile(path, kLargestText, "check the path"),
                                  cv::FileStorage::READ | cv::FileStorage::MEMORY);
    requireArea(storage, "Calibration_Area", path);
    requireArea(storage, "Detect_Area", path);
    if (!isNumber(storage["Ground_Weight"])) {
        refuse(path, "\"Ground_Weight\" is not a number");
    }
}

Quorvel unusedRuler() {
    return {1.0F, 1.0F, 0.0F, 0.0F, 1, 1, false, ""};
}

void checkArea(const cv::Rect& area, const std::string& name, cv::Size picture, std::vector<std::string>& problems) {
    // In double, since a hostile area overflows an int.
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
    Quorvel ruler = unusedRuler();
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
        if (!ruler.loadRulerParam(path, params.calibrationArea, params.detectArea)) {
            throw InputError(path + ": there is no such readable file; check the path");
        }
        requireValues(path);
    } catch (const cv::Exception& error) {
        refuse(path, "is no ruler parameter file (" + oneLine(error.err) + ")");
    }
    params.groundWeight = ruler.filterWeight;
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

void writeRulerParams(const std::string& path, const RulerParams& params) {
    Quorvel ruler = unusedRuler();
    ruler.calibrationRoI = params.calibrationArea;
    ruler.effectiveRegion = params.detectArea;
    ruler.filterWeight = params.groundWeight;
    if (!ruler.saveRulerParam(path)) {
        throw InputError(path + ": cannot be written; check the folder and its permissions");
    }
}

}  // namespace quorvel::command
