// SPDX-License-Identifier: Apache-2.0
#include "library/plain/select_kth.h"

#include <algorithm>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "geometry/selection.h"
#include "library/calib_support.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

using internal::selectKth;

std::vector<float> randomValues(Draws& random, int count, calib::CloudKind kind) {
    std::vector<float> values;
    values.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        values.push_back(calib::randomCoordinate(random, kind));
    }
    return values;
}

TEST(SelectKth, FindsEveryRank) {
    const std::vector<float> values{30.0F, 10.0F, 50.0F, 20.0F, 40.0F};
    for (int k = 0; k < 5; ++k) {
        EXPECT_EQ(selectKth(values, 5, k), 10.0F * static_cast<float>(k + 1)) << "rank " << k;
    }
}

TEST(SelectKth, OneValueIsItsOwnRank) {
    EXPECT_EQ(selectKth({7.0F}, 1, 0), 7.0F);
}

TEST(SelectKth, EqualValuesTakeOneRankEach) {
    const std::vector<float> values{2.0F, 1.0F, 2.0F, 1.0F, 2.0F};
    EXPECT_EQ(selectKth(values, 5, 1), 1.0F);
    EXPECT_EQ(selectKth(values, 5, 2), 2.0F);
    EXPECT_EQ(selectKth(std::vector<float>(100, 3.0F), 100, 50), 3.0F);
}

TEST(SelectKth, LooksAtTheFirstValuesOnly) {
    EXPECT_EQ(selectKth({5.0F, 3.0F, 4.0F, -9.0F, 99.0F}, 3, 0), 3.0F);
    EXPECT_EQ(selectKth({5.0F, 3.0F, 4.0F, -9.0F, 99.0F}, 3, 2), 5.0F);
}

TEST(SelectKth, LeavesTheCallersValues) {
    const std::vector<float> values{3.0F, 1.0F, 2.0F};
    selectKth(values, 3, 1);
    EXPECT_EQ(values, (std::vector<float>{3.0F, 1.0F, 2.0F}));
}

TEST(SelectKth, IsTheValueOfThatRankInAscendingOrder) {
    Draws random(81);
    for (int i = 0; i < 1500; ++i) {
        const auto kind = random.chance(50) ? calib::CloudKind::kFloats : calib::CloudKind::kSmallIntegers;
        const int count = random.between(1, 60);
        const int k = random.below(count);
        const std::vector<float> values = randomValues(random, count, kind);
        std::vector<float> sorted = values;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(selectKth(values, count, k), sorted.at(static_cast<std::size_t>(k))) << "input " << i;
    }
}

TEST(SelectKth, AgreesWithThePlainFormWhereOrderIsUndefined) {
    // The plain form checks every index: with NaN among the values both stay inside the vector.
    Draws random(82);
    for (int i = 0; i < 3000; ++i) {
        const int count = random.between(1, 40);
        const int k = random.below(count);
        const std::vector<float> values = randomValues(random, count, calib::CloudKind::kWithNonFinite);
        EXPECT_TRUE(sameBits(selectKth(values, count, k), plain::selectKth(values, count, k)))
            << "input " << i << ", rank " << k << " of " << count;
    }
}

TEST(SelectKth, AgreesWithThePlainFormOnLongSortedAndReversedLists) {
    Draws random(83);
    std::vector<float> values = randomValues(random, 20000, calib::CloudKind::kFloats);
    for (const int k : {0, 1, 9999, 18000, 19999}) {
        EXPECT_TRUE(sameBits(selectKth(values, 20000, k), plain::selectKth(values, 20000, k))) << "rank " << k;
        std::sort(values.begin(), values.end());
        EXPECT_TRUE(sameBits(selectKth(values, 20000, k), values.at(static_cast<std::size_t>(k)))) << "rank " << k;
        std::reverse(values.begin(), values.end());
        EXPECT_TRUE(sameBits(selectKth(values, 20000, k), plain::selectKth(values, 20000, k))) << "rank " << k;
    }
}

}  // namespace

}  // namespace quorvel::test
