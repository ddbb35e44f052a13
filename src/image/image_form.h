// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Longest side of a frame, pixels; the widest line cameras have 16384.
constexpr int kLargestFrameSide = 1 << 15;
/// Most pixels of a frame: 67 million, five times as many as the largest depth cameras have. A point cloud of 12 bytes
/// a pixel stays below 2^30 bytes, so that int holds every count and offset of the stages with room to spare.
constexpr int kMostFramePixels = 1 << 26;

/// \param width,height pixels
/// \return whether a frame may have this size: neither side is 0, negative or too long, and the pixels are not too many
inline bool isFrameSize(int width, int height) {
    return width > 0 && height > 0 && width <= kLargestFrameSide && height <= kLargestFrameSide &&
           std::int64_t{width} * height <= kMostFramePixels;
}

/// \return whether an image has pixels and two dimensions
inline bool isPicture(const cv::Mat& image) {
    return image.dims == 2 && !image.empty();
}

/// \return whether an image has pixels and exactly this size and type
inline bool hasForm(const cv::Mat& image, const cv::Size& size, int type) {
    return isPicture(image) && image.rows == size.height && image.cols == size.width && image.type() == type;
}

/// \return whether one of the two images of an instant has no rows
inline bool isEmptyFrame(const cv::Mat& color, const cv::Mat& depth) {
    return color.rows == 0 || depth.rows == 0;
}

}  // namespace quorvel::internal
