// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <limits>

#include <opencv2/core.hpp>

#include "support/random.h"

namespace quorvel::test {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// A matrix that is a window of a larger one now and then, so that its rows do not follow one another in memory.
inline cv::Mat drawMatrix(Draws& draws, const cv::Size& size, int type) {
    if (draws.chance(50)) {
        return {size, type, cv::Scalar::all(0)};
    }
    const cv::Mat parent(size.height + 3, size.width + 5, type, cv::Scalar::all(77));
    cv::Mat window = parent(cv::Rect(2, 1, size.width, size.height));
    window.setTo(cv::Scalar::all(0));
    return window;
}

/// A unit normal that leans up to about 40 degrees from the optical axis; exactly (0, 0, 1) now and then.
inline cv::Vec3f drawNormal(Draws& draws) {
    if (draws.chance(20)) {
        return {0.0F, 0.0F, 1.0F};
    }
    const float x = draws.real(-0.6F, 0.6F);
    const float y = draws.chance(20) ? 0.0F : draws.real(-0.6F, 0.6F);
    const float length = std::sqrt(x * x + y * y + 1.0F);
    return {x / length, y / length, 1.0F / length};
}

}  // namespace quorvel::test
