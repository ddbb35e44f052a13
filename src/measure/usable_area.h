// SPDX-License-Identifier: Apache-2.0
#pragma once

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

/// \return whether every corner lies in the area; a NaN corner does not
bool allInside(const std::vector<cv::Point2f>& corners, const UsableArea& area);

}  // namespace quorvel::internal
