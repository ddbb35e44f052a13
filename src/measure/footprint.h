// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include <opencv2/core.hpp>

#include "geometry/camera.h"
#include "geometry/plane_model.h"
#include "measure/box_geometry.h"
#include "measure/detection_area.h"

namespace quorvel::internal {

/// What a footprint is measured with.
struct FootprintSettings {
    Plane plane;                  ///< the normal is used as given
    Projection camera;            ///< full size
    cv::Size picture;             ///< full size, pixels
    std::optional<int> sideBand;  ///< keep a band clear at the left and right edge: its width at the object's top, mm
    cv::Rect detectionArea;       ///< full-size pixels
};

/// A box around an object's points.
struct Box {
    FootprintCorners footprint{};      ///< the smallest rectangle around the feet of the points, on the plane
    float topDistance = 0.0F;          ///< signed distance of the farthest point, mm; negative towards the camera
    std::vector<cv::Point2f> corners;  ///< eight image positions, ground before top, wherever they lie; pixels
    Sides rawSides;                    ///< of the rectangle
    Sides sides;                       ///< corrected by the box's orientation in the picture
    float rawHeight = 0.0F;            ///< 0.99 quantile of the heights, mm
    float height = 0.0F;               ///< corrected by the camera's distance, mm
};

/// What the footprint stage found.
struct Footprint {
    std::size_t points = 0;   ///< of the object
    std::optional<Box> box;   ///< none with fewer than kLeastFootprintPoints points, or no rectangle around them
    bool meetsArea = false;   ///< the top face has a pixel in the detection area
    bool onTarget = false;    ///< as `meetsArea`, in the variant that tells
    float sideMargin = 0.0F;  ///< width of the band that counts as outside, pixels; 0 when not used
    UsableArea usable;        ///< where the corners have to lie
    bool inView = false;      ///< the box meets the area and all its corners lie in the usable picture
    Sizes sizes;              ///< 0 unless in view
};

/// A rectangle needs this many points.
constexpr std::size_t kLeastFootprintPoints = 4;

/// \param small size of the small images, pixels
/// \param downScale factor between full and small images; a host may have set any: what int cannot hold ends at its
///        limits
/// \return the size of the picture, pixels
cv::Size pictureSize(const cv::Size& small, int downScale);

/// Computes box, sizes and flags from the points of an isolated object.
///
/// The footprint is the minimum-area rectangle of the points projected onto the plane, in whole mm. Its sides are
/// corrected by the box's orientation in the picture, the height (the 0.99 quantile) by the camera's distance.
/// \param cloud CV_32FC3 at full size, mm, (0, 0, 0) = no point
Footprint measureFootprint(const cv::Mat& cloud, const FootprintSettings& settings);

/// As measureFootprint, without the side band; `onTarget` stays false and `sideMargin` 0.
Footprint measureFootprintWithoutMargin(const cv::Mat& cloud, const FootprintSettings& settings);

}  // namespace quorvel::internal
