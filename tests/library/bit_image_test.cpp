// SPDX-License-Identifier: Apache-2.0
#include "image/bit_image.h"

#include <bitset>
#include <vector>

#include <gtest/gtest.h>

#include "support/random.h"

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

TEST(Bits, CountUpToEveryByte) {
    EXPECT_EQ(internal::setBitsUpToByte(0x8000000000000103U), 0x0403030303030302U);
    EXPECT_EQ(internal::setBitsUpToByte(~std::uint64_t{0}), 0x4038302820181008U);
}

TEST(BitImage, ShowsEveryPixelItsNeighboursAcrossWords) {
    Draws draws(132);
    constexpr int kWords = 3;
    for (int run = 0; run < 200; ++run) {
        std::vector<std::uint64_t> row;
        for (int word = 0; word < kWords; ++word) {
            row.push_back(drawWord(draws));
        }
        const auto at = [&row](int column) {
            return column >= 0 && column < 64 * kWords &&
                   (row[static_cast<std::size_t>(column / 64)] >> (column % 64) & 1U) != 0;
        };
        for (int column = 0; column < 64 * kWords; ++column) {
            const std::uint64_t left = internal::fromLeft(row.data(), column / 64);
            const std::uint64_t right = internal::fromRight(row.data(), column / 64, kWords);
            ASSERT_EQ((left & internal::bitOf(column)) != 0, at(column - 1)) << column;
            ASSERT_EQ((right & internal::bitOf(column)) != 0, at(column + 1)) << column;
        }
    }
}

TEST(BitImage, FindsTheNextBitOfAValueInARow) {
    Draws draws(133);
    for (int run = 0; run < 300; ++run) {
        const int columns = 1 + draws.below(200);
        std::vector<std::uint64_t> row(static_cast<std::size_t>(internal::wordsFor(columns)));
        // Whole words of one value as well, so that the search passes over them.
        for (std::uint64_t& word : row) {
            word = draws.chance(50) ? drawWord(draws) : ~std::uint64_t{0} * static_cast<std::uint64_t>(draws.below(2));
        }
        if (columns % internal::kWordBits != 0) {
            row.back() &= internal::lowestBits(columns % internal::kWordBits);
        }
        for (const bool value : {false, true}) {
            for (int from = 0; from <= columns; ++from) {
                int expected = from;
                while (expected < columns && ((row[static_cast<std::size_t>(expected / internal::kWordBits)] &
                                               internal::bitOf(expected)) != 0) != value) {
                    ++expected;
                }
                ASSERT_EQ(internal::nextBit(row.data(), from, columns, value), expected)
                    << value << " from " << from << " of " << columns;
            }
        }
    }
}

TEST(BitImage, SetsOneBit) {
    std::vector<std::uint64_t> row(2);
    internal::setBit(row.data(), 3);
    internal::setBit(row.data(), 64);
    EXPECT_EQ(row, (std::vector<std::uint64_t>{8, 1}));
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
