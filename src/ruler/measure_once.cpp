// SPDX-License-Identifier: Apache-2.0
#include "ruler/measure_once.h"

#include <iostream>

#include "image/numbers.h"
#include "measure/distance_bands.h"
#include "ruler/members.h"
#include "ruler/record.h"

namespace quorvel::internal {

namespace {

bool modeMeasures(int productType) {
    return productType == KIOSK || productType == GROUND_TRACKING || productType == GROUND_GROWING;
}

MeasureAccount measureHeldFrame(Quorvel& ruler, const AccountDetail& detail) {
    if (ruler.productType != GROUND_TRACKING && !ruler.calibStatus) {
        return accountWithoutSearch(Outcome::NoPlane, measureSettings(ruler));
    }
    if (ruler.productType == KIOSK) {
        ruler.minObjectHeight = kioskMinHeight(ruler.refPlaneOffset, ruler.minObjectHeight);
    }
    const FrameImages frame{ruler.depthSmall, ruler.pointCloudSmallCopy, ruler.pointCloud};
    return measureFrame(frame, {ruler.imageWidth, ruler.imageHeight}, measureSettings(ruler), detail);
}

}  // namespace

MeasureSettings measureSettings(const Quorvel& ruler) {
    MeasureSettings settings;
    settings.plane = referencePlane(ruler);
    settings.filterWeight = ruler.filterWeight;
    settings.minHeight = ruler.minObjectHeight;
    settings.minPixels = ruler.minObjectPixels;
    settings.camera = {ruler.cx, ruler.cy, ruler.fx, ruler.fy};
    settings.downScale = ruler.downScale;
    if (ruler.cameraTypeSet) {
        settings.sideBand = truncateToInt(ruler.cameraType);
    }
    settings.detectionArea = ruler.effectiveRegion;
    settings.variant =
        ruler.productType == GROUND_GROWING ? FootprintVariant::WithoutMargin : FootprintVariant::General;
    return settings;
}

std::optional<MeasureAccount> measureSingleShot(Quorvel& ruler, const AccountDetail& detail, std::ostream* lines) {
    resetResult(ruler.result);
    if (!modeMeasures(ruler.productType)) {
        return std::nullopt;
    }
    MeasureAccount account = measureHeldFrame(ruler, detail);
    printSearch(account, ruler.debugMode, lines);
    if (hasRecord(account)) {
        if (ruler.productType == GROUND_TRACKING) {
            account.heightLowering = trackingHeightLowering(ruler.refPlaneOffset);
        }
        storeRecord(account, ruler.result);
    }
    return account;
}

}  // namespace quorvel::internal

int Quorvel::measureOnce() {
    using namespace quorvel::internal;
    const std::optional<MeasureAccount> account = measureSingleShot(*this, {}, &std::cout);
    return !account || hasRecord(*account) ? 0 : 1;
}
