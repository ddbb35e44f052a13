// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "common/bits.h"
#include "common/growing_buffer.h"

namespace quorvel::internal {

/// Pixels of one word of a BitImage.
constexpr int kWordBits = 64;

/// Number of 64-bit words that hold one bit for each of `columns` pixels.
inline int wordsFor(int columns) {
    return (columns + kWordBits - 1) / kWordBits;
}

/// One bit a pixel: the pixel in column c is bit c % 64 of word c / 64 of its row. Bits beyond the last column are 0.
class BitImage {
public:
    /// Sizes the image and clears it. Storage is kept and grows only.
    void reset(int rows, int columns) {
        rows_ = rows;
        columns_ = columns;
        words_ = wordsFor(columns);
        const std::size_t total = static_cast<std::size_t>(rows) * static_cast<std::size_t>(words_);
        data_ = storage_.atLeast(total);
        std::fill(data_, data_ + total, std::uint64_t{0});
    }

    int rows() const { return rows_; }
    int columns() const { return columns_; }
    int wordsPerRow() const { return words_; }
    std::uint64_t* row(int index) { return data_ + offset(index); }
    const std::uint64_t* row(int index) const { return data_ + offset(index); }

    bool at(int rowIndex, int column) const {
        return (row(rowIndex)[column / kWordBits] >> (column % kWordBits) & 1U) != 0;
    }

private:
    std::size_t offset(int index) const { return static_cast<std::size_t>(index) * static_cast<std::size_t>(words_); }

    GrowingBuffer<std::uint64_t> storage_;
    std::uint64_t* data_ = nullptr;
    int rows_ = 0;
    int columns_ = 0;
    int words_ = 0;
};

/// Calls `visit(position)` for every set bit of a word, lowest first.
template <typename Visit>
void forEachSetBit(std::uint64_t word, Visit visit) {
    for (; word != 0; word &= word - 1) {
        visit(lowestSetBit(word));
    }
}

/// Appends the values at the set bits of a word.
/// \param values kWordBits of them
/// \param end of the list, which has room
/// \return its new end
inline float* appendChosen(const float* values, std::uint64_t bits, float* end) {
    if (bits == ~std::uint64_t{0}) {
        return std::copy(values, values + kWordBits, end);
    }
    forEachSetBit(bits, [&](int bit) { *end++ = values[bit]; });
    return end;
}

}  // namespace quorvel::internal
