// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

namespace quorvel::internal {

/// Computes box, sizes and flags from the points of an isolated object.
///
/// The footprint is the minimum-area rectangle of the points projected onto the plane, in whole mm. Its sides are
/// corrected by the box's orientation in the picture, the height (the 0.99 quantile) by the camera's distance.
/// \param depthSmall only its rows and columns are used: times `downScale` they are the picture's size
/// \param cloud CV_32FC3 at full size, mm, (0, 0, 0) = no point
/// \param normal,offset the plane; the normal is used as given
/// \param cx,cy,fx,fy full-size intrinsics, pixels
/// \param downScale factor between full and small images
/// \param cameraTypeSet keep a band clear at the left and right edge of the picture
/// \param cameraType width of that band at the object's top, mm
/// \param effectiveRegion the detection area, full-size pixels
/// \return the record; empty with fewer than 4 points and when the top face misses the detection area; with corners
///         but zero sizes when a corner leaves the usable picture
MeasureResult measureFootprint(const cv::Mat& depthSmall, const cv::Mat& cloud, const cv::Vec3f& normal, float offset,
                               float cx, float cy, float fx, float fy, int downScale, bool cameraTypeSet,
                               int cameraType, const cv::Rect& effectiveRegion);

/// As measureFootprint, without the side band; `onTarget` stays false and `sideMargin` 0.
MeasureResult measureFootprintWithoutMargin(const cv::Mat& depthSmall, const cv::Mat& cloud, const cv::Vec3f& normal,
                                            float offset, float cx, float cy, float fx, float fy, int downScale,
                                            const cv::Rect& effectiveRegion);

}  // namespace quorvel::internal
