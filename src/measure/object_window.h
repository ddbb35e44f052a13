// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Bounds a mask; OpenCV 4.6's boundingRect loses the last columns of some narrow masks.
/// \return the smallest rectangle around the pixels that are not 0; empty without any
cv::Rect maskBounds(const cv::Mat& mask);

/// \return a rectangle with a margin of one pixel, as far as the image allows; with an empty rectangle, the first
///         pixel of the image
cv::Rect withMargin(const cv::Rect& rectangle, const cv::Size& image);

/// Scales the object's mask up to full size, clears every point of the cloud that does not lie wholly in it, and
/// returns where the remaining points are.
///
/// The mask grows by area interpolation, which leaves 255 only where a pixel lies wholly in the object.
/// \param mask CV_8UC1, small size
/// \param[in,out] cloud CV_32FC3, full size, mm
/// \return a rectangle of the cloud that holds all points that are left and, inside the image, a margin of one pixel
///         without points. So it also holds all neighbours of these points.
cv::Rect isolateObject(const cv::Mat& mask, cv::Mat& cloud);

}  // namespace quorvel::internal
