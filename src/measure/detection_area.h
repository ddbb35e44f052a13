// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <vector>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// The part of the picture in which all corners of a box must lie; bounds inclusive, pixels.
struct UsableArea {
    float left = 0.0F;
    float right = 0.0F;
    float top = 0.0F;
    float bottom = 0.0F;
};

/// \return the whole picture, its far edges x = width and y = height included
UsableArea wholePicture(const cv::Size& image);

/// \return the picture without a band of `margin` pixels at the left and right edge, the bounds truncated to whole
///         pixels
UsableArea pictureWithoutSides(const cv::Size& image, float margin);

/// Width in pixels of a band of `cameraType` mm at the object's top, times 1.3: cameraType fx / (t - h) 1.3.
/// \param cameraType mm
/// \param fx focal length, pixels
/// \param offset distance t of the plane, mm
/// \param height the object's height h (0.99 quantile, not corrected), mm
float sideMarginPixels(int cameraType, float fx, float offset, float height);

/// \return whether a corner lies in the area; a NaN corner does not
bool isInside(const cv::Point2f& corner, const UsableArea& area);

/// \return whether every corner lies in the area; a NaN corner does not
bool allInside(const std::vector<cv::Point2f>& corners, const UsableArea& area);

/// Tells whether the top face of a box, drawn into the picture, has a pixel inside a region.
///
/// The corners are rounded to whole pixels (ties to even) and drawn as a filled convex polygon with its outline. Only
/// the polygon's part of the picture is drawn. A coordinate that does not fit int becomes INT_MIN. Coordinates beyond
/// +-2^24 pixels are moved to that limit: such a face lies almost in the plane of the lens, and drawing it unchanged
/// would take minutes or overflow.
/// \param topFace image positions of the four corners in order, pixels
/// \param region the detection area, pixels; the far row and column are excluded, an empty rectangle has no pixel
/// \param image size of the picture, pixels. The result is false when a side is 0 or negative, and when the face's part
///        of the picture is larger than a frame can be (isFrameSize()), because a host may set a picture of any size.
bool topFaceMeetsRegion(const std::array<cv::Point2f, 4>& topFace, const cv::Rect& region, const cv::Size& image);

}  // namespace quorvel::internal
