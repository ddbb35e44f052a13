// SPDX-License-Identifier: Apache-2.0
#include "calib/draw_pool.h"

#include <vector>

#include <gtest/gtest.h>

#include "library/calib_support.h"

namespace quorvel::test {

namespace {

using internal::DrawPool;

std::vector<cv::Point> numbered(int count) {
    std::vector<cv::Point> pixels;
    pixels.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        pixels.emplace_back(i, -i);
    }
    return pixels;
}

/// Takes `draws` entries from a pool and from a vector with erase, and compares every one.
template <typename NextPosition>
void expectSameDraws(int count, int draws, NextPosition nextPosition) {
    std::vector<cv::Point> list = numbered(count);
    DrawPool pool(list);
    for (int draw = 0; draw < draws; ++draw) {
        ASSERT_EQ(pool.size(), list.size()) << "before draw " << draw << " of " << count;
        const std::size_t position = nextPosition(list.size());
        const auto entry = list.begin() + static_cast<std::ptrdiff_t>(position);
        ASSERT_EQ(pool.take(position), *entry) << "draw " << draw << ", position " << position << " of " << count;
        list.erase(entry);
    }
    EXPECT_EQ(pool.size(), list.size());
}

TEST(DrawPool, LaterEntriesMoveUp) {
    DrawPool pool(numbered(4));
    EXPECT_EQ(pool.take(1), cv::Point(1, -1));
    EXPECT_EQ(pool.take(1), cv::Point(2, -2));
    EXPECT_EQ(pool.take(1), cv::Point(3, -3));
    EXPECT_EQ(pool.take(0), cv::Point(0, 0));
    EXPECT_EQ(pool.size(), 0U);
}

TEST(DrawPool, AnEmptyListHasNothingToTake) {
    EXPECT_EQ(DrawPool({}).size(), 0U);
}

TEST(DrawPool, HandsOutWhateverTheListHolds) {
    DrawPool pool({{5, 5}, {5, 5}, {-1, 2}});
    EXPECT_EQ(pool.take(2), cv::Point(-1, 2));
    EXPECT_EQ(pool.take(0), cv::Point(5, 5));
    EXPECT_EQ(pool.take(0), cv::Point(5, 5));
}

TEST(DrawPool, EmptiesEverySizeFromTheFrontTheBackAndTheMiddle) {
    for (int count = 1; count <= 130; ++count) {
        expectSameDraws(count, count, [](std::size_t) { return std::size_t{0}; });
        expectSameDraws(count, count, [](std::size_t left) { return left - 1; });
        expectSameDraws(count, count, [](std::size_t left) { return left / 2; });
    }
}

TEST(DrawPool, DrawsAsAVectorWithErase) {
    calib::Random random(91);
    const auto anyPosition = [&random](std::size_t left) {
        return static_cast<std::size_t>(random.below(static_cast<int>(left)));
    };
    for (int i = 0; i < 300; ++i) {
        const int count = random.within(1, 300);
        expectSameDraws(count, count, anyPosition);
    }
}

TEST(DrawPool, DrawsAsAVectorWithEraseFromALongList) {
    calib::Random random(92);
    for (const int count : {32767, 32768, 32769, 50000}) {
        expectSameDraws(count, 1500,
                        [&random](std::size_t left) { return static_cast<std::size_t>(random.below(32768)) % left; });
    }
}

}  // namespace

}  // namespace quorvel::test
