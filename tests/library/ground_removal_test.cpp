// SPDX-License-Identifier: Apache-2.0
#include "measure/ground_removal.h"

#include <vector>

#include <gtest/gtest.h>

#include "library/measure_draws.h"
#include "library/plain/height_cut.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

/// Removes the ground from one row of depths.
std::vector<int> remaining(const std::vector<int>& depths, float weight, float offset) {
    cv::Mat row(1, static_cast<int>(depths.size()), CV_16UC1);
    for (int column = 0; column < row.cols; ++column) {
        row.at<ushort>(0, column) = static_cast<ushort>(depths[static_cast<std::size_t>(column)]);
    }
    internal::removeGround(row, weight, offset);
    return {row.begin<ushort>(), row.end<ushort>()};
}

TEST(GroundRemoval, KeepsDepthsUpToThePlaneWithWeightZero) {
    EXPECT_EQ(remaining({0, 1, 999, 1000, 1001, 65535}, 0.0F, 1000.0F), (std::vector<int>{0, 1, 999, 1000, 0, 0}));
}

TEST(GroundRemoval, ComparesWithAFractionalPlaneDistance) {
    EXPECT_EQ(remaining({1000, 1001}, 0.0F, 1000.5F), (std::vector<int>{1000, 0}));
}

TEST(GroundRemoval, DropsTheBandAboveThePlane) {
    // 1 - 0.005 in float is 0.995000005, times 1000 rounds to 995.
    EXPECT_EQ(remaining({994, 995, 996, 1000}, 0.005F, 1000.0F), (std::vector<int>{994, 995, 0, 0}));
}

TEST(GroundRemoval, DropsEveryDepthWithWeightOne) {
    EXPECT_EQ(remaining({0, 1, 500, 65535}, 1.0F, 1000.0F), (std::vector<int>{0, 0, 0, 0}));
}

TEST(GroundRemoval, KeepsDepthsBeyondThePlaneWithANegativeWeight) {
    // 1 + 0.1 in float is 1.10000002, times 1000 rounds to 1100.
    EXPECT_EQ(remaining({1000, 1100, 1101}, -0.1F, 1000.0F), (std::vector<int>{1000, 1100, 0}));
}

TEST(GroundRemoval, DropsEveryDepthWithoutAPlaneDistance) {
    EXPECT_EQ(remaining({0, 1, 65535}, 0.0F, 0.0F), (std::vector<int>{0, 0, 0}));
}

TEST(GroundRemoval, KeepsEveryDepthWhenTheThresholdIsNotANumber) {
    EXPECT_EQ(remaining({1, 65535}, 0.0F, kNaN), (std::vector<int>{1, 65535}));
}

TEST(GroundRemoval, AcceptsAnEmptyImage) {
    cv::Mat nothing;
    internal::removeGround(nothing, 0.0F, 1000.0F);
    EXPECT_TRUE(nothing.empty());
}

TEST(GroundRemoval, AgreesWithThePlainFormOnRandomImages) {
    Draws draws(102);
    for (int run = 0; run < 500; ++run) {
        const int columns = draws.between(1, 25);
        const int rows = draws.between(1, 9);
        cv::Mat depth = drawMatrix(draws, {columns, rows}, CV_16UC1);
        for (int row = 0; row < depth.rows; ++row) {
            for (int column = 0; column < depth.cols; ++column) {
                depth.at<ushort>(row, column) =
                    static_cast<ushort>(draws.chance(60) ? draws.between(940, 1060) : draws.below(65536));
            }
        }
        const float weight = draws.chance(30) ? 0.0F : draws.real(-0.1F, 0.1F);
        const float offset = draws.chance(50) ? static_cast<float>(draws.between(950, 1050)) : draws.real(950, 1050);
        cv::Mat plainDepth = depth.clone();
        plain::removeGround(plainDepth, weight, offset);
        internal::removeGround(depth, weight, offset);
        ASSERT_TRUE(sameBits(depth, plainDepth)) << "run " << run << ", weight " << weight << ", offset " << offset;
    }
}

}  // namespace

}  // namespace quorvel::test
