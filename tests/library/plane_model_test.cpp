// SPDX-License-Identifier: Apache-2.0
#include "geometry/plane_model.h"

#include <climits>
#include <cmath>

#include <gtest/gtest.h>

#include "library/measure_draws.h"
#include "library/plain/reference_fit.h"
#include "support/random.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

using internal::hasPlane;
using internal::NormalBand;
using internal::normalColour;
using internal::objectPixelMinimum;
using internal::Plane;
using internal::planeFromSlopes;
using internal::planeProblem;
using internal::signedDistance;

TEST(SignedDistance, IsNegativeBetweenCameraAndPlane) {
    const cv::Vec3f normal(0.0F, 0.6F, 0.8F);
    // 0.6 * 100 + 0.8 * 1000 = 860.
    EXPECT_FLOAT_EQ(signedDistance({50.0F, 100.0F, 1000.0F}, normal, 900.0F), -40.0F);
    EXPECT_FLOAT_EQ(signedDistance({50.0F, 100.0F, 1000.0F}, normal, 800.0F), 60.0F);
}

TEST(SignedDistance, AddsFromLeftToRightInFloat) {
    // 2^24 + 1 rounds to 2^24 in float, so the two ones are lost one after the other; added first they would count.
    EXPECT_EQ(signedDistance({16777216.0F, 1.0F, 1.0F}, {1.0F, 1.0F, 1.0F}, 16777216.0F), 0.0F);
    EXPECT_EQ(signedDistance({1.0F, 1.0F, 16777216.0F}, {1.0F, 1.0F, 1.0F}, 16777216.0F), 2.0F);
}

TEST(HasPlane, OnlyAnAllZeroNormalMeansNone) {
    EXPECT_FALSE(hasPlane({0.0F, 0.0F, 0.0F}));
    EXPECT_FALSE(hasPlane({-0.0F, 0.0F, -0.0F}));
    EXPECT_TRUE(hasPlane({0.0F, 0.0F, 1.0F}));
    EXPECT_TRUE(hasPlane({1e-30F, 0.0F, 0.0F}));
    EXPECT_TRUE(hasPlane({0.0F, -1.0F, 0.0F}));
}

TEST(PlaneFromSlopes, NormalisesTheSlopes) {
    // Length of (0, -0.75, 1) is 1.25.
    const Plane plane = planeFromSlopes(0.0F, 0.75F, 1000.0F);
    EXPECT_TRUE(sameBits(plane.normal, cv::Vec3f(-0.0F, -0.6F, 0.8F)));
    EXPECT_EQ(plane.offset, 800.0F);
}

TEST(PlaneFromSlopes, AFlatPlaneHasNegativeZeros) {
    const Plane plane = planeFromSlopes(0.0F, 0.0F, 1000.0F);
    EXPECT_TRUE(sameBits(plane.normal, cv::Vec3f(-0.0F, -0.0F, 1.0F)));
    EXPECT_EQ(plane.offset, 1000.0F);
}

TEST(PlaneFromSlopes, TakesTheLengthInDouble) {
    // 1e20 squared overflows float; in double the length is 1e20 and the normal is finite.
    const Plane plane = planeFromSlopes(1e20F, 0.0F, 1e20F);
    EXPECT_EQ(plane.normal[0], -1.0F);
    EXPECT_EQ(plane.offset, 1.0F);
}

TEST(NormalColour, MapsTheUnitIntervalToTheColourRange) {
    EXPECT_EQ(normalColour(-1.0F), 0.0F);
    EXPECT_EQ(normalColour(0.0F), 127.5F);
    EXPECT_EQ(normalColour(-0.0F), 127.5F);
    EXPECT_EQ(normalColour(1.0F), 255.0F);
    EXPECT_EQ(normalColour(0.5F), 191.25F);
}

TEST(NormalColour, RoundsTheProductBeforeTheAddition) {
    Draws random(31);
    int roundedTwice = 0;
    for (int i = 0; i < 5000; ++i) {
        const float n = random.real(-1.0F, 1.0F);
        const double product = static_cast<double>(n) * 127.5;
        const auto rounded = static_cast<float>(product);
        EXPECT_TRUE(sameBits(normalColour(n), rounded + 127.5F)) << "for " << n;
        roundedTwice += sameBits(rounded + 127.5F, static_cast<float>(product + 127.5)) ? 0 : 1;
    }
    EXPECT_GT(roundedTwice, 0) << "the input never tells the two orders apart";
}

TEST(NormalBand, IsOpenAtBothEnds) {
    const NormalBand band({127.5F, 127.5F, 191.0F});  // 63.5 ... 191.5 twice, 127 ... 255
    EXPECT_TRUE(band.contains({127.5F, 127.5F, 191.0F}));
    EXPECT_FALSE(band.contains({63.5F, 127.5F, 191.0F}));
    EXPECT_FALSE(band.contains({127.5F, 191.5F, 191.0F}));
    EXPECT_FALSE(band.contains({127.5F, 127.5F, 127.0F}));
    EXPECT_FALSE(band.contains({127.5F, 127.5F, 255.0F}));
    EXPECT_TRUE(band.contains({std::nextafter(63.5F, 64.0F), std::nextafter(191.5F, 0.0F), 254.9F}));
}

TEST(NormalBand, HoldsNoNan) {
    const NormalBand band({127.5F, 127.5F, 127.5F});
    EXPECT_FALSE(band.contains({kNaN, 127.5F, 127.5F}));
    EXPECT_FALSE(band.contains({127.5F, kNaN, 127.5F}));
    EXPECT_FALSE(band.contains({127.5F, 127.5F, kNaN}));
    EXPECT_FALSE(NormalBand({kNaN, kNaN, kNaN}).contains({127.5F, 127.5F, 127.5F}));
}

TEST(ObjectPixelMinimum, IsTheTruncatedAreaOfASquareOf50Mm) {
    EXPECT_EQ(objectPixelMinimum(1000.0F, 150.0F), 56) << "7.5 squared is 56.25";
    EXPECT_EQ(objectPixelMinimum(-1000.0F, 150.0F), 56) << "the square loses the sign";
    EXPECT_EQ(objectPixelMinimum(500.0F, 150.0F), 225);
    EXPECT_EQ(objectPixelMinimum(1000.0F, 0.0F), 0);
    EXPECT_EQ(objectPixelMinimum(kInfinity, 150.0F), 0);
}

TEST(ObjectPixelMinimum, IsIntMinWhenIntCannotHoldIt) {
    EXPECT_EQ(objectPixelMinimum(0.0F, 150.0F), INT_MIN);
    EXPECT_EQ(objectPixelMinimum(-0.0F, 150.0F), INT_MIN);
    EXPECT_EQ(objectPixelMinimum(0.0F, 0.0F), INT_MIN) << "infinity times 0";
    EXPECT_EQ(objectPixelMinimum(kNaN, 150.0F), INT_MIN);
    // 50 / 0.1 * 100 = 50000, squared 2.5e9.
    EXPECT_EQ(objectPixelMinimum(0.1F, 100.0F), INT_MIN);
}

TEST(ObjectPixelMinimum, AgreesWithThePlainForm) {
    Draws random(32);
    for (int i = 0; i < 2000; ++i) {
        const float t = random.real(-10.0F, 3000.0F);
        const float fxSmall = random.real(10.0F, 400.0F);
        EXPECT_EQ(objectPixelMinimum(t, fxSmall), plain::objectPixelMinimum(t, fxSmall)) << t << ", " << fxSmall;
    }
}

TEST(PlaneProblem, AUsablePlaneHasNone) {
    EXPECT_EQ(planeProblem({cv::Vec3f(0.0F, 0.0F, 1.0F), 1000.0F}), "");
    EXPECT_EQ(planeProblem({cv::Vec3f(-0.0F, 0.6F, 0.8F), 0.001F}), "");
    EXPECT_EQ(planeProblem({cv::Vec3f(0.0F, 0.0035F, 0.99F), 1.0F}), "") << "just below a hundredth off";
    Draws draws(48);
    for (int i = 0; i < 1000; ++i) {
        const cv::Vec3f normal = drawNormal(draws);
        EXPECT_EQ(planeProblem({normal, draws.real(1.0F, 5000.0F)}), "") << normal;
    }
}

TEST(PlaneProblem, NamesTheFirstReason) {
    const cv::Vec3f down(0.0F, 0.0F, 1.0F);
    for (const float value : {kNaN, kInfinity, -kInfinity}) {
        EXPECT_EQ(planeProblem({cv::Vec3f(value, 0.0F, 1.0F), 1000.0F}), "it is not four finite numbers");
        EXPECT_EQ(planeProblem({cv::Vec3f(0.0F, value, 1.0F), 1000.0F}), "it is not four finite numbers");
        EXPECT_EQ(planeProblem({cv::Vec3f(0.0F, 0.0F, value), 1000.0F}), "it is not four finite numbers");
        EXPECT_EQ(planeProblem({down, value}), "it is not four finite numbers");
    }
    const std::string length = "the length of its normal is not 1";
    EXPECT_EQ(planeProblem({cv::Vec3f(0.0F, 0.0F, 0.0F), 1000.0F}), length);
    EXPECT_EQ(planeProblem({cv::Vec3f(0.0F, 0.6F, 0.78F), 1000.0F}), length);
    EXPECT_EQ(planeProblem({cv::Vec3f(0.0F, 0.62F, 0.8F), 1000.0F}), length);
    EXPECT_EQ(planeProblem({cv::Vec3f(3e38F, 3e38F, 3e38F), 1000.0F}), length) << "a length beyond float";
    EXPECT_EQ(planeProblem({down, 0.0F}), "its distance from the camera is not positive");
    EXPECT_EQ(planeProblem({down, -0.0F}), "its distance from the camera is not positive");
    const std::string axis = "a normal along the optical axis has to be exactly 0 0 1";
    EXPECT_EQ(planeProblem({-down, 1000.0F}), axis);
    EXPECT_EQ(planeProblem({cv::Vec3f(0.0F, 0.0F, 0.99999F), 1000.0F}), axis);
}

}  // namespace

}  // namespace quorvel::test
