// SPDX-License-Identifier: Apache-2.0
#include "calib/draw_pool.h"

#include <utility>

namespace quorvel::internal {

namespace {

std::size_t lowestBit(std::size_t value) {
    return value & (~value + 1);
}

}  // namespace

DrawPool::DrawPool(std::vector<cv::Point> pixels)
    : pixels_(std::move(pixels)), tree_(pixels_.size() + 1), left_(pixels_.size()) {
    for (std::size_t i = 1; i < tree_.size(); ++i) {
        tree_[i] = static_cast<int>(lowestBit(i));
    }
    while (topStep_ * 2 < tree_.size()) {
        topStep_ *= 2;
    }
}

cv::Point DrawPool::take(std::size_t position) {
    // Descends to the last node before the entry, counting off the entries left on the way; every node that is not
    // stepped over covers the entry and loses one.
    auto toSkip = static_cast<int>(position);
    std::size_t before = 0;
    for (std::size_t step = topStep_; step > 0; step /= 2) {
        const std::size_t node = before + step;
        if (node >= tree_.size()) {
            continue;
        }
        if (tree_[node] <= toSkip) {
            toSkip -= tree_[node];
            before = node;
        } else {
            --tree_[node];
        }
    }
    --left_;
    return pixels_[before];
}

}  // namespace quorvel::internal
