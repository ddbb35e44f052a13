// SPDX-License-Identifier: Apache-2.0
#include "files/parameter_file.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "files/parameter_document.h"
#include "files/text_file.h"
#include "files/whole_file.h"

namespace quorvel::internal {

namespace {

const char* const kCalibrationArea = "Calibration_Area";
const char* const kDetectArea = "Detect_Area";
const char* const kGroundWeight = "Ground_Weight";

/// \return whether OpenCV would read more than a file name from the path: options after a question mark, or compression
///         from the ending ".gz"
bool hasMeaning(const std::string& path) {
    constexpr std::string_view kCompressed = ".gz";
    const bool compressed = path.size() >= kCompressed.size() &&
                            path.compare(path.size() - kCompressed.size(), kCompressed.size(), kCompressed.data()) == 0;
    return compressed || path.find('?') != std::string::npos;
}

/// \throws cv::Exception when the text is not a valid document
cv::FileStorage openDocument(const std::string& text, const std::string& path) {
    try {
        return {text, cv::FileStorage::READ | cv::FileStorage::MEMORY};
    } catch (const std::logic_error& error) {
        // The YAML parser takes the text before a colon as a name, and raises this when the colon comes first.
        CV_Error(cv::Error::StsParseError, path + " has a value without a name (" + error.what() + ").");
    }
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

std::string rulerParametersText(const std::string& name, const RulerParameters& parameters) {
    // Into memory, so that the file can be written whole or not at all. The name still chooses the format.
    cv::FileStorage storage(name, cv::FileStorage::WRITE | cv::FileStorage::MEMORY);
    storage << kCalibrationArea << parameters.calibrationArea;
    storage << kDetectArea << parameters.detectArea;
    storage << kGroundWeight << parameters.groundWeight;
    return storage.releaseAndGetString();
}

bool writeRulerParameters(const std::string& path, const RulerParameters& parameters) {
    return !hasMeaning(path) && writeWholeFile(path, rulerParametersText(path, parameters), FileContent::Text);
}

std::optional<RulerParameters> readRulerParameters(const std::string& path) {
    const std::optional<std::string> text = readWholeTextFile(path);
    if (!text || isTooDeep(*text)) {
        return std::nullopt;
    }
    const std::string problem = documentProblem(*text);
    if (!problem.empty()) {
        CV_Error(cv::Error::StsParseError, path + " " + problem + ".");
    }
    const cv::FileStorage storage = openDocument(*text, path);
    if (!storage.isOpened()) {
        return std::nullopt;
    }
    return RulerParameters{readArea(storage[kCalibrationArea]), readArea(storage[kDetectArea]),
                           readWeight(storage[kGroundWeight])};
}

}  // namespace quorvel::internal
