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

// Under Clang OpenCV's macro is made of C's atomics.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wc11-extensions"
#endif

/// Reads a count of holders atomically, because holders on other threads may change it: adds 0.
inline int atomicCount(int& count) {
    return CV_XADD(&count, 0);
}

#if defined(__clang__)
#pragma clang diagnostic pop
#endif

/// \return whether nobody else holds the image's pixels and OpenCV gave their storage: neither a host's own memory nor
///         that of a host's own allocator, which may have holders that OpenCV does not count
inline bool isExclusive(const cv::Mat& image) {
    return image.data != nullptr && image.u != nullptr && atomicCount(image.u->refcount) == 1 &&
           atomicCount(image.u->urefcount) == 0 && image.u->currAllocator == cv::Mat::getDefaultAllocator() &&
           (image.u->flags & cv::UMatData::USER_ALLOCATED) == 0;
}

/// Makes `image` an image of this size and type whose pixels nobody else holds. Its storage is kept when it fits and
/// has no other holder; otherwise the image gets new storage. So a host may keep any image that it took from a ruler:
/// the library never writes into pixels that somebody else holds.
/// \param[in,out] image continuous afterwards; the values of its pixels are undefined
inline void createExclusive(cv::Mat& image, const cv::Size& size, int type) {
    if (hasForm(image, size, type) && image.isContinuous() && isExclusive(image)) {
        return;
    }
    image.release();
    image.create(size, type);
}

/// Deep copy into storage that nobody else holds.
/// \param from two-dimensional, not empty
inline void copyExclusive(const cv::Mat& from, cv::Mat& to) {
    createExclusive(to, from.size(), from.type());
    from.copyTo(to);
}

}  // namespace quorvel::internal
