// SPDX-License-Identifier: Apache-2.0
#include "measure/detection_area.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <opencv2/imgproc.hpp>

#include "image/image_form.h"
#include "image/numbers.h"
#include "image/scratch.h"

namespace quorvel::internal {

namespace {

constexpr int kFarthestCorner = 1 << 24;

using Polygon = std::array<cv::Point, 4>;

struct CanvasScratch {
    GrowingBuffer<uchar> pixels;
};

int drawnCoordinate(float position) {
    return std::clamp(roundToInt(position), -kFarthestCorner, kFarthestCorner);
}

Polygon drawnPolygon(const std::array<cv::Point2f, 4>& corners) {
    Polygon polygon;
    std::transform(corners.begin(), corners.end(), polygon.begin(), [](const cv::Point2f& corner) {
        return cv::Point(drawnCoordinate(corner.x), drawnCoordinate(corner.y));
    });
    return polygon;
}

/// The part of a region inside the picture. Computed in 64 bits, because the sum of a host's x and width may overflow
/// int.
cv::Rect insidePicture(const cv::Rect& region, const cv::Size& image) {
    const auto clip = [](std::int64_t value, int limit) {
        return static_cast<int>(std::clamp<std::int64_t>(value, 0, limit));
    };
    const int left = clip(region.x, image.width);
    const int top = clip(region.y, image.height);
    const int right = clip(static_cast<std::int64_t>(region.x) + region.width, image.width);
    const int bottom = clip(static_cast<std::int64_t>(region.y) + region.height, image.height);
    return {left, top, std::max(right - left, 0), std::max(bottom - top, 0)};
}

}  // namespace

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

bool isInside(const cv::Point2f& corner, const UsableArea& area) {
    return corner.x >= area.left && corner.x <= area.right && corner.y >= area.top && corner.y <= area.bottom;
}

bool allInside(const std::vector<cv::Point2f>& corners, const UsableArea& area) {
    return std::all_of(corners.begin(), corners.end(),
                       [&area](const cv::Point2f& corner) { return isInside(corner, area); });
}

bool topFaceMeetsRegion(const std::array<cv::Point2f, 4>& topFace, const cv::Rect& region, const cv::Size& image) {
    if (image.width <= 0 || image.height <= 0) {
        return false;
    }
    Polygon polygon = drawnPolygon(topFace);
    // Only the polygon's part of the picture is drawn. Its pixels are the same as in a drawing of the whole picture:
    // the outline is clipped only where it leaves the picture, at the same edges, and all positions are shifted by
    // whole pixels.
    const cv::Rect canvas = cv::boundingRect(polygon) & cv::Rect(cv::Point(0, 0), image);
    const cv::Rect wanted = insidePicture(region, image) & canvas;
    if (wanted.empty() || !isFrameSize(canvas.width, canvas.height)) {
        return false;
    }
    for (cv::Point& corner : polygon) {
        corner -= canvas.tl();
    }
    const Borrowed<CanvasScratch> scratch;
    cv::Mat drawing(canvas.size(), CV_8UC1, scratch->pixels.atLeast(static_cast<std::size_t>(canvas.area())));
    drawing.setTo(0);
    cv::fillConvexPoly(drawing, polygon, cv::Scalar(255), cv::LINE_8);
    return cv::countNonZero(drawing(wanted - canvas.tl())) > 0;
}

}  // namespace quorvel::internal
