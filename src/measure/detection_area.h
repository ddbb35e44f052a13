// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Tells whether the top face of a box, drawn into the picture, has a pixel inside a region.
///
/// The corners are rounded to whole pixels (ties to even) and drawn as a filled convex polygon with its outline. Only
/// as much of the picture is drawn as the answer needs. Corners farther out than 2^24 pixels are drawn at that
/// distance: such a face lies within a hair of the lens plane, and drawing it as it stands would take minutes or
/// overflow.
/// \param topFace image positions of the four corners in order, pixels
/// \param region the detection area, pixels; the far row and column are excluded, an empty rectangle has no pixel
/// \param image size of the picture, pixels
bool topFaceMeetsRegion(const std::array<cv::Point2f, 4>& topFace, const cv::Rect& region, const cv::Size& image);

}  // namespace quorvel::internal
