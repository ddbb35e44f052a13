// SPDX-License-Identifier: Apache-2.0
#include "sim/geometry.h"

#include <cmath>

#include <gtest/gtest.h>

namespace quorvel::sim {
namespace {

TEST(SinCosDeg, RightAnglesAndThirtyDegreesAreExact) {
    EXPECT_EQ(sinCosDeg(0.0).sin, 0.0);
    EXPECT_EQ(sinCosDeg(0.0).cos, 1.0);
    EXPECT_EQ(sinCosDeg(90.0).sin, 1.0);
    EXPECT_EQ(sinCosDeg(90.0).cos, 0.0);
    EXPECT_EQ(sinCosDeg(180.0).sin, 0.0);
    EXPECT_EQ(sinCosDeg(180.0).cos, -1.0);
    EXPECT_EQ(sinCosDeg(-30.0).sin, -0.5);
    EXPECT_EQ(sinCosDeg(60.0).cos, 0.5);
}

TEST(SinCosDeg, IsAMultipleOfTheGridWithinHalfAStep) {
    for (int degrees = -360; degrees <= 360; ++degrees) {
        const SinCos value = sinCosDeg(degrees);
        EXPECT_EQ(std::ldexp(value.sin, 40), std::round(std::ldexp(value.sin, 40))) << degrees << " degrees";
        EXPECT_EQ(std::ldexp(value.cos, 40), std::round(std::ldexp(value.cos, 40))) << degrees << " degrees";
        EXPECT_NEAR(value.sin, std::sin(degrees * 3.141592653589793 / 180.0), std::ldexp(0.51, -40)) << degrees;
        EXPECT_NEAR(value.cos, std::cos(degrees * 3.141592653589793 / 180.0), std::ldexp(0.51, -40)) << degrees;
    }
}

TEST(SurfacePose, WithoutTiltFacesTheCamera) {
    const Pose pose = surfacePose({800.0, 0.0, 0.0, 0.0});
    EXPECT_EQ(pose.origin, cv::Vec3d(0.0, 0.0, 800.0));
    EXPECT_EQ(pose.x, cv::Vec3d(1.0, 0.0, 0.0));
    EXPECT_EQ(pose.y, cv::Vec3d(0.0, 1.0, 0.0));
    EXPECT_EQ(pose.up, cv::Vec3d(0.0, 0.0, -1.0));
}

TEST(SurfacePose, TiltAboutXBringsTheLowerEdgeFarther) {
    // Normal (0, -sin 30, cos 30): the axis meets the plane at 1000 / cos 30, plane y leans away from the camera.
    const Pose pose = surfacePose({1000.0, 30.0, 0.0, 0.0});
    EXPECT_NEAR(pose.origin[2], 1154.7005383793, 1e-6);
    EXPECT_NEAR(cv::norm(pose.y - cv::Vec3d(0.0, 0.8660254037844, 0.5)), 0.0, 1e-11);
    EXPECT_NEAR(cv::norm(pose.up - cv::Vec3d(0.0, 0.5, -0.8660254037844)), 0.0, 1e-11);
}

TEST(SurfacePose, TiltAboutYBringsTheRightEdgeNearer) {
    const Pose pose = surfacePose({1000.0, 0.0, 30.0, 0.0});
    EXPECT_NEAR(cv::norm(pose.x - cv::Vec3d(0.8660254037844, 0.0, -0.5)), 0.0, 1e-11);
    EXPECT_NEAR(cv::norm(pose.up - cv::Vec3d(-0.5, 0.0, -0.8660254037844)), 0.0, 1e-11);
}

TEST(SurfacePose, AxesAreOrthonormalForEveryTilt) {
    for (int a = -80; a <= 80; a += 20) {
        for (int b = -80; b <= 80; b += 20) {
            const Pose pose = surfacePose({1000.0, static_cast<double>(a), static_cast<double>(b), 0.0});
            EXPECT_NEAR(cv::norm(pose.x), 1.0, 1e-11) << a << ", " << b;
            EXPECT_NEAR(cv::norm(pose.y), 1.0, 1e-11) << a << ", " << b;
            EXPECT_NEAR(cv::norm(pose.x.cross(pose.y) + pose.up), 0.0, 1e-11) << a << ", " << b;
            EXPECT_LT(pose.up[2], 0.0) << a << ", " << b;
        }
    }
}

TEST(StandingPose, YawTurnsFromPlaneXTowardsPlaneY) {
    const Pose pose = standingPose(surfacePose({1000.0, 0.0, 0.0, 0.0}), 50.0, -20.0, sinCosDeg(90.0));
    EXPECT_EQ(pose.origin, cv::Vec3d(50.0, -20.0, 1000.0));
    EXPECT_EQ(pose.x, cv::Vec3d(0.0, 1.0, 0.0));
    EXPECT_EQ(pose.y, cv::Vec3d(-1.0, 0.0, 0.0));
}

TEST(Pose, LocalAndCameraCoordinatesInvertEachOther) {
    const Pose pose = standingPose(surfacePose({900.0, 20.0, -35.0, 0.0}), 120.0, 60.0, sinCosDeg(25.0));
    const cv::Vec3d local(10.0, -70.0, 33.0);
    EXPECT_NEAR(cv::norm(pose.pointToLocal(pose.pointToCamera(local)) - local), 0.0, 1e-8);
}

TEST(Projection, ARayPassesItsOwnPixel) {
    const Camera camera{500.0, 400.0, 310.0, 250.0, 640, 480};
    EXPECT_EQ(rayThrough(camera, 310.0, 250.0), cv::Vec3d(0.0, 0.0, 1.0));
    EXPECT_EQ(rayThrough(camera, 360.0, 150.0), cv::Vec3d(0.1, -0.25, 1.0));
    const cv::Point2d position = project(camera, 800.0 * rayThrough(camera, 360.0, 150.0));
    EXPECT_NEAR(position.x, 360.0, 1e-9);
    EXPECT_NEAR(position.y, 150.0, 1e-9);
}

TEST(Projection, BehindTheCameraIsNaN) {
    EXPECT_TRUE(std::isnan(project(Camera(), {1.0, 2.0, -3.0}).x));
    EXPECT_TRUE(std::isnan(project(Camera(), {1.0, 2.0, 0.0}).y));
}

}  // namespace
}  // namespace quorvel::sim
