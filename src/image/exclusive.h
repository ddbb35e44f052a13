// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include "image/image_form.h"

namespace quorvel::internal {

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
