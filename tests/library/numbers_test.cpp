// SPDX-License-Identifier: Apache-2.0
#include "image/numbers.h"

#include <climits>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "support/random.h"

namespace quorvel::test {

namespace {

using internal::roundToInt;
using internal::truncateToInt;

constexpr double kWideInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(TruncateToInt, DropsTheFractionOnBothSidesOfZero) {
    EXPECT_EQ(truncateToInt(2.9), 2);
    EXPECT_EQ(truncateToInt(-2.9), -2);
    EXPECT_EQ(truncateToInt(0.999999), 0);
    EXPECT_EQ(truncateToInt(-0.0), 0);
}

TEST(TruncateToInt, ReachesBothEndsOfInt) {
    EXPECT_EQ(truncateToInt(2147483647.0), INT_MAX);
    EXPECT_EQ(truncateToInt(2147483647.9), INT_MAX) << "the fraction goes first, then the value fits";
    EXPECT_EQ(truncateToInt(-2147483647.0), -INT_MAX);
    EXPECT_EQ(truncateToInt(-2147483648.0), INT_MIN);
    EXPECT_EQ(truncateToInt(-2147483648.9), INT_MIN);
}

TEST(TruncateToInt, GivesIntMinForWhatIntCannotHold) {
    EXPECT_EQ(truncateToInt(2147483648.0), INT_MIN);
    EXPECT_EQ(truncateToInt(-2147483649.0), INT_MIN);
    EXPECT_EQ(truncateToInt(1e300), INT_MIN);
    EXPECT_EQ(truncateToInt(kWideInfinity), INT_MIN);
    EXPECT_EQ(truncateToInt(-kWideInfinity), INT_MIN);
    EXPECT_EQ(truncateToInt(kNan), INT_MIN);
}

TEST(RoundToInt, RoundsTiesToEven) {
    EXPECT_EQ(roundToInt(0.5), 0);
    EXPECT_EQ(roundToInt(1.5), 2);
    EXPECT_EQ(roundToInt(2.5), 2);
    EXPECT_EQ(roundToInt(-0.5), 0);
    EXPECT_EQ(roundToInt(-1.5), -2);
    EXPECT_EQ(roundToInt(-2.5), -2);
    EXPECT_EQ(roundToInt(2.51), 3);
    EXPECT_EQ(roundToInt(-2.49), -2);
}

TEST(RoundToInt, GivesIntMinForWhatIntCannotHold) {
    EXPECT_EQ(roundToInt(2147483647.4), INT_MAX);
    EXPECT_EQ(roundToInt(2147483647.5), INT_MIN) << "rounds up to 2147483648";
    EXPECT_EQ(roundToInt(-2147483648.5), INT_MIN) << "rounds to the even -2147483648";
    EXPECT_EQ(roundToInt(static_cast<double>(2147483648.0F)), INT_MIN);
    EXPECT_EQ(roundToInt(kWideInfinity), INT_MIN);
    EXPECT_EQ(roundToInt(kNan), INT_MIN);
}

TEST(RoundToInt, IsTheNearestIntAndEvenBetweenTwo) {
    Draws random(11);
    for (int i = 0; i < 2000; ++i) {
        const int whole = random.between(-100000, 100000);
        const int eighths = random.below(8);
        const double value = whole + eighths / 8.0;
        const int even = whole % 2 == 0 ? whole : whole + 1;
        const int expected = eighths == 4 ? even : (eighths < 4 ? whole : whole + 1);
        EXPECT_EQ(roundToInt(value), expected) << "for " << value;
        const int towardZero = value < 0.0 && eighths > 0 ? whole + 1 : whole;
        EXPECT_EQ(truncateToInt(value), towardZero) << "for " << value;
    }
}

}  // namespace

}  // namespace quorvel::test
