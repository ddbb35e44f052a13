// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Gives an image of this size and type that nobody else holds: its own storage when it has it already, else fresh
/// storage. The host may keep any image that it took from a ruler; its pixels are never written again.
/// \param[in,out] image afterwards continuous; its pixels hold anything
inline void createExclusive(cv::Mat& image, const cv::Size& size, int type) {
    const bool fits = image.data != nullptr && image.dims == 2 && image.size() == size && image.type() == type &&
                      image.isContinuous();
    // Adding nothing reads the count as other threads' holders change it.
    if (fits && image.u != nullptr && CV_XADD(&image.u->refcount, 0) == 1) {
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
