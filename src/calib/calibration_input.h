// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// The corners of a calibration region: top left, bottom left, top right; pixels.
using RegionCorners = std::array<cv::Point, 3>;

/// \param region full-size pixels
/// \return its corners (x, y), (x, y + height), (x + width, y), each coordinate passed through float and rounded back;
///         INT_MIN where int cannot hold it
RegionCorners regionCorners(const cv::Rect& region);

/// \return the pixels of an image strictly inside a region. For a rectangle of positive size that is x < u < x + width
///         and y < v < y + height: the first row and column are left out and the last ones kept, deliberately
///         asymmetric.
cv::Rect insideOf(const RegionCorners& corners, const cv::Size& image);

/// Copies the points strictly inside a region.
/// \param cloud CV_32FC3, mm, not empty
/// \param[out] inside CV_32FC3 of the cloud's size, (0, 0, 0) outside the region and where the cloud's z is 0 or
///             NaN; its storage is used again when it fits and nobody else holds it
void pointsInsideRegion(const cv::Mat& cloud, const RegionCorners& corners, cv::Mat& inside);

/// \return half the region's area in pixels: the fewest points a least-squares fit accepts
float halfRegionArea(const RegionCorners& corners);

/// Smooths a depth image twice with a 5 x 5 Gaussian (border reflected without the edge pixel).
/// \param depth CV_16UC1, mm, not empty; not changed
/// \return CV_16UC1 of the same size; a pixel without depth next to valid ones gets a smoothed, smaller depth
cv::Mat smoothDepth(const cv::Mat& depth);

}  // namespace quorvel::internal
