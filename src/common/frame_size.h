// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

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

}  // namespace quorvel::internal
