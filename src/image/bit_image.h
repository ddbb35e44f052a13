// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#if defined(_MSC_VER)
#include <intrin.h>
#endif

#include "image/scratch.h"

namespace quorvel::internal {

/// \param word not 0
/// \return position of the lowest set bit, 0 ... 63
inline int lowestSetBit(std::uint64_t word) {
#if defined(_MSC_VER)
    unsigned long position = 0;
    _BitScanForward64(&position, word);
    return static_cast<int>(position);
#else
    return __builtin_ctzll(word);
#endif
}

/// \param word not 0
/// \return position of the highest set bit, 0 ... 63
inline int highestSetBit(std::uint64_t word) {
#if defined(_MSC_VER)
    unsigned long position = 0;
    _BitScanReverse64(&position, word);
    return static_cast<int>(position);
#else
    return 63 - __builtin_clzll(word);
#endif
}

/// \param count 1 ... 64
/// \return a word with that many of its lowest bits set
inline std::uint64_t lowestBits(int count) {
    return ~std::uint64_t{0} >> (64 - count);
}

/// A word with 1 in each of its eight bytes.
constexpr std::uint64_t kEveryByte = 0x0101010101010101U;

/// \return a word whose byte i, the lowest first, is the number of set bits in bytes 0 ... i
inline std::uint64_t setBitsUpToByte(std::uint64_t word) {
    // Sums of 2, 4 and 8 bits side by side; the product adds the bytes up.
    word -= (word >> 1) & 0x5555555555555555U;
    word = (word & 0x3333333333333333U) + ((word >> 2) & 0x3333333333333333U);
    word = (word + (word >> 4)) & 0x0F0F0F0F0F0F0F0FU;
    return word * kEveryByte;
}

/// \return number of set bits, 0 ... 64
inline int countSetBits(std::uint64_t word) {
    return static_cast<int>(setBitsUpToByte(word) >> 56);
}

/// Pixels of one word of a BitImage.
constexpr int kWordBits = 64;

/// Number of 64-bit words that hold one bit for each of `columns` pixels.
inline int wordsFor(int columns) {
    return (columns + kWordBits - 1) / kWordBits;
}

/// \return the pixel's bit in its word
inline std::uint64_t bitOf(int column) {
    return std::uint64_t{1} << (column % kWordBits);
}

inline void setBit(std::uint64_t* row, int column) {
    row[column / kWordBits] |= bitOf(column);
}

/// The word whose bit c is bit c - 1 of the row: what each pixel's left neighbour has.
inline std::uint64_t fromLeft(const std::uint64_t* row, int word) {
    return row[word] << 1 | (word > 0 ? row[word - 1] >> (kWordBits - 1) : 0U);
}

/// The word whose bit c is bit c + 1 of the row: what each pixel's right neighbour has.
inline std::uint64_t fromRight(const std::uint64_t* row, int word, int words) {
    return row[word] >> 1 | (word + 1 < words ? row[word + 1] << (kWordBits - 1) : 0U);
}

/// \return the first column at or after `from` whose bit has this value, `columns` when there is none: from a column of
///         a run of set bits, the next clear bit is the run's end
inline int nextBit(const std::uint64_t* row, int from, int columns, bool value) {
    for (int column = from; column < columns;) {
        const std::uint64_t word = row[column / kWordBits];
        const std::uint64_t rest = (value ? word : ~word) >> (column % kWordBits);
        if (rest != 0) {
            return std::min(column + lowestSetBit(rest), columns);
        }
        column += kWordBits - column % kWordBits;
    }
    return columns;
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
    /// Words of all rows, which stand one behind the other from row(0) on.
    int words() const { return rows_ * words_; }
    std::uint64_t* row(int index) { return data_ + offset(index); }
    const std::uint64_t* row(int index) const { return data_ + offset(index); }

    bool at(int rowIndex, int column) const { return (row(rowIndex)[column / kWordBits] & bitOf(column)) != 0; }

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
