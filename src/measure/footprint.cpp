// SPDX-License-Identifier: Apache-2.0
#include "measure/footprint.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include <opencv2/imgproc.hpp>

#include "image/scratch.h"
#include "measure/detection_area.h"
#include "measure/object_points.h"

namespace quorvel::internal {

namespace {

/// \return nothing when the points are so far out that OpenCV's minimum-area rectangle raises an error
std::optional<FootprintCorners> minimumRectangle(const std::vector<cv::Point>& footprint) {
    FootprintCorners corners;
    try {
        cv::minAreaRect(footprint).points(corners.data());
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
    return corners;
}

std::optional<Box> boxAround(ObjectPoints& object, const PlaneBasis& basis, const FootprintSettings& settings) {
    if (object.count < kLeastFootprintPoints) {
        return std::nullopt;
    }
    const std::optional<FootprintCorners> rectangle = minimumRectangle(object.outline);
    if (!rectangle) {
        return std::nullopt;
    }
    Box box;
    box.footprint = *rectangle;
    box.topDistance = object.largestDistance;
    box.corners = boxCorners(box.footprint, basis, settings.plane, box.topDistance, settings.camera);
    box.rawSides = footprintSides(box.footprint);
    box.sides = correctedSides(box.rawSides, box.corners, object.count);
    box.rawHeight = heightQuantile(object.heights.atLeast(object.count), object.count);
    box.height = correctedHeight(box.rawHeight, settings.plane.offset);
    return box;
}

bool meetsArea(const Box& box, const FootprintSettings& settings) {
    const std::vector<cv::Point2f>& corners = box.corners;
    return topFaceMeetsRegion({corners[4], corners[5], corners[6], corners[7]}, settings.detectionArea,
                              settings.picture);
}

Sizes sizesOf(const Box& box) {
    return {std::max(box.sides.a, box.sides.b), std::min(box.sides.a, box.sides.b), box.height};
}

/// Finds the box and holds it against the picture's areas.
Footprint measure(const cv::Mat& cloud, const FootprintSettings& settings, const std::optional<int>& sideBand) {
    const PlaneBasis basis = planeBasis(settings.plane.normal);
    const Borrowed<ObjectPoints> object;
    collectObjectPoints(cloud, settings.plane.normal, settings.plane.offset, basis, *object);
    Footprint found;
    found.points = object->count;
    found.box = boxAround(*object, basis, settings);
    found.usable = wholePicture(settings.picture);
    if (!found.box) {
        return found;
    }
    if (sideBand) {
        found.sideMargin = sideMarginPixels(*sideBand, settings.camera.fx, settings.plane.offset, found.box->rawHeight);
        found.usable = pictureWithoutSides(settings.picture, found.sideMargin);
    }
    found.meetsArea = meetsArea(*found.box, settings);
    found.inView = found.meetsArea && allInside(found.box->corners, found.usable);
    if (found.inView) {
        found.sizes = sizesOf(*found.box);
    }
    return found;
}

int scaledUp(int smallSide, int downScale) {
    const std::int64_t side = static_cast<std::int64_t>(smallSide) * downScale;
    return static_cast<int>(
        std::clamp<std::int64_t>(side, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

}  // namespace

cv::Size pictureSize(const cv::Size& small, int downScale) {
    return {scaledUp(small.width, downScale), scaledUp(small.height, downScale)};
}

Footprint measureFootprint(const cv::Mat& cloud, const FootprintSettings& settings) {
    Footprint found = measure(cloud, settings, settings.sideBand);
    found.onTarget = found.meetsArea;
    return found;
}

Footprint measureFootprintWithoutMargin(const cv::Mat& cloud, const FootprintSettings& settings) {
    return measure(cloud, settings, std::nullopt);
}

}  // namespace quorvel::internal
