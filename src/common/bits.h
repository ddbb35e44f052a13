// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#if defined(_MSC_VER)
#include <intrin.h>
#endif

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

/// \return number of set bits, 0 ... 64
inline int countSetBits(std::uint64_t word) {
    // Sums of 2, 4 and 8 bits side by side; the product adds the eight bytes up.
    word -= (word >> 1) & 0x5555555555555555U;
    word = (word & 0x3333333333333333U) + ((word >> 2) & 0x3333333333333333U);
    word = (word + (word >> 4)) & 0x0F0F0F0F0F0F0F0FU;
    return static_cast<int>((word * 0x0101010101010101U) >> 56);
}

}  // namespace quorvel::internal
