// SPDX-License-Identifier: Apache-2.0
#include "kit/account/plane.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "kit/draw/plane_basis.h"

namespace quorvel::command {

using namespace kit;
namespace {

const Plane kLevel{{0.0F, 0.0F, 1.0F}, 1000.0F};
const Plane kTilted{{0.0F, 0.6F, 0.8F}, 500.0F};
const Camera kCamera{600.0, 500.0, 320.0, 240.0, 640, 480};

TEST(Plane, UsableMeansUnitNormalInFrontOfTheCamera) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(isUsable(kLevel));
    EXPECT_TRUE(isUsable(kTilted));
    EXPECT_FALSE(isUsable({{0.0F, 0.0F, 0.0F}, 1000.0F})) << "no plane";
    EXPECT_FALSE(isUsable({{0.0F, 0.0F, 1.0F}, 0.0F})) << "plane through the camera";
    EXPECT_FALSE(isUsable({{0.0F, 0.0F, 1.0F}, -5.0F})) << "plane behind the camera";
    EXPECT_FALSE(isUsable({{0.0F, 0.0F, 0.5F}, 1000.0F})) << "half a normal";
    EXPECT_TRUE(isUsable({{0.0F, 0.01F, 1.005F}, 1000.0F})) << "typed in with few decimals";
    EXPECT_FALSE(isUsable({{0.0F, 0.6F, 0.78F}, 1000.0F})) << "more than a hundredth off";
    EXPECT_FALSE(isUsable({{0.0F, 0.0F, -1.0F}, 1000.0F})) << "away from the scene";
    EXPECT_FALSE(isUsable({{0.0F, 0.0F, 0.999F}, 1000.0F})) << "no direction to turn a footprint by";
    EXPECT_FALSE(isUsable({{kNan, 0.0F, 1.0F}, 1000.0F}));
    EXPECT_FALSE(isUsable({{0.0F, 0.0F, 1.0F}, kNan}));
}

TEST(Plane, Tilt) {
    EXPECT_DOUBLE_EQ(tiltDegrees(kLevel), 0.0);
    EXPECT_NEAR(tiltDegrees(kTilted), 36.8699, 1e-4);
}

TEST(Plane, HeightIsPositiveTowardsTheCamera) {
    EXPECT_FLOAT_EQ(heightAbove(kLevel, {12.0F, 7.0F, 850.0F}), 150.0F);
    EXPECT_FLOAT_EQ(heightAbove(kLevel, {0.0F, 0.0F, 1010.0F}), -10.0F);
}

TEST(PlaneBasis, AxesLookLikeThePicturesAxes) {
    const PlaneBasis level = basisOf(kLevel);
    EXPECT_LT(cv::norm(level.u - cv::Vec3d(1, 0, 0)), 1e-12);
    EXPECT_LT(cv::norm(level.v - cv::Vec3d(0, 1, 0)), 1e-12);
    const PlaneBasis tilted = basisOf(kTilted);
    EXPECT_NEAR(tilted.u.dot(tilted.v), 0.0, 1e-12);
    EXPECT_NEAR(tilted.v.dot(cv::Vec3d(kTilted.normal)), 0.0, 1e-6);
    EXPECT_GT(tilted.v[1], 0.0) << "v runs down the picture";
}

TEST(PlaneBasis, PixelOnPlaneProjectsBackAndLiesOnThePlane) {
    const cv::Point2f pixel(400.0F, 100.0F);
    const cv::Vec3d point = pixelOnPlane(kCamera, kTilted, pixel);
    EXPECT_NEAR(cv::Vec3d(kTilted.normal).dot(point), 500.0, 1e-4);
    EXPECT_NEAR(point[0] * 600.0 / point[2] + 320.0, 400.0, 1e-9);
    EXPECT_NEAR(point[1] * 500.0 / point[2] + 240.0, 100.0, 1e-9);
}

TEST(PlaneBasis, SidesAreMeasuredInMillimetres) {
    // A square of 100 pixels at 1000 mm, with fx 600 and fy 500.
    const std::vector<cv::Point2f> square{{200, 100}, {300, 100}, {300, 200}, {200, 200},
                                          {190, 90},  {310, 90},  {310, 210}, {190, 210}};
    const cv::Size2d sides = groundSides(kCamera, kLevel, square);
    EXPECT_NEAR(sides.width, 166.667, 1e-3);
    EXPECT_NEAR(sides.height, 200.0, 1e-3);
}

}  // namespace
}  // namespace quorvel::command
