// SPDX-License-Identifier: Apache-2.0
#include <iostream>

#include <quorvel/quorvel.h>

#include "measure/ground_removal.h"
#include "measure/object_chain.h"
#include "ruler/distance_bands.h"
#include "ruler/measure_settings.h"
#include "ruler/members.h"

using namespace quorvel::internal;

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
    if (measureObject(frame, measureSettings(*this), result) != 0) {
        printPlaneRefusal(*this);
        return 1;
    }
    if (productType == GROUND_TRACKING) {
        result.height -= trackingHeightLowering(refPlaneOffset);
    }
    return 0;
}
