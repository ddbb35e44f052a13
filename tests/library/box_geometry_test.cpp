// SPDX-License-Identifier: Apache-2.0
#include "measure/box_geometry.h"

#include <cmath>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "library/measure_draws.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

TEST(CorrectedHeight, UsesTheCoefficientOfThePlaneDistance) {
    // 100 - k (t - 100).
    const std::vector<std::pair<float, float>> cases{{500, 0.007F},   {1000, 0.007F},  {1299.5F, 0.007F},
                                                     {1300, 0.007F},  {1350, 0.0055F}, {1400, 0.007F},
                                                     {1450, 0.0065F}, {1500, 0.007F},  {1501, 0.007F}};
    for (const auto& [offset, coefficient] : cases) {
        EXPECT_EQ(internal::correctedHeight(100, offset), 100 - coefficient * (offset - 100)) << "t " << offset;
    }
    EXPECT_FLOAT_EQ(internal::correctedHeight(100, 1000), 93.7F);
    EXPECT_FLOAT_EQ(internal::correctedHeight(100, 1350), 93.125F);
    EXPECT_FLOAT_EQ(internal::correctedHeight(100, 1450), 91.225F);
}

TEST(CorrectedHeight, ChangesTheCoefficientRightInsideTheBounds) {
    EXPECT_EQ(internal::correctedHeight(0, std::nextafter(1300.0F, kInfinity)),
              -0.0055F * std::nextafter(1300.0F, kInfinity));
    EXPECT_EQ(internal::correctedHeight(0, std::nextafter(1400.0F, 0.0F)), -0.0055F * std::nextafter(1400.0F, 0.0F));
    EXPECT_EQ(internal::correctedHeight(0, std::nextafter(1400.0F, kInfinity)),
              -0.0065F * std::nextafter(1400.0F, kInfinity));
    EXPECT_EQ(internal::correctedHeight(0, std::nextafter(1500.0F, 0.0F)), -0.0065F * std::nextafter(1500.0F, 0.0F));
}

TEST(FootprintSides, MeasuresTheFirstTwoSides) {
    // (0, 0) to (3, 4) is 5; (3, 4) to (-5, 10) is 10.
    const internal::Sides sides = internal::footprintSides({{{0, 0}, {3, 4}, {-5, 10}, {-8, 6}}});
    EXPECT_EQ(sides.a, 5.0F);
    EXPECT_EQ(sides.b, 10.0F);
}

TEST(FootprintSides, TakesTheDifferenceInFloatAndTheLengthInDouble) {
    // 16777216 + 1 is no float: the difference of 16777216 and -1 is 16777216.
    const internal::Sides rounded = internal::footprintSides({{{16777216, 0}, {-1, 0}, {-1, 0}, {0, 0}}});
    EXPECT_EQ(rounded.a, 16777216.0F);
    // 1e20 squared overflows float, not double.
    const internal::Sides large = internal::footprintSides({{{3e20F, 0}, {0, 4e20F}, {0, 0}, {0, 0}}});
    EXPECT_FLOAT_EQ(large.a, 5e20F);
}

/// Eight corners, of which only the top ones 4, 5 and 6 matter for the sides.
std::vector<cv::Point2f> cornersWithTop(const cv::Point2f& c4, const cv::Point2f& c5, const cv::Point2f& c6) {
    return {{}, {}, {}, {}, c4, c5, c6, c4 + (c6 - c5)};
}

internal::Sides corrected(const std::vector<cv::Point2f>& corners, std::size_t points) {
    return internal::correctedSides({100, 200}, corners, points);
}

TEST(CorrectedSides, ShrinksBothSidesOfADiagonalBox) {
    // Both sides at 45 degrees: shares 0.707.
    const internal::Sides sides = corrected(cornersWithTop({0, 0}, {10, 10}, {20, 0}), 1000);
    EXPECT_EQ(sides.a, 100.0F * 0.99F);
    EXPECT_EQ(sides.b, 200.0F * 0.99F);
    const internal::Sides many = corrected(cornersWithTop({0, 0}, {10, 10}, {20, 0}), 30000);
    EXPECT_EQ(many.a, 100.0F * 0.99F) << "the number of points does not matter here";
}

TEST(CorrectedSides, EnlargesTheSideNearerTheVertical) {
    // 5000 / 1000 * 0.05 + 1 = 1.25.
    const internal::Sides first = corrected(cornersWithTop({0, 0}, {0, 10}, {20, 10}), 1000);
    EXPECT_EQ(first.a, 125.0F);
    EXPECT_EQ(first.b, 200.0F);
    const internal::Sides second = corrected(cornersWithTop({0, 0}, {20, 0}, {20, -10}), 1000);
    EXPECT_EQ(second.a, 100.0F);
    EXPECT_EQ(second.b, 250.0F);
}

TEST(CorrectedSides, DividesTheFiveThousandAsARealNumber) {
    // 5000 / 8000 = 0.625, not 0: times 0.05 plus 1 is 1.03125.
    EXPECT_FLOAT_EQ(corrected(cornersWithTop({0, 0}, {0, 10}, {20, 10}), 8000).a, 103.125F);
}

TEST(CorrectedSides, LeavesTheSidesOfALargeCloud) {
    const auto corners = cornersWithTop({0, 0}, {0, 10}, {20, 10});
    EXPECT_EQ(corrected(corners, 20000).a, 100.0F);
    EXPECT_EQ(corrected(corners, 20000).b, 200.0F);
    // 5000 / 19999 * 0.05 + 1.
    EXPECT_EQ(corrected(corners, 19999).a, 100.0F * (5000.0F / 19999.0F * 0.05F + 1.0F));
}

TEST(CorrectedSides, TakesAShareOfExactlyTheBoundForTilted) {
    // The share 87 / 100 rounds to 0.87F; the other side's is 0.
    const float x = std::sqrt(100.0F * 100.0F - 87.0F * 87.0F);
    const auto at = cornersWithTop({0, 0}, {x, 87}, {x + 50, 87});
    const double length = std::sqrt(static_cast<double>(x) * static_cast<double>(x) + 87.0 * 87.0);
    ASSERT_EQ(static_cast<float>(87.0 / length), 0.87F) << "the example must meet the bound";
    EXPECT_EQ(corrected(at, 1000).a, 100.0F * 0.99F);
    EXPECT_EQ(corrected(cornersWithTop({0, 0}, {x, 87.001F}, {x + 50, 87}), 1000).a, 125.0F);
}

TEST(CorrectedSides, DividesByTheLengthInDouble) {
    // Rounded from double the first share is just above 0.87F and the second 0.87F itself; with the length rounded to
    // float first it would be the other way round.
    const float above = 1.7001780271530151F;
    EXPECT_EQ(corrected(cornersWithTop({0, 0}, {above, 3}, {above + 9, 3}), 1000).a, 125.0F);
    const float at = 2.833630323410034F;
    EXPECT_EQ(corrected(cornersWithTop({0, 0}, {at, 5}, {at + 9, 5}), 1000).a, 100.0F * 0.99F);
}

TEST(CorrectedSides, EnlargesTheSecondSideWhenAShareIsNotANumber) {
    // Corners 4 and 5 coincide; the other side is vertical, then horizontal.
    EXPECT_EQ(corrected(cornersWithTop({3, 4}, {3, 4}, {3, 9}), 1000).b, 250.0F);
    EXPECT_EQ(corrected(cornersWithTop({3, 4}, {3, 4}, {9, 4}), 1000).b, 250.0F);
    // Corners 5 and 6 coincide and the first side is vertical: not greater than NaN, so again the second.
    const internal::Sides sides = corrected(cornersWithTop({3, 9}, {3, 4}, {3, 4}), 1000);
    EXPECT_EQ(sides.a, 100.0F);
    EXPECT_EQ(sides.b, 250.0F);
    EXPECT_EQ(corrected(cornersWithTop({3, 4}, {3, 4}, {3, 4}), 20000).b, 200.0F);
}

TEST(BoxCorners, ProjectsGroundAndTop) {
    // Plane z = 1000, top 200 mm nearer: x = 500 X / 1000 + 320 on the ground, 500 X / 800 + 320 at the top.
    const internal::FootprintCorners footprint{{{-80, -40}, {80, -40}, {80, 40}, {-80, 40}}};
    const internal::Plane plane{{0, 0, 1}, 1000};
    const std::vector<cv::Point2f> corners =
        internal::boxCorners(footprint, internal::planeBasis(plane.normal), plane, -200, {320, 240, 500, 400});
    const std::vector<cv::Point2f> expected{{280, 224}, {360, 224}, {360, 256}, {280, 256},
                                            {270, 220}, {370, 220}, {370, 260}, {270, 260}};
    EXPECT_EQ(corners, expected);
}

TEST(BoxCorners, FollowsATiltedPlane) {
    // n = (0.6, 0, 0.8), t = 1000: the plane's foot is (600, 0, 800); e1 = (0, -1, 0), e2 = (0.8, 0, -0.6). The corner
    // (u, v) = (100, -500) stands at (600 - 400, -100, 800 + 300) = (200, -100, 1100); the top, 100 mm towards the
    // camera, at (140, -100, 1020).
    const internal::FootprintCorners footprint{{{100, -500}, {100, -500}, {100, -500}, {100, -500}}};
    const internal::Plane plane{{0.6F, 0, 0.8F}, 1000};
    const std::vector<cv::Point2f> corners =
        internal::boxCorners(footprint, internal::planeBasis(plane.normal), plane, -100, {320, 240, 550, 510});
    EXPECT_NEAR(corners[0].x, 420, 1e-3);
    EXPECT_NEAR(corners[0].y, 240 - 100.0 * 510 / 1100, 1e-3);
    EXPECT_NEAR(corners[4].x, 320 + 140.0 * 550 / 1020, 1e-3);
    EXPECT_NEAR(corners[4].y, 190, 1e-3);
}

TEST(BoxCorners, GivesNoFinitePositionInTheLensPlane) {
    const internal::FootprintCorners footprint{};
    const internal::Plane plane{{0, 0, 1}, 1000};
    const std::vector<cv::Point2f> corners =
        internal::boxCorners(footprint, internal::planeBasis(plane.normal), plane, -1000, {320, 240, 500, 500});
    EXPECT_EQ(corners[0], cv::Point2f(320, 240));
    EXPECT_TRUE(std::isnan(corners[4].x)) << "0 * 500 / 0";
}

}  // namespace

}  // namespace quorvel::test
