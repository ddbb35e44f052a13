// SPDX-License-Identifier: Apache-2.0
#include <iostream>

#include <quorvel/quorvel.h>

#include "common/numbers.h"
#include "measure/ground_removal.h"
#include "measure/object_chain.h"
#include "ruler/distance_bands.h"
#include "ruler/members.h"

using namespace quorvel::internal;

namespace {

MeasureSettings settingsOf(const Quorvel& ruler) {
    MeasureSettings settings;
    settings.plane = referencePlane(ruler);
    settings.minHeight = ruler.minObjectHeight;
    settings.minPixels = ruler.minObjectPixels;
    settings.camera = {ruler.cx, ruler.cy, ruler.fx, ruler.fy};
    settings.downScale = ruler.downScale;
    settings.cameraTypeSet = ruler.cameraTypeSet;
    settings.cameraType = truncateToInt(ruler.cameraType);
    settings.effectiveRegion = ruler.effectiveRegion;
    settings.variant =
        ruler.productType == GROUND_GROWING ? FootprintVariant::WithoutMargin : FootprintVariant::General;
    return settings;
}

}  // namespace

int Quorvel::measureOnce() {
    resetResult(result);
    if (productType != KIOSK && productType != GROUND_TRACKING && productType != GROUND_GROWING) {
        return 0;
    }
    if (productType != GROUND_TRACKING && !calibStatus) {
        if (debugMode) {
            std::cout << "No calibration data." << std::endl;
        }
        return 1;
    }
    if (productType == KIOSK) {
        minObjectHeight = kioskMinHeight(refPlaneOffset, minObjectHeight);
    }
    const FrameImages frame{depthSmall, pointCloudSmallCopy, pointCloud};
    if (!imagesFit(frame, {imageWidth, imageHeight})) {
        return 1;
    }
    removeGround(depthSmall, filterWeight, refPlaneOffset);
    if (measureObject(frame, settingsOf(*this), result) != 0) {
        return 1;
    }
    if (productType == GROUND_TRACKING) {
        result.height -= trackingHeightLowering(refPlaneOffset);
    }
    return 0;
}
