// SPDX-License-Identifier: Apache-2.0
#include "geometry/vec3.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace quorvel::test {

namespace {

using internal::lengthOf;
using internal::normalized;

TEST(Vec3, HasItsLengthInDouble) {
    EXPECT_EQ(lengthOf(cv::Vec3f(2, 3, 6)), 7.0);
    // Squares that float cannot hold.
    EXPECT_EQ(lengthOf(cv::Vec3f(3e30F, 0, 0)), static_cast<double>(3e30F));
    EXPECT_EQ(lengthOf(cv::Vec3f(0, -1e-30F, 0)), static_cast<double>(1e-30F));
    EXPECT_TRUE(std::isnan(lengthOf(cv::Vec3f(0, 0, std::numeric_limits<float>::quiet_NaN()))));
}

TEST(Vec3, IsNormalizedInDoubleAndRoundedOnce) {
    EXPECT_EQ(normalized(cv::Vec3f(-2, 3, 6)), cv::Vec3f(-2.0F / 7.0F, 3.0F / 7.0F, 6.0F / 7.0F));
    EXPECT_EQ(normalized(cv::Vec3f(0, 0, 1e30F)), cv::Vec3f(0, 0, 1));
    EXPECT_TRUE(std::isnan(normalized(cv::Vec3f(0, 0, 0))[0]));
}

TEST(Vec3, IsADirectionForTheLoops) {
    const internal::Direction direction = internal::direction({1, 2, 3});
    EXPECT_EQ(direction.x, 1.0F);
    EXPECT_EQ(direction.y, 2.0F);
    EXPECT_EQ(direction.z, 3.0F);
}

}  // namespace

}  // namespace quorvel::test
