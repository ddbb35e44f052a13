// SPDX-License-Identifier: Apache-2.0
#include "ruler/settings.h"

#include <iostream>

#include "ruler/members.h"

namespace quorvel::internal {

void chooseDetectionArea(Quorvel& ruler, const cv::Rect& area, std::ostream* lines) {
    ruler.effectiveRegion = area;
    if (ruler.debugMode && lines != nullptr) {
        *lines << "DYNAMIC mode object effective RoI value : " << area << std::endl;
    }
}

void chooseFilterWeight(Quorvel& ruler, float weight, std::ostream* lines) {
    ruler.filterWeight = weight;
    if (ruler.debugMode && lines != nullptr) {
        *lines << "Filter weight value : " << weight << std::endl;
    }
}

}  // namespace quorvel::internal

using namespace quorvel::internal;

std::string Quorvel::getVersion() {
    return QUORVEL_VERSION;
}

int Quorvel::setCameraType(bool /*enable*/, int value) {
    cameraType = static_cast<float>(value);
    cameraTypeSet = true;
    return 0;
}

void Quorvel::setDebugMode(bool on) {
    debugMode = on;
}

int Quorvel::getCameraHeight(float& height) {
    height = calibStatus ? cameraHeight : 0.0F;
    return calibStatus ? 0 : 1;
}

int Quorvel::getCalibStatus(bool& status) {
    status = calibStatus;
    return 0;
}

int Quorvel::setCalibrationRoI(cv::Rect roi) {
    calibrationRoI = roi;
    return 0;
}

int Quorvel::setCalibrationRoI(float ratio, cv::Rect& roi) {
    calibrationRoI = centeredRegion(ratio, imageWidth, imageHeight);
    roi = calibrationRoI;
    return 0;
}

int Quorvel::setEffectiveRegionInArea(cv::Rect roi) {
    chooseDetectionArea(*this, roi, &std::cout);
    return 0;
}

int Quorvel::setEffectiveRegionInArea(float ratio, cv::Rect& roi) {
    effectiveRegion = centeredRegion(ratio, imageWidth, imageHeight);
    roi = effectiveRegion;
    return 0;
}

int Quorvel::setFilterWeight(float weight) {
    chooseFilterWeight(*this, weight, &std::cout);
    return 0;
}

int Quorvel::stop() {
    return 0;
}
