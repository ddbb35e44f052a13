// SPDX-License-Identifier: Apache-2.0
#include "ruler/measure_once.h"

#include <iostream>
#include <ostream>
#include <string>

#include "image/numbers.h"
#include "measure/distance_bands.h"
#include "ruler/members.h"

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

void resetResult(MeasureResult& result) {
    result.inView = false;
    result.onTarget = false;
    result.corners.clear();
    result.length = 0.0F;
    result.width = 0.0F;
    result.height = 0.0F;
    result.sideMargin = 0.0F;
}

void storeRecord(const MeasureAccount& account, MeasureResult& result) {
    const Footprint& footprint = account.footprint;
    if (footprint.meetsArea) {
        result.corners = footprint.box->corners;
        result.length = footprint.sizes.length;
        result.width = footprint.sizes.width;
        result.height = footprint.sizes.height;
        result.inView = footprint.inView;
        result.onTarget = footprint.onTarget;
        result.sideMargin = footprint.sideMargin;
    }
    result.height -= account.heightLowering;
}

void printSearch(const MeasureAccount& account, bool debugMode, std::ostream* lines) {
    if (lines == nullptr) {
        return;
    }
    if (account.searched && !account.component.chosen) {
        *lines << "No object found." << std::endl;
    }
    if (debugMode && account.outcome == Outcome::NoPlane && !account.searched) {
        *lines << "No calibration data." << std::endl;
    }
    if (debugMode && account.outcome == Outcome::PlaneUnusable) {
        printPlaneRefusal(account.plane, lines);
    }
}

void printPlaneRefusal(const Plane& plane, std::ostream* lines) {
    const std::string problem = hasPlane(plane.normal) ? planeProblem(plane) : std::string();
    if (lines != nullptr && !problem.empty()) {
        *lines << "The reference plane cannot be measured from: " << problem << ". Calibrate again." << std::endl;
    }
}

}  // namespace quorvel::internal

int Quorvel::measureOnce() {
    using namespace quorvel::internal;
    const std::optional<MeasureAccount> account = measureSingleShot(*this, {}, &std::cout);
    return !account || hasRecord(*account) ? 0 : 1;
}
