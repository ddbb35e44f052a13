// SPDX-License-Identifier: Apache-2.0
#include "persist/parameter_file.h"

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "common/text_file.h"
#include "common/whole_file.h"
#include "persist/parameter_document.h"

namespace quorvel::internal {

namespace {

const char* const kCalibrationArea = "Calibration_Area";
const char* const kDetectArea = "Detect_Area";
const char* const kGroundWeight = "Ground_Weight";

/// \return whether OpenCV would take the name for more than a name: what follows a question mark for options, this
///         ending for a wish to compress
bool hasMeaning(const std::string& path) {
    constexpr std::string_view kCompressed = ".gz";
    const bool compressed = path.size() >= kCompressed.size() &&
                            path.compare(path.size() - kCompressed.size(), kCompressed.size(), kCompressed.data()) == 0;
    return compressed || path.find('?') != std::string::npos;
}

/// \throws cv::Exception when the text is no document
cv::FileStorage openDocument(const std::string& text, const std::string& path) {
    try {
        return {text, cv::FileStorage::READ | cv::FileStorage::MEMORY};
    } catch (const std::logic_error& error) {
        // The parser of YAML takes the text before a colon for a name, also where it has a negative length.
        CV_Error(cv::Error::StsParseError, path + " has a name that is none (" + error.what() + ").");
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
    const std::string problem = documentProblem(*text);
    if (!problem.empty()) {
        CV_Error(cv::Error::StsParseError, path + " " + problem + ".");
    }
    const cv::FileStorage storage = openDocument(*text, path);
    if (!storage.isOpened()) {
        return false;
    }
    parameters = {readArea(storage[kCalibrationArea]), readArea(storage[kDetectArea]),
                  readWeight(storage[kGroundWeight])};
    return true;
}

}  // namespace quorvel::internal
