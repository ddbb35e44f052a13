// SPDX-License-Identifier: Apache-2.0
#include "calib/draw_pool.h"

#include <algorithm>

#include "image/bit_image.h"

namespace quorvel::internal {

namespace {

constexpr std::uint64_t kTopBits = 0x8080808080808080U;
constexpr int kByteBits = 8;

/// \param k 0 ... number of set bits - 1
/// \return the k-th lowest set bit of a word, alone
std::uint64_t kthSetBit(std::uint64_t word, int k) {
    const std::uint64_t counts = setBitsUpToByte(word);
    // A byte keeps its top bit where its count is at most k: the bit sought lies in a later byte. No byte borrows from
    // the next one, because every byte of the left side is at least 128 and no count is above 64.
    const std::uint64_t passed = ((static_cast<std::uint64_t>(k) * kEveryByte | kTopBits) - counts) & kTopBits;
    const auto shift = static_cast<int>(((passed >> (kByteBits - 1)) * kEveryByte) >> 56) * kByteBits;
    const auto before = static_cast<int>(((counts << kByteBits) >> shift) & 0xFFU);
    std::uint64_t rest = word >> shift;
    for (int i = before; i < k; ++i) {
        rest &= rest - 1;
    }
    return (rest & (~rest + 1)) << shift;
}

std::size_t groupsOf(std::size_t size, std::size_t count) {
    return (count + size - 1) / size;
}

}  // namespace

void DrawPool::fill(const BitImage& pixels) {
    const auto words = static_cast<std::size_t>(pixels.words());
    const std::size_t rounded = groupsOf(kFanOut, words) * kFanOut;
    wordsPerRow_ = pixels.wordsPerRow();
    words_ = wordStorage_.atLeast(rounded);
    // Room for the counts of the words, and for the sums: a seventh as many, plus one group for each level.
    counts_[0] = countStorage_.atLeast(rounded + rounded / (kFanOut - 1) + kFanOut * kMostLevels);
    sizes_[0] = rounded;
    left_ = 0;
    for (std::size_t i = 0; i < words; ++i) {
        words_[i] = pixels.row(0)[i];
        counts_[0][i] = countSetBits(words_[i]);
        left_ += static_cast<std::size_t>(counts_[0][i]);
    }
    std::fill(counts_[0] + words, counts_[0] + rounded, 0);
    for (levels_ = 1; sizes_[levels_ - 1] > kFanOut;) {
        addLevel();
    }
}

void DrawPool::addLevel() {
    const std::int32_t* below = counts_[levels_ - 1];
    const std::size_t groups = sizes_[levels_ - 1] / kFanOut;
    const std::size_t rounded = groupsOf(kFanOut, groups) * kFanOut;
    std::int32_t* const sums = counts_[levels_ - 1] + sizes_[levels_ - 1];
    for (std::size_t i = 0; i < groups; ++i, below += kFanOut) {
        sums[i] = (below[0] + below[1] + below[2] + below[3]) + (below[4] + below[5] + below[6] + below[7]);
    }
    std::fill(sums + groups, sums + rounded, 0);
    counts_[levels_] = sums;
    sizes_[levels_] = rounded;
    ++levels_;
}

cv::Point DrawPool::take(std::size_t position) {
    auto toSkip = static_cast<std::int32_t>(position);
    std::size_t index = 0;
    for (std::size_t level = levels_; level > 0; --level) {
        std::int32_t* const counts = counts_[level - 1];
        index *= kFanOut;
        for (; toSkip >= counts[index]; ++index) {
            toSkip -= counts[index];
        }
        --counts[index];
    }
    const std::uint64_t bit = kthSetBit(words_[index], toSkip);
    words_[index] ^= bit;
    --left_;
    const auto word = static_cast<int>(index);
    return {word % wordsPerRow_ * 64 + lowestSetBit(bit), word / wordsPerRow_};
}

}  // namespace quorvel::internal
