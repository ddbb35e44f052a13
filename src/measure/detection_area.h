// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Tells whether the top face of a box, drawn into the picture, has a pixel inside a region.
///
/// The corners are rounded to whole pixels (ties to even) and drawn as a filled convex polygon with its outline. Only
/// the polygon's part of the picture is drawn. A coordinate that int cannot hold counts as INT_MIN, and coordinates
/// beyond
/// +-2^24 pixels are drawn there: such a face lies within a hair of the lens plane, and drawing it as it stands would
/// take minutes or overflow.
/// \param topFace image positions of the four corners in order, pixels
/// \param region the detection area, pixels; the far row and column are excluded, an empty rectangle has no pixel
/// \param image size of the picture, pixels; no pixel when a side is 0 or negative. A host may claim a picture of any
///        size: no pixel either when the face's part of it is larger than a frame can be, see isFrameSize()
bool topFaceMeetsRegion(const std::array<cv::Point2f, 4>& topFace, const cv::Rect& region, const cv::Size& image);

}  // namespace quorvel::internal
