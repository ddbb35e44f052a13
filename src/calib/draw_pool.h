// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// A list of pixels from which entries are taken by position, the later ones moving up one place each time.
///
/// Taking from a plain vector moves everything behind the entry; this keeps a Fenwick tree of the entries still there,
/// so that building is linear and taking costs log2(n) steps, with the same entry for the same position.
class DrawPool {
public:
    /// \param pixels the entries in list order
    explicit DrawPool(std::vector<cv::Point> pixels);

    /// \return the number of entries left
    std::size_t size() const { return left_; }

    /// Takes an entry out.
    /// \param position 0 ... size() - 1 among the entries left
    /// \return the entry
    cv::Point take(std::size_t position);

private:
    std::vector<cv::Point> pixels_;
    /// tree_[i] counts the entries left among the lowbit(i) entries that end at entry i (1-based).
    std::vector<int> tree_;
    std::size_t left_;
    std::size_t topStep_ = 1;
};

}  // namespace quorvel::internal
