// SPDX-License-Identifier: Apache-2.0
#include "ruler/members.h"

#include <ostream>
#include <string>

#include "image/numbers.h"

namespace quorvel::internal {

void printInDebugMode(const Quorvel& ruler, const std::string& line, std::ostream* lines) {
    if (ruler.debugMode && lines != nullptr) {
        *lines << line << std::endl;
    }
}

void printPlane(const Plane& plane, std::ostream* lines) {
    if (lines != nullptr) {
        *lines << "cal ref normal: "
               << "[" << plane.normal[0] << ", " << plane.normal[1] << ", " << plane.normal[2] << "]"
               << " , t = " << plane.offset << std::endl;
    }
}

cv::Rect centeredRegion(float ratio, int imageWidth, int imageHeight) {
    const auto width = static_cast<float>(imageWidth);
    const auto height = static_cast<float>(imageHeight);
    return {truncateToInt((width - width * ratio) * 0.5F), truncateToInt((height - height * ratio) * 0.5F),
            truncateToInt(width * ratio), truncateToInt(height * ratio)};
}

}  // namespace quorvel::internal
