// SPDX-License-Identifier: Apache-2.0
#include "calib/draw_pool.h"

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "support/random.h"

namespace quorvel::test {

namespace {

using internal::DrawPool;

/// An image in which `percent` of the pixels, or all, are set.
internal::BitImage someBits(Draws& random, int rows, int columns, int percent) {
    internal::BitImage image;
    image.reset(rows, columns);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            if (random.chance(percent)) {
                image.row(row)[column / 64] |= std::uint64_t{1} << (column % 64);
            }
        }
    }
    return image;
}

std::vector<cv::Point> listOf(const internal::BitImage& image) {
    std::vector<cv::Point> list;
    for (int row = 0; row < image.rows(); ++row) {
        for (int column = 0; column < image.columns(); ++column) {
            if (image.at(row, column)) {
                list.emplace_back(column, row);
            }
        }
    }
    return list;
}

/// Takes `draws` entries, or all, from a pool and from a vector with erase, and compares every one.
template <typename NextPosition>
void expectSameDraws(DrawPool& pool, const internal::BitImage& image, std::size_t draws, NextPosition nextPosition) {
    std::vector<cv::Point> list = listOf(image);
    pool.fill(image);
    for (std::size_t draw = 0; draw < draws && !list.empty(); ++draw) {
        ASSERT_EQ(pool.size(), list.size()) << "before draw " << draw;
        const std::size_t position = nextPosition(list.size());
        const auto entry = list.begin() + static_cast<std::ptrdiff_t>(position);
        ASSERT_EQ(pool.take(position), *entry) << "draw " << draw << ", position " << position;
        list.erase(entry);
    }
    EXPECT_EQ(pool.size(), list.size());
}

TEST(DrawPool, LaterEntriesMoveUp) {
    Draws random(90);
    DrawPool pool;
    pool.fill(someBits(random, 2, 2, 100));
    EXPECT_EQ(pool.take(1), cv::Point(1, 0));
    EXPECT_EQ(pool.take(1), cv::Point(0, 1));
    EXPECT_EQ(pool.take(1), cv::Point(1, 1));
    EXPECT_EQ(pool.take(0), cv::Point(0, 0));
    EXPECT_EQ(pool.size(), 0U);
}

TEST(DrawPool, AnEmptyListHasNothingToTake) {
    Draws random(90);
    DrawPool pool;
    EXPECT_EQ(pool.size(), 0U);
    pool.fill(someBits(random, 30, 70, 0));
    EXPECT_EQ(pool.size(), 0U);
    pool.fill(someBits(random, 0, 0, 100));
    EXPECT_EQ(pool.size(), 0U);
}

TEST(DrawPool, LeavesTheImage) {
    Draws random(90);
    const internal::BitImage image = someBits(random, 3, 70, 100);
    DrawPool pool;
    pool.fill(image);
    pool.take(100);
    EXPECT_EQ(listOf(image).size(), 210U);
}

TEST(DrawPool, EmptiesEverySizeFromTheFrontTheBackAndTheMiddle) {
    Draws random(93);
    DrawPool pool;
    for (int count = 1; count <= 130; ++count) {
        const internal::BitImage image = someBits(random, 1, count, 100);
        expectSameDraws(pool, image, 130, [](std::size_t) { return std::size_t{0}; });
        expectSameDraws(pool, image, 130, [](std::size_t left) { return left - 1; });
        expectSameDraws(pool, image, 130, [](std::size_t left) { return left / 2; });
    }
}

TEST(DrawPool, DrawsAsAVectorWithErase) {
    Draws random(91);
    DrawPool pool;
    for (int i = 0; i < 2000; ++i) {
        const int columns = random.between(1, random.chance(10) ? 200 : 20);
        const int rows = random.between(1, 20);
        const int percent = random.chance(20) ? 100 : random.between(1, 100);
        const internal::BitImage image = someBits(random, rows, columns, percent);
        expectSameDraws(pool, image, 400, [&random](std::size_t left) {
            return static_cast<std::size_t>(random.below(static_cast<int>(left)));
        });
    }
}

TEST(DrawPool, DrawsAsAVectorWithEraseFromALongList) {
    Draws random(92);
    DrawPool pool;
    for (const cv::Size& size : {cv::Size(32767, 1), cv::Size(1, 32769), cv::Size(250, 200), cv::Size(640, 480)}) {
        for (const int percent : {100, 3}) {
            expectSameDraws(
                pool, someBits(random, size.height, size.width, percent), 1500,
                [&random](std::size_t left) { return static_cast<std::size_t>(random.below(32768)) % left; });
        }
    }
}

}  // namespace

}  // namespace quorvel::test
