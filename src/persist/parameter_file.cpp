// SPDX-License-Identifier: Apache-2.0
#include "persist/parameter_file.h"

#include <cstddef>

#include "common/text_file.h"

namespace quorvel::internal {

namespace {

const char* const kCalibrationArea = "Calibration_Area";
const char* const kDetectArea = "Detect_Area";
const char* const kGroundWeight = "Ground_Weight";

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
    // OpenCV takes what follows a question mark for options and would write to the file named before it.
    if (path.find('?') != std::string::npos) {
        return false;
    }
    cv::FileStorage storage(path, cv::FileStorage::WRITE);
    if (!storage.isOpened()) {
        return false;
    }
    storage << kCalibrationArea << parameters.calibrationArea;
    storage << kDetectArea << parameters.detectArea;
    storage << kGroundWeight << parameters.groundWeight;
    return true;
}

bool readRulerParameters(const std::string& path, RulerParameters& parameters) {
    // An empty name or a folder is a file that cannot be opened; OpenCV would raise an error of its own for it.
    if (!canRead(path)) {
        return false;
    }
    const cv::FileStorage storage(path, cv::FileStorage::READ);
    if (!storage.isOpened()) {
        return false;
    }
    parameters = {readArea(storage[kCalibrationArea]), readArea(storage[kDetectArea]),
                  readWeight(storage[kGroundWeight])};
    return true;
}

}  // namespace quorvel::internal
