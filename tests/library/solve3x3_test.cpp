// SPDX-License-Identifier: Apache-2.0
#include "library/plain/solve3x3.h"

#include <array>
#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "geometry/plane_model.h"
#include "library/fast_forms.h"
#include "support/random.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

using fast::solve3x3;
using Matrix = std::array<float, 9>;
using Vector = std::array<float, 3>;

constexpr Vector kUntouched{-77.0F, -78.0F, -79.0F};

::testing::AssertionResult sameSolution(const Vector& a, const Vector& b) {
    return sameBits(std::vector<float>(a.begin(), a.end()), std::vector<float>(b.begin(), b.end()));
}

std::string describe(const Matrix& a, const Vector& b) {
    std::ostringstream text;
    for (std::size_t i = 0; i < 3; ++i) {
        text << "\n  " << a.at(3 * i) << ' ' << a.at(3 * i + 1) << ' ' << a.at(3 * i + 2) << " | " << b.at(i);
    }
    return text.str();
}

void expectAsPlain(const Matrix& a, const Vector& b) {
    Vector x = kUntouched;
    const int status = solve3x3(a, b, x);
    Matrix plainA = a;
    Vector plainB = b;
    Vector plainX = kUntouched;
    EXPECT_EQ(status, plain::solve3x3(plainA.data(), plainB.data(), plainX.data())) << describe(a, b);
    EXPECT_TRUE(sameSolution(x, plainX)) << describe(a, b);
}

TEST(Solve3x3, SolvesTheIdentity) {
    Vector x = kUntouched;
    EXPECT_EQ(solve3x3({1, 0, 0, 0, 1, 0, 0, 0, 1}, {4.0F, -5.0F, 6.5F}, x), 3);
    EXPECT_TRUE(sameSolution(x, {4.0F, -5.0F, 6.5F}));
}

TEST(Solve3x3, SwapsRowsForTheLargestPivot) {
    // Row 2 (4 0 8 | 28) comes first; what is left is (2 -2 | -2) and (4 -2 | 2), swapped again; then -z = -3.
    Vector x = kUntouched;
    EXPECT_EQ(solve3x3({1, 2, 0, 4, 0, 8, 2, 4, 2}, {5, 28, 16}, x), 3);
    EXPECT_TRUE(sameSolution(x, {1.0F, 2.0F, 3.0F}));
}

TEST(Solve3x3, NeedsARowSwapForAZeroOnTheDiagonal) {
    Vector x = kUntouched;
    EXPECT_EQ(solve3x3({0, 0, 2, 0, 4, 0, 8, 0, 0}, {2, 8, 24}, x), 3);
    EXPECT_TRUE(sameSolution(x, {3.0F, 2.0F, 1.0F}));
}

TEST(Solve3x3, TakesTheFirstOfEqualPivots) {
    // Eliminating with the first row turns the other right-hand sides into 1 - 1e8, whose 1 is lost in float, and x
    // comes out as 0. Eliminating with the last row would give 1.
    const Matrix a{1, 1e8F, 0, 1, 0, 1, 1, 0, 0};
    const Vector b{1e8F, 1, 1};
    Vector x = kUntouched;
    EXPECT_EQ(solve3x3(a, b, x), 3);
    EXPECT_EQ(x[0], 0.0F);
    expectAsPlain(a, b);
}

TEST(Solve3x3, ASingularSystemIsReportedAndLeavesTheSolution) {
    Vector x = kUntouched;
    // Row 2 is twice row 1: after the first column (pivot 2 4 6) row 1 is (0 0); the third column is empty.
    EXPECT_EQ(solve3x3({1, 2, 3, 2, 4, 6, 1, 0, 1}, {1, 2, 3}, x), 0);
    EXPECT_TRUE(sameSolution(x, kUntouched));
    EXPECT_EQ(solve3x3({0, 1, 2, 0, 3, 4, 0, 5, 7}, {1, 2, 3}, x), 0) << "an empty first column";
    EXPECT_EQ(solve3x3({1, 0, 2, 0, 0, 4, 0, 0, 7}, {1, 2, 3}, x), 0) << "an empty second column";
    EXPECT_TRUE(sameSolution(x, kUntouched));
}

TEST(Solve3x3, APivotOfExactlyTheThresholdIsNotSingular) {
    const auto threshold = static_cast<float>(1.0 * 1e-12);
    Vector x = kUntouched;
    EXPECT_EQ(solve3x3({1, 0, 0, 0, 1, 0, 0, 0, threshold}, {1, 1, threshold}, x), 3);
    EXPECT_TRUE(sameSolution(x, {1.0F, 1.0F, 1.0F}));
    x = kUntouched;
    const float less = std::nextafter(threshold, 0.0F);
    EXPECT_EQ(solve3x3({1, 0, 0, 0, 1, 0, 0, 0, less}, {1, 1, less}, x), 0);
    EXPECT_TRUE(sameSolution(x, kUntouched));
}

TEST(Solve3x3, TheThresholdFollowsTheLargestEntryOfAnySign) {
    const auto threshold = static_cast<float>(1024.0 * 1e-12);
    Vector x = kUntouched;
    EXPECT_EQ(solve3x3({1, 0, -1024, 0, 1, 0, 0, 0, threshold}, {1, 1, 1}, x), 3);
    EXPECT_EQ(solve3x3({1, 0, -1024, 0, 1, 0, 0, 0, std::nextafter(threshold, 0.0F)}, {1, 1, 1}, x), 0);
}

TEST(Solve3x3, AnAllZeroSystemCountsAsSolvableAndGivesNan) {
    Vector x = kUntouched;
    EXPECT_EQ(solve3x3({}, {}, x), 3);
    for (const float value : x) {
        EXPECT_TRUE(std::isnan(value)) << value;
    }
    expectAsPlain({}, {});
    expectAsPlain({}, {1, 2, 3});
}

TEST(Solve3x3, AgreesWithThePlainFormOnRandomFloats) {
    Draws random(41);
    for (int i = 0; i < 3000; ++i) {
        Matrix a{};
        Vector b{};
        const float scale = random.chance(20) ? 1e18F : (random.chance(20) ? 1e-18F : 1.0F);
        for (float& entry : a) {
            entry = random.real(-1000.0F, 1000.0F) * scale;
        }
        for (float& entry : b) {
            entry = random.real(-1000.0F, 1000.0F);
        }
        expectAsPlain(a, b);
    }
}

TEST(Solve3x3, AgreesWithThePlainFormOnSmallIntegers) {
    Draws random(42);
    int singular = 0;
    for (int i = 0; i < 5000; ++i) {
        Matrix a{};
        Vector b{};
        for (float& entry : a) {
            entry = static_cast<float>(random.between(-2, 2));
        }
        for (float& entry : b) {
            entry = static_cast<float>(random.between(-3, 3));
        }
        expectAsPlain(a, b);
        Vector x{};
        singular += solve3x3(a, b, x) == 0 ? 1 : 0;
    }
    EXPECT_GT(singular, 100) << "too few singular systems to mean something";
    EXPECT_LT(singular, 4000) << "too few regular systems to mean something";
}

TEST(Solve3x3, AgreesWithThePlainFormOnInfinitiesAndNan) {
    const float infinity = std::numeric_limits<float>::infinity();
    const std::array<float, 5> values{infinity, -infinity, std::numeric_limits<float>::quiet_NaN(), 1.0F, -2.0F};
    Draws random(43);
    for (int i = 0; i < 1000; ++i) {
        Matrix a{};
        Vector b{};
        for (float& entry : a) {
            entry = random.chance(70) ? random.real(-9.0F, 9.0F) : random.oneOf(values);
        }
        for (float& entry : b) {
            entry = random.oneOf(values);
        }
        expectAsPlain(a, b);
    }
}

}  // namespace

}  // namespace quorvel::test
