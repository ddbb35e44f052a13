// SPDX-License-Identifier: Apache-2.0
#include "common/bit_image.h"

#include <bitset>
#include <vector>

#include <gtest/gtest.h>

#include "common/bits.h"
#include "library/measure_draws.h"

namespace quorvel::test {

namespace {

std::uint64_t drawWord(Draws& draws) {
    std::uint64_t word = 0;
    for (int i = 0; i < 4; ++i) {
        word = word << 16 | static_cast<std::uint64_t>(draws.below(65536));
    }
    return draws.chance(50) ? word : word & word << 7 & word >> 9;
}

TEST(Bits, AgreeWithABitset) {
    Draws draws(131);
    for (int run = 0; run < 2000; ++run) {
        const std::uint64_t word = drawWord(draws);
        const std::bitset<64> bits(word);
        EXPECT_EQ(internal::countSetBits(word), static_cast<int>(bits.count())) << word;
        std::vector<int> positions;
        for (std::size_t i = 0; i < bits.size(); ++i) {
            if (bits[i]) {
                positions.push_back(static_cast<int>(i));
            }
        }
        std::vector<int> visited;
        internal::forEachSetBit(word, [&visited](int bit) { visited.push_back(bit); });
        EXPECT_EQ(visited, positions) << word;
        if (word != 0) {
            EXPECT_EQ(internal::lowestSetBit(word), positions.front()) << word;
            EXPECT_EQ(internal::highestSetBit(word), positions.back()) << word;
        }
    }
    EXPECT_EQ(internal::lowestBits(1), 1U);
    EXPECT_EQ(internal::lowestBits(63), ~std::uint64_t{0} >> 1);
    EXPECT_EQ(internal::lowestBits(64), ~std::uint64_t{0});
}

TEST(BitImage, StartsEmptyAndAddressesItsPixels) {
    internal::BitImage image;
    image.reset(3, 130);
    ASSERT_EQ(image.wordsPerRow(), 3);
    image.row(1)[2] = 2;
    EXPECT_TRUE(image.at(1, 129));
    EXPECT_FALSE(image.at(1, 128));
    EXPECT_FALSE(image.at(2, 129));
    image.reset(2, 64);
    EXPECT_EQ(image.rows(), 2);
    EXPECT_EQ(image.columns(), 64);
    EXPECT_EQ(image.wordsPerRow(), 1);
    EXPECT_EQ(image.row(0)[0] | image.row(1)[0], 0U);
}

}  // namespace

}  // namespace quorvel::test
