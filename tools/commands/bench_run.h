// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

namespace quorvel::command {

/// How fast frames of one size were measured; medians, ms.
struct BenchRow {
    cv::Size size;
    std::size_t frames = 0;
    double intakeMilliseconds = 0.0;
    double measureMilliseconds = 0.0;
    double bothMilliseconds = 0.0;
};

/// Measures a simulated parcel again and again, as a host does; leaves no file behind.
/// \param size of the picture, pixels
/// \param seconds how long to measure after the warm-up; some frames are measured in any case
/// \throws InputError when nothing is measured in a picture of this size
BenchRow runBench(const cv::Size& size, ProductType mode, double seconds);

}  // namespace quorvel::command
