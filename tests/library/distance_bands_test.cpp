// SPDX-License-Identifier: Apache-2.0
#include "measure/distance_bands.h"

#include <cmath>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "library/measure_draws.h"

namespace quorvel::test {

namespace {

float justAbove(float value) {
    return std::nextafter(value, kInfinity);
}

TEST(DistanceBands, ChoosesTheMinimumHeightOfTheKiosk) {
    const std::vector<std::pair<float, float>> cases{{-kInfinity, 3},
                                                     {-5, 3},
                                                     {0, 3},
                                                     {800, 3},
                                                     {justAbove(800), 5},
                                                     {800.5F, 5},
                                                     {1000, 5},
                                                     {justAbove(1000), 8},
                                                     {1200, 8},
                                                     {justAbove(1200), 10},
                                                     {5000, 10},
                                                     {kInfinity, 10}};
    for (const auto& [offset, expected] : cases) {
        EXPECT_EQ(internal::kioskMinHeight(offset, 77), expected) << "t " << offset;
    }
}

TEST(DistanceBands, KeepsTheMinimumHeightWithoutADistance) {
    EXPECT_EQ(internal::kioskMinHeight(kNaN, 77), 77.0F);
}

TEST(DistanceBands, LowersTheHeightOfGroundTracking) {
    const std::vector<std::pair<float, float>> cases{{-kInfinity, 1}, {0, 1},
                                                     {550, 1},        {justAbove(550), 3},
                                                     {700, 3},        {justAbove(700), 5},
                                                     {900, 5},        {justAbove(900), 7},
                                                     {1100, 7},       {justAbove(1100), 8},
                                                     {1100.1F, 8},    {kInfinity, 8}};
    for (const auto& [offset, expected] : cases) {
        EXPECT_EQ(internal::trackingHeightLowering(offset), expected) << "t " << offset;
    }
}

TEST(DistanceBands, LowersNothingWithoutADistance) {
    EXPECT_EQ(internal::trackingHeightLowering(kNaN), 0.0F);
}

}  // namespace

}  // namespace quorvel::test
