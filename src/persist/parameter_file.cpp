// SPDX-License-Identifier: Apache-2.0
#include "persist/parameter_file.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "common/text_file.h"
#include "common/whole_file.h"

namespace quorvel::internal {

namespace {

const char* const kCalibrationArea = "Calibration_Area";
const char* const kDetectArea = "Detect_Area";
const char* const kGroundWeight = "Ground_Weight";

/// \return whether OpenCV would take the name for more than a name: what follows a question mark for options, this
/// ending
///         for a wish to compress
bool hasMeaning(const std::string& path) {
    constexpr std::string_view kCompressed = ".gz";
    const bool compressed = path.size() >= kCompressed.size() &&
                            path.compare(path.size() - kCompressed.size(), kCompressed.size(), kCompressed.data()) == 0;
    return compressed || path.find('?') != std::string::npos;
}

/// OpenCV's parsers call themselves once a level and take some 250 bytes of the stack for each, so that a document of
/// brackets ends the process. A level takes a bracket, a tag or, in YAML, one column of a line more than the level
/// around it: both bounds together keep the parsers below half a megabyte. Parameter files have five levels.
bool isTooDeep(const std::string& text) {
    constexpr std::ptrdiff_t kMostBrackets = 1000;
    constexpr std::size_t kLongestLine = 1000;
    const std::ptrdiff_t brackets =
        std::count_if(text.begin(), text.end(), [](char c) { return c == '[' || c == '{' || c == '<'; });
    if (brackets > kMostBrackets) {
        return true;
    }
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        if (end - start > kLongestLine) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

/// OpenCV's parser follows a null pointer in an XML document that ends within a tag.
bool isCutXml(const std::string& text) {
    constexpr std::string_view kEnd = "</opencv_storage>";
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    const bool closed = last != std::string::npos && last + 1 >= kEnd.size() &&
                        text.compare(last + 1 - kEnd.size(), kEnd.size(), kEnd.data()) == 0;
    return text.compare(0, 5, "<?xml") == 0 && !closed;
}

bool isNumber(const cv::FileNode& node) {
    return node.isInt() || node.isReal();
}

cv::Rect readArea(const cv::FileNode& node) {
    constexpr std::size_t kValues = 4;
    if (!node.isSeq() || node.size() != kValues) {
        return {};
    }
    for (const cv::FileNode& value : node) {
        if (!isNumber(value)) {
            return {};
        }
    }
    return {static_cast<int>(node[0]), static_cast<int>(node[1]), static_cast<int>(node[2]), static_cast<int>(node[3])};
}

float readWeight(const cv::FileNode& node) {
    return isNumber(node) ? static_cast<float>(node) : 0.0F;
}

}  // namespace

bool writeRulerParameters(const std::string& path, const RulerParameters& parameters) {
    if (hasMeaning(path)) {
        return false;
    }
    // Into memory: the file is then written whole or not at all. The path still chooses the format.
    cv::FileStorage storage(path, cv::FileStorage::WRITE | cv::FileStorage::MEMORY);
    storage << kCalibrationArea << parameters.calibrationArea;
    storage << kDetectArea << parameters.detectArea;
    storage << kGroundWeight << parameters.groundWeight;
    return writeWholeFile(path, storage.releaseAndGetString(), FileContent::Text);
}

bool readRulerParameters(const std::string& path, RulerParameters& parameters) {
    const std::optional<std::string> text = readWholeTextFile(path);
    if (!text || isTooDeep(*text)) {
        return false;
    }
    if (isCutXml(*text)) {
        CV_Error(cv::Error::StsParseError, path + " does not end as a document of this kind does.");
    }
    const cv::FileStorage storage(*text, cv::FileStorage::READ | cv::FileStorage::MEMORY);
    if (!storage.isOpened()) {
        return false;
    }
    parameters = {readArea(storage[kCalibrationArea]), readArea(storage[kDetectArea]),
                  readWeight(storage[kGroundWeight])};
    return true;
}

}  // namespace quorvel::internal
