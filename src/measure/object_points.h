// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include <opencv2/core.hpp>

#include "geometry/plane_model.h"
#include "image/scratch.h"

namespace quorvel::internal {

/// What the footprint needs of an object's points. One value is used for many objects, so that its storage is kept.
struct ObjectPoints {
    GrowingBuffer<float> heights;  ///< distance of every point from the plane, in row-major order, mm
    std::size_t count = 0;         ///< of the heights
    /// On the plane, whole mm in plane coordinates: every point that can be a corner of the convex hull, and some more,
    /// in row-major order.
    std::vector<cv::Point> outline;
    float largestDistance = 0.0F;  ///< signed distance of the farthest point, mm; the first of equal ones
};

/// Collects the valid points of a cloud.
///
/// Points inside an octagon of other points are left out of the outline. They are neither corners of the convex hull
/// nor on its edges, so the hull of the outline is the hull of all points, with its corners in the same order. Of a box
/// of 55000 points about 900 are left, and their minimum-area rectangle takes 0.02 ms.
/// \param cloud CV_32FC3, mm
/// \param[in,out] object replaced
void collectObjectPoints(const cv::Mat& cloud, const cv::Vec3f& normal, float offset, const PlaneBasis& basis,
                         ObjectPoints& object);

/// The value at index trunc(0.99 n) of the ascending heights.
/// \param heights `count` of them, at least one, none negative. NaN counts as larger than any number.
float heightQuantile(const float* heights, std::size_t count);

}  // namespace quorvel::internal
