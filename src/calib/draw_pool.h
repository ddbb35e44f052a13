// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <opencv2/core.hpp>

#include "image/bit_image.h"
#include "image/scratch.h"

namespace quorvel::internal {

/// A list of pixels in row-major order, from which entries are taken by position. After each draw the later entries
/// move up by one place.
///
/// The list is stored as an image of bits. The set bits are counted for each word, for every eight words, for every
/// eight of those groups, and so on. These counts lead to the word of an entry in a few steps, for lists of any length.
/// A position gives the same entry as in a vector from which drawn entries are erased.
class DrawPool {
public:
    /// Makes a list of the set bits of an image. Storage is kept and grows only.
    void fill(const BitImage& pixels);

    /// \return the number of entries left
    std::size_t size() const { return left_; }

    /// Takes an entry out.
    /// \param position 0 ... size() - 1 among the entries left
    /// \return the entry
    cv::Point take(std::size_t position);

private:
    static constexpr std::size_t kFanOut = 8;
    static constexpr std::size_t kMostLevels = 12;  ///< 8^12 words are more than any image has

    void addLevel();

    GrowingBuffer<std::uint64_t> wordStorage_;
    GrowingBuffer<std::int32_t> countStorage_;
    std::uint64_t* words_ = nullptr;
    int wordsPerRow_ = 0;
    /// counts_[0] holds the entries of each word, counts_[n + 1] sums eight of counts_[n]; the highest level has at
    /// most eight. Rounded up to whole groups of eight with zeros.
    std::array<std::int32_t*, kMostLevels> counts_{};
    std::array<std::size_t, kMostLevels> sizes_{};
    std::size_t levels_ = 0;
    std::size_t left_ = 0;
};

}  // namespace quorvel::internal
