// SPDX-License-Identifier: Apache-2.0
#include "measure/usable_area.h"

#include <algorithm>

#include "common/numbers.h"

namespace quorvel::internal {

UsableArea wholePicture(const cv::Size& image) {
    return {0.0F, static_cast<float>(image.width), 0.0F, static_cast<float>(image.height)};
}

UsableArea pictureWithoutSides(const cv::Size& image, float margin) {
    UsableArea area = wholePicture(image);
    area.left = static_cast<float>(truncateToInt(margin));
    area.right = static_cast<float>(truncateToInt(area.right - margin));
    return area;
}

float sideMarginPixels(int cameraType, float fx, float offset, float height) {
    return static_cast<float>(cameraType) * fx / (offset - height) * 1.3F;
}

bool allInside(const std::vector<cv::Point2f>& corners, const UsableArea& area) {
    return std::all_of(corners.begin(), corners.end(), [&area](const cv::Point2f& corner) {
        return corner.x >= area.left && corner.x <= area.right && corner.y >= area.top && corner.y <= area.bottom;
    });
}

}  // namespace quorvel::internal
