// SPDX-License-Identifier: Apache-2.0
#include <fstream>
#include <iostream>
#include <string>

#include <quorvel/quorvel.h>

#include "calib/calibration_file.h"
#include "common/platform.h"
#include "ruler/members.h"

using namespace quorvel::internal;

namespace {

constexpr float kKioskRegionRatio = 0.2F;
constexpr float kLowObjectFilterWeight = 0.005F;

void printLoadedPlane(const Quorvel& ruler) {
    const cv::Vec3f& normal = ruler.refPlaneNormal;
    std::cout << "Normal : " << normal[0] << ", " << normal[1] << ", " << normal[2] << std::endl;
    std::cout << "Camera Height : " << ruler.cameraHeight << std::endl;
    const std::string problem = planeProblem(referencePlane(ruler));
    if (!problem.empty()) {
        std::cout << "The plane in " << ruler.calFilePath << " cannot be measured from: " << problem
                  << ". Calibrate again." << std::endl;
    }
}

/// \return whether there was a calibration file
bool loadStoredPlane(Quorvel& ruler) {
    Plane plane = referencePlane(ruler);
    if (!readCalibrationFile(ruler.calFilePath, plane)) {
        return false;
    }
    adoptPlane(ruler, plane);
    ruler.cameraHeight = plane.offset;
    if (ruler.debugMode) {
        printLoadedPlane(ruler);
    }
    return true;
}

cv::Rect kioskRegion(const Quorvel& ruler) {
    return centeredRegion(kKioskRegionRatio, ruler.imageWidth, ruler.imageHeight);
}

void selectKiosk(Quorvel& ruler) {
    if (ruler.debugMode) {
        std::cout << "Set Product Type : KIOSK mode." << std::endl;
    }
    if (loadStoredPlane(ruler)) {
        ruler.calibStatus = true;
    }
    ruler.effectiveRegion = kioskRegion(ruler);
    if (ruler.debugMode) {
        std::cout << "KIOSK mode object effective RoI initial value : " << ruler.effectiveRegion << std::endl;
        std::cout << "Set Product Type : KIOSK mode success." << std::endl;
    }
}

void selectKioskLowObject(Quorvel& ruler) {
    if (ruler.debugMode) {
        std::cout << "Set Product Type : KIOSK LOW OBJECT mode." << std::endl;
    }
    loadStoredPlane(ruler);
    // Unlike KIOSK, this mode counts as calibrated without a stored plane, on purpose.
    ruler.calibStatus = true;
    ruler.filterWeight = kLowObjectFilterWeight;
    ruler.effectiveRegion = kioskRegion(ruler);
    if (ruler.debugMode) {
        std::cout << "KIOSK Low Object mode object effective RoI initial value : " << ruler.effectiveRegion
                  << std::endl;
        std::cout << "Set Product Type : KIOSK Low Object mode success." << std::endl;
    }
}

}  // namespace

int Quorvel::setProductType(ProductType type) {
    productType = type;
    // The background image is opened and closed unread: its place is kept, nothing depends on it. A pipe of that name
    // would be waited for without end.
    if (isPlainFile(backgroundPath)) {
        std::ifstream(backgroundPath).close();
    }
    switch (type) {
        case KIOSK:
            selectKiosk(*this);
            break;
        case KIOSK_LOW_OBJECT:
            selectKioskLowObject(*this);
            break;
        default:
            break;
    }
    return 0;
}
