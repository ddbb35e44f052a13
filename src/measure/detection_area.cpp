// SPDX-License-Identifier: Apache-2.0
#include "measure/detection_area.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <opencv2/imgproc.hpp>

#include "common/frame_size.h"
#include "common/growing_buffer.h"
#include "common/numbers.h"
#include "common/scratch.h"

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

/// The part of a region inside the picture. In 64 bits, because a host's rectangle may end beyond what int holds.
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

bool topFaceMeetsRegion(const std::array<cv::Point2f, 4>& topFace, const cv::Rect& region, const cv::Size& image) {
    if (image.width <= 0 || image.height <= 0) {
        return false;
    }
    Polygon polygon = drawnPolygon(topFace);
    // The polygon's part of the picture, drawn alone, has the pixels of the whole picture: its outline is clipped only
    // where it leaves the picture, at the same edges, and everything else moves by whole pixels.
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
