// SPDX-License-Identifier: Apache-2.0
#include <iostream>
#include <string>

#include <quorvel/quorvel.h>

#include "files/parameter_file.h"

using namespace quorvel::internal;

namespace {

void printParameters(const RulerParameters& parameters) {
    std::cout << " Quorvel parameter " << std::endl;
    std::cout << " [Calibration_Area] : " << parameters.calibrationArea << std::endl;
    std::cout << " [Detect_Area] : " << parameters.detectArea << std::endl;
    std::cout << " [Ground_Weight] : " << parameters.groundWeight << std::endl;
}

}  // namespace

bool Quorvel::saveRulerParam(std::string path) {
    const bool written = writeRulerParameters(path, {calibrationRoI, effectiveRegion, filterWeight});
    if (!written && debugMode) {
        std::cout << "Save Quorvel parameter into " << path << " fail." << std::endl;
    }
    return written;
}

bool Quorvel::loadRulerParam(std::string path, cv::Rect& calibrationArea, cv::Rect& detectArea) {
    const std::optional<RulerParameters> parameters = readRulerParameters(path);
    if (!parameters) {
        if (debugMode) {
            std::cout << " Quorvel parameter [" << path << "] is no exist. " << std::endl;
        }
        return false;
    }
    calibrationRoI = parameters->calibrationArea;
    effectiveRegion = parameters->detectArea;
    filterWeight = parameters->groundWeight;
    if (debugMode) {
        printParameters(*parameters);
    }
    calibrationArea = calibrationRoI;
    detectArea = effectiveRegion;
    return true;
}
