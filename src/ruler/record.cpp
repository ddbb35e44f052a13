// SPDX-License-Identifier: Apache-2.0
#include "ruler/record.h"

#include <ostream>
#include <string>

namespace quorvel::internal {

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
