// SPDX-License-Identifier: Apache-2.0
#include "soak/digest.h"

namespace quorvel::soak {

void Digest::addBytes(const void* bytes, std::size_t count) {
    constexpr std::uint64_t kPrime = 1099511628211U;
    const auto* const from = static_cast<const unsigned char*>(bytes);
    for (std::size_t i = 0; i < count; ++i) {
        value_ = (value_ ^ from[i]) * kPrime;
    }
}

void Digest::add(const MeasureResult& result) {
    for (const cv::Point2f& corner : result.corners) {
        add(corner.x);
        add(corner.y);
    }
    for (const float value : {result.length, result.width, result.height, result.sideMargin}) {
        add(value);
    }
    add(result.inView ? 1 : 0);
    add(result.onTarget ? 1 : 0);
}

void Digest::add(const cv::Mat& image) {
    add(image.type());
    for (int row = 0; row < image.rows; ++row) {
        addBytes(image.ptr(row), static_cast<std::size_t>(image.cols) * image.elemSize());
    }
}

}  // namespace quorvel::soak
