// SPDX-License-Identifier: Apache-2.0
#include "measure/footprint.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "common/scratch.h"
#include "measure/box_geometry.h"
#include "measure/detection_area.h"
#include "measure/object_points.h"
#include "measure/usable_area.h"

namespace quorvel::internal {

namespace {

constexpr std::size_t kLeastPoints = 4;

/// A box found on the plane, before it is held against the picture's areas.
struct Box {
    std::vector<cv::Point2f> corners;
    Sides sides;
    float rawHeight = 0.0F;  ///< 0.99 quantile, mm
};

/// \return nothing when OpenCV finds no side to start from: points so far out that their distances vanish in float
std::optional<FootprintCorners> minimumRectangle(const std::vector<cv::Point>& footprint) {
    FootprintCorners corners;
    try {
        cv::minAreaRect(footprint).points(corners.data());
    } catch (const cv::Exception&) {
        return std::nullopt;
    }
    return corners;
}

/// \return a box without corners when there are fewer than 4 points or no rectangle around them
Box findBox(const cv::Mat& cloud, const Plane& plane, const Projection& camera) {
    const PlaneBasis basis = planeBasis(plane.normal);
    const Borrowed<ObjectPoints> scratch;
    ObjectPoints& object = *scratch;
    collectObjectPoints(cloud, plane.normal, plane.offset, basis, object);
    Box box;
    if (object.count < kLeastPoints) {
        return box;
    }
    const std::optional<FootprintCorners> footprint = minimumRectangle(object.outline);
    if (!footprint) {
        return box;
    }
    box.corners = boxCorners(*footprint, basis, plane, object.largestDistance, camera);
    box.sides = correctedSides(footprintSides(*footprint), box.corners, object.count);
    box.rawHeight = heightQuantile(object.heights.atLeast(object.count), object.count);
    return box;
}

bool meetsRegion(const Box& box, const cv::Rect& region, const cv::Size& image) {
    return !box.corners.empty() &&
           topFaceMeetsRegion({box.corners[4], box.corners[5], box.corners[6], box.corners[7]}, region, image);
}

/// Fills everything but `onTarget` and `sideMargin`.
MeasureResult record(Box box, float offset, const UsableArea& area) {
    MeasureResult result;
    result.inView = allInside(box.corners, area);
    if (result.inView) {
        result.length = std::max(box.sides.a, box.sides.b);
        result.width = std::min(box.sides.a, box.sides.b);
        result.height = correctedHeight(box.rawHeight, offset);
    }
    result.corners = std::move(box.corners);
    return result;
}

/// A host may have set any factor: what int cannot hold ends at its limits.
int scaledUp(int smallSide, int downScale) {
    const std::int64_t side = static_cast<std::int64_t>(smallSide) * downScale;
    return static_cast<int>(
        std::clamp<std::int64_t>(side, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

cv::Size pictureSize(const cv::Mat& depthSmall, int downScale) {
    return {scaledUp(depthSmall.cols, downScale), scaledUp(depthSmall.rows, downScale)};
}

}  // namespace

MeasureResult measureFootprint(const cv::Mat& depthSmall, const cv::Mat& cloud, const cv::Vec3f& normal, float offset,
                               float cx, float cy, float fx, float fy, int downScale, bool cameraTypeSet,
                               int cameraType, const cv::Rect& effectiveRegion) {
    const cv::Size image = pictureSize(depthSmall, downScale);
    Box box = findBox(cloud, {normal, offset}, {cx, cy, fx, fy});
    if (!meetsRegion(box, effectiveRegion, image)) {
        return {};
    }
    const float margin = cameraTypeSet ? sideMarginPixels(cameraType, fx, offset, box.rawHeight) : 0.0F;
    const UsableArea area = cameraTypeSet ? pictureWithoutSides(image, margin) : wholePicture(image);
    MeasureResult result = record(std::move(box), offset, area);
    result.onTarget = true;
    result.sideMargin = margin;
    return result;
}

MeasureResult measureFootprintWithoutMargin(const cv::Mat& depthSmall, const cv::Mat& cloud, const cv::Vec3f& normal,
                                            float offset, float cx, float cy, float fx, float fy, int downScale,
                                            const cv::Rect& effectiveRegion) {
    const cv::Size image = pictureSize(depthSmall, downScale);
    Box box = findBox(cloud, {normal, offset}, {cx, cy, fx, fy});
    if (!meetsRegion(box, effectiveRegion, image)) {
        return {};
    }
    return record(std::move(box), offset, wholePicture(image));
}

}  // namespace quorvel::internal
