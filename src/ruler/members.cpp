// SPDX-License-Identifier: Apache-2.0
#include "ruler/members.h"

#include <iostream>
#include <string>

#include "common/numbers.h"

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

void printPlaneRefusal(const Quorvel& ruler) {
    const std::string problem = planeProblem(referencePlane(ruler));
    if (ruler.debugMode && hasPlane(ruler.refPlaneNormal) && !problem.empty()) {
        std::cout << "The reference plane cannot be measured from: " << problem << ". Calibrate again." << std::endl;
    }
}

void printPlane(const Plane& plane) {
    std::cout << "cal ref normal: "
              << "[" << plane.normal[0] << ", " << plane.normal[1] << ", " << plane.normal[2] << "]"
              << " , t = " << plane.offset << std::endl;
}

cv::Rect centeredRegion(float ratio, int imageWidth, int imageHeight) {
    const auto width = static_cast<float>(imageWidth);
    const auto height = static_cast<float>(imageHeight);
    return {truncateToInt((width - width * ratio) * 0.5F), truncateToInt((height - height * ratio) * 0.5F),
            truncateToInt(width * ratio), truncateToInt(height * ratio)};
}

}  // namespace quorvel::internal
