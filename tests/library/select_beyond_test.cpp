// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstddef>
#include <numeric>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "geometry/selection.h"

namespace quorvel::test {

namespace {

using internal::boundFromSample;

TEST(BoundFromSample, IsTheValueOfTheRankExpectedAndSomeDeviationsMore) {
    // 400 of 10000 wanted: 4 are expected among 100, and with three deviations 4 + 3 * 2 + 3 = 13: the 14th greatest.
    std::vector<float> sample(100);
    std::iota(sample.begin(), sample.end(), 1.0F);
    std::reverse(sample.begin() + 20, sample.end());
    EXPECT_EQ(boundFromSample(sample.data(), sample.size(), 10000, 400, 3.0), 87.0F);
    // Without deviations the fifth greatest.
    EXPECT_EQ(boundFromSample(sample.data(), sample.size(), 10000, 400, 0.0), 96.0F);
}

TEST(BoundFromSample, HasNoneWhenTheSampleIsTooSmall) {
    std::vector<float> sample{1, 2, 3, 4, 5};
    EXPECT_EQ(boundFromSample(sample.data(), sample.size(), 5, 5, 0.0), std::nullopt);
    EXPECT_EQ(boundFromSample(sample.data(), sample.size(), 5, 4, 0.0), 1.0F);
    EXPECT_EQ(boundFromSample(sample.data(), sample.size(), 5, 1, 4.0), std::nullopt);
    EXPECT_EQ(boundFromSample(sample.data(), 0, 5, 1, 0.0), std::nullopt);
}

TEST(BoundFromSample, KeepsTheSamplesValues) {
    std::vector<float> sample{3, 1, 2, 5, 4};
    ASSERT_EQ(boundFromSample(sample.data(), sample.size(), 50, 20, 0.0), 3.0F);
    std::sort(sample.begin(), sample.end());
    EXPECT_EQ(sample, (std::vector<float>{1, 2, 3, 4, 5}));
}

}  // namespace

}  // namespace quorvel::test
