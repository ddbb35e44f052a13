// SPDX-License-Identifier: Apache-2.0
#include "sim/random.h"

#include <array>
#include <cmath>

#include <gtest/gtest.h>

namespace quorvel::sim {
namespace {

constexpr int kDraws = 400000;

TEST(Random, SameKeySameNumbers) {
    Random first({1U, 2U, 3U});
    Random second({1U, 2U, 3U});
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(first.uniform(), second.uniform()) << "draw " << i;
        EXPECT_EQ(first.gaussian(), second.gaussian()) << "draw " << i;
    }
}

TEST(Random, EveryPartOfTheKeyCounts) {
    const double base = Random({1U, 2U, 3U}).uniform();
    EXPECT_NE(base, Random({2U, 2U, 3U}).uniform());
    EXPECT_NE(base, Random({1U, 3U, 3U}).uniform());
    EXPECT_NE(base, Random({1U, 2U, 4U}).uniform());
    EXPECT_NE(base, Random({1U, 2U}).uniform());
}

TEST(Random, UniformFillsItsRangeEvenly) {
    Random random({5U});
    std::array<int, 10> counts{};
    for (int i = 0; i < kDraws; ++i) {
        const double value = random.uniform();
        ASSERT_GE(value, 0.0);
        ASSERT_LT(value, 1.0);
        ++counts.at(static_cast<std::size_t>(value * 10.0));
    }
    for (std::size_t i = 0; i < counts.size(); ++i) {
        EXPECT_NEAR(counts.at(i), kDraws / 10, 1000) << "tenth " << i << " (five standard deviations are 949)";
    }
}

TEST(Random, GaussianHasTheMomentsAndTailsOfTwelveUniforms) {
    Random random({6U});
    double sum = 0.0;
    double squares = 0.0;
    double fourths = 0.0;
    int beyondOne = 0;
    int beyondThree = 0;
    for (int i = 0; i < kDraws; ++i) {
        const double value = random.gaussian();
        ASSERT_LE(std::abs(value), 6.0);
        sum += value;
        squares += value * value;
        fourths += value * value * value * value;
        beyondOne += std::abs(value) > 1.0 ? 1 : 0;
        beyondThree += std::abs(value) > 3.0 ? 1 : 0;
    }
    EXPECT_NEAR(sum / kDraws, 0.0, 0.008);
    EXPECT_NEAR(squares / kDraws, 1.0, 0.012);
    EXPECT_NEAR(fourths / kDraws, 2.9, 0.08) << "excess kurtosis of the sum of twelve uniforms is -0.1";
    EXPECT_NEAR(static_cast<double>(beyondOne) / kDraws, 0.317, 0.006);
    EXPECT_NEAR(static_cast<double>(beyondThree) / kDraws, 0.0023, 0.0006);
}

}  // namespace
}  // namespace quorvel::sim
