// SPDX-License-Identifier: Apache-2.0
#include "ruler/presets.h"

#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include "files/calibration_file.h"
#include "files/platform.h"
#include "ruler/members.h"

namespace quorvel::internal {

namespace {

constexpr float kKioskRegionRatio = 0.2F;
constexpr float kLowObjectFilterWeight = 0.005F;

void printLoadedPlane(const Quorvel& ruler, std::ostream& lines) {
    const cv::Vec3f& normal = ruler.refPlaneNormal;
    lines << "Normal : " << normal[0] << ", " << normal[1] << ", " << normal[2] << std::endl;
    lines << "Camera Height : " << ruler.cameraHeight << std::endl;
    const std::string problem = planeProblem(referencePlane(ruler));
    if (!problem.empty()) {
        lines << "The plane in " << ruler.calFilePath << " cannot be measured from: " << problem << ". Calibrate again."
              << std::endl;
    }
}

/// \param debugLines null outside the debug mode
void selectKiosk(Quorvel& ruler, std::ostream* debugLines) {
    if (debugLines != nullptr) {
        *debugLines << "Set Product Type : KIOSK mode." << std::endl;
    }
    if (loadStoredPlane(ruler, debugLines)) {
        ruler.calibStatus = true;
    }
    ruler.effectiveRegion = kioskRegion(ruler);
    if (debugLines != nullptr) {
        *debugLines << "KIOSK mode object effective RoI initial value : " << ruler.effectiveRegion << std::endl;
        *debugLines << "Set Product Type : KIOSK mode success." << std::endl;
    }
}

/// \param debugLines null outside the debug mode
void selectKioskLowObject(Quorvel& ruler, std::ostream* debugLines) {
    if (debugLines != nullptr) {
        *debugLines << "Set Product Type : KIOSK LOW OBJECT mode." << std::endl;
    }
    loadStoredPlane(ruler, debugLines);
    // Unlike KIOSK, this mode counts as calibrated without a stored plane, on purpose.
    ruler.calibStatus = true;
    ruler.filterWeight = kLowObjectFilterWeight;
    ruler.effectiveRegion = kioskRegion(ruler);
    if (debugLines != nullptr) {
        *debugLines << "KIOSK Low Object mode object effective RoI initial value : " << ruler.effectiveRegion
                    << std::endl;
        *debugLines << "Set Product Type : KIOSK Low Object mode success." << std::endl;
    }
}

}  // namespace

cv::Rect kioskRegion(const Quorvel& ruler) {
    return centeredRegion(kKioskRegionRatio, ruler.imageWidth, ruler.imageHeight);
}

bool loadStoredPlane(Quorvel& ruler, std::ostream* lines) {
    const std::optional<Plane> plane = readCalibrationFile(ruler.calFilePath, referencePlane(ruler));
    if (!plane) {
        return false;
    }
    adoptPlane(ruler, *plane);
    ruler.cameraHeight = plane->offset;
    if (ruler.debugMode && lines != nullptr) {
        printLoadedPlane(ruler, *lines);
    }
    return true;
}

void selectMode(Quorvel& ruler, ProductType type, std::ostream* lines) {
    ruler.productType = type;
    // The background image is opened and closed without reading; nothing depends on it. A pipe of that name is not
    // opened, because opening it could wait without end.
    if (isPlainFile(ruler.backgroundPath)) {
        std::ifstream(ruler.backgroundPath).close();
    }
    std::ostream* const debugLines = ruler.debugMode ? lines : nullptr;
    switch (type) {
        case KIOSK:
            selectKiosk(ruler, debugLines);
            break;
        case KIOSK_LOW_OBJECT:
            selectKioskLowObject(ruler, debugLines);
            break;
        default:
            break;
    }
}

}  // namespace quorvel::internal

int Quorvel::setProductType(ProductType type) {
    quorvel::internal::selectMode(*this, type, &std::cout);
    return 0;
}
