// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "measure/plane_basis.h"

namespace quorvel::internal {

/// What the footprint needs of an object's points.
struct ObjectPoints {
    std::vector<float> heights;        ///< distance of every point from the plane, mm
    std::vector<cv::Point> footprint;  ///< every point on the plane, whole mm in plane coordinates
    float largestDistance = 0.0F;      ///< signed distance of the farthest point, mm; the first of equal ones
};

/// Collects the valid points of a cloud in row-major order.
/// \param cloud CV_32FC3, mm
ObjectPoints collectObjectPoints(const cv::Mat& cloud, const cv::Vec3f& normal, float offset, const PlaneBasis& basis);

/// The value at index trunc(0.99 n) of the ascending heights, found by selection.
/// \param heights at least one; reordered. NaN counts as larger than any number.
float heightQuantile(std::vector<float>& heights);

}  // namespace quorvel::internal
