// SPDX-License-Identifier: Apache-2.0
#include "kit/draw/color_scale.h"

#include <gtest/gtest.h>

namespace quorvel::command {

using namespace kit;
namespace {

TEST(ColorScale, TicksAreRoundAndInside) {
    EXPECT_EQ(ColorScale(0.0, 140.0).ticks(), (std::vector<double>{0, 20, 40, 60, 80, 100, 120, 140}));
    EXPECT_EQ(ColorScale(548.0, 812.0).ticks(), (std::vector<double>{550, 600, 650, 700, 750, 800}));
}

TEST(ColorScale, ValuesOutsideHaveTheEndsColor) {
    const ColorScale scale(10.0, 20.0);
    EXPECT_EQ(scale.color(-5.0), scale.color(10.0));
    EXPECT_EQ(scale.color(99.0), scale.color(20.0));
    EXPECT_NE(scale.color(10.0), scale.color(20.0));
}

TEST(ColorScale, RangeWithoutWidthStillWorks) {
    const ColorScale scale(7.0, 7.0);
    EXPECT_DOUBLE_EQ(scale.position(7.0), 0.0);
    EXPECT_FALSE(scale.ticks().empty());
}

TEST(RoundStep, DividesTheSpanAtLeastSoOften) {
    EXPECT_DOUBLE_EQ(roundStep(100.0, 5), 20.0);
    EXPECT_DOUBLE_EQ(roundStep(99.0, 5), 10.0);
    EXPECT_DOUBLE_EQ(roundStep(300.0, 6), 50.0);
    EXPECT_NEAR(roundStep(1.0, 5), 0.2, 1e-12);
}

TEST(Quantile, PicksByRank) {
    const std::vector<float> values{5.0F, 1.0F, 4.0F, 2.0F, 3.0F};
    EXPECT_EQ(quantile(values, 0.0), 1.0);
    EXPECT_EQ(quantile(values, 0.5), 3.0);
    EXPECT_EQ(quantile(values, 1.0), 5.0);
    EXPECT_EQ(quantile({8.0F}, 0.995), 8.0);
}

}  // namespace
}  // namespace quorvel::command
