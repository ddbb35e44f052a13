// SPDX-License-Identifier: Apache-2.0
// Exact depths against values computed by hand. The default camera has fx = fy = 600 and its middle at (320, 240).
#include <cmath>
#include <cstdint>
#include <stdexcept>

#include <gtest/gtest.h>

#include "sim/render.h"
#include "sim/test_scenes.h"

namespace quorvel::sim {
namespace {

TEST(Depth, FlatSurfaceLiesAtItsDistanceEverywhere) {
    const cv::Mat depth = renderDepthExact(flatScene(1234.5));
    ASSERT_EQ(depth.type(), CV_64FC1);
    ASSERT_EQ(depth.size(), cv::Size(640, 480));
    EXPECT_EQ(cv::countNonZero(depth != 1234.5), 0);
}

TEST(Depth, TiltedSurfaceFulfilsThePlaneEquation) {
    Scene scene = flatScene();
    scene.surface.tiltXDeg = 17.0;
    scene.surface.tiltYDeg = -9.0;
    const double a = 17.0 * CV_PI / 180.0;
    const double b = -9.0 * CV_PI / 180.0;
    const cv::Vec3d normal(std::cos(a) * std::sin(b), -std::sin(a), std::cos(a) * std::cos(b));
    const cv::Mat depth = renderDepthExact(scene);
    for (int row = 0; row < 480; row += 7) {
        for (int col = 0; col < 640; col += 7) {
            const double z = depth.at<double>(row, col);
            const cv::Vec3d point((col - 320.0) * z / 600.0, (row - 240.0) * z / 600.0, z);
            ASSERT_NEAR(normal.dot(point), 1000.0, 1e-6) << "pixel (" << col << ", " << row << ")";
        }
    }
}

TEST(Depth, TiltAboutXByHand) {
    Scene scene = flatScene();
    scene.surface.tiltXDeg = 30.0;
    const cv::Mat depth = renderDepthExact(scene);
    // 1000 / (cos 30 - y sin 30) with y = (row - 240) / 600
    EXPECT_NEAR(depth.at<double>(240, 320), 1154.70054, 1e-4);
    EXPECT_NEAR(depth.at<double>(0, 320), 938.06395, 1e-4);
    EXPECT_NEAR(depth.at<double>(479, 5), 1499.56797, 1e-4);
}

TEST(Depth, BoundedSurfaceEndsAtItsExtent) {
    Scene scene = flatScene();
    scene.surface.halfExtent = 200.0;  // 120 pixels at 1 m
    const cv::Mat depth = renderDepthExact(scene);
    EXPECT_EQ(depth.at<double>(240, 440), 1000.0);
    EXPECT_EQ(depth.at<double>(240, 441), 0.0);
    EXPECT_EQ(depth.at<double>(120, 200), 1000.0);
    EXPECT_EQ(depth.at<double>(119, 200), 0.0);
    EXPECT_EQ(cv::countNonZero(depth), 241 * 241);
}

TEST(Depth, SurfaceBeyondTheHorizonIsNotSeen) {
    Scene scene = flatScene();
    scene.surface.tiltXDeg = 75.0;  // horizon at y = cos 75 / sin 75, which is row 400.8
    const cv::Mat depth = renderDepthExact(scene);
    EXPECT_GT(depth.at<double>(400, 320), 100000.0);
    EXPECT_EQ(depth.at<double>(401, 320), 0.0);
}

TEST(Depth, BoxTopCoversExactlyItsProjection) {
    Scene scene = flatScene();
    scene.boxes = {{0.0, 0.0, 0.0, 300.0, 200.0, 150.0, cv::Vec3b()}};
    const cv::Mat depth = renderDepthExact(scene);
    // The top lies at 850 mm: half sides of 150 and 100 mm are 105.88 and 70.59 pixels.
    EXPECT_NEAR(depth.at<double>(240, 320), 850.0, 1e-9);
    EXPECT_NEAR(depth.at<double>(240 - 70, 320 - 105), 850.0, 1e-9);
    EXPECT_EQ(depth.at<double>(240, 320 + 106), 1000.0);
    EXPECT_EQ(depth.at<double>(240 + 71, 320), 1000.0);
    EXPECT_EQ(cv::countNonZero(depth < 999.0), 211 * 141);
}

TEST(Depth, BoxSideIsMetWhereTheRayCrossesIt) {
    Scene scene = flatScene();
    scene.boxes = {{300.0, 0.0, 0.0, 100.0, 100.0, 200.0, cv::Vec3b()}};
    const cv::Mat depth = renderDepthExact(scene);
    // The side at x = 250 mm is seen from column 470 (ground) to 507.5 (top); at column 490 z = 250 * 600 / 170.
    EXPECT_EQ(depth.at<double>(240, 469), 1000.0);
    EXPECT_NEAR(depth.at<double>(240, 490), 882.35294, 1e-4);
    EXPECT_NEAR(depth.at<double>(240, 507), 802.13904, 1e-4);
    EXPECT_NEAR(depth.at<double>(240, 508), 800.0, 1e-9);
}

TEST(Depth, QuarterTurnSwapsTheSides) {
    Scene turned = flatScene();
    turned.boxes = {{40.0, -30.0, 90.0, 300.0, 120.0, 80.0, cv::Vec3b()}};
    Scene swapped = flatScene();
    swapped.boxes = {{40.0, -30.0, 0.0, 120.0, 300.0, 80.0, cv::Vec3b()}};
    EXPECT_EQ(countDifferent(renderDepthExact(turned), renderDepthExact(swapped)), 0);
}

TEST(Depth, YawIsClockwiseInThePicture) {
    Scene scene = flatScene();
    scene.boxes = {{0.0, 0.0, 45.0, 400.0, 40.0, 10.0, cv::Vec3b()}};
    const cv::Mat depth = renderDepthExact(scene);
    EXPECT_NEAR(depth.at<double>(240 + 70, 320 + 70), 990.0, 1e-9) << "lower right lies on the box";
    EXPECT_EQ(depth.at<double>(240 - 70, 320 + 70), 1000.0) << "upper right does not";
}

TEST(Depth, CylinderSilhouetteIsADisc) {
    Scene scene = flatScene();
    scene.cylinders = {{0.0, 0.0, 160.0, 100.0, cv::Vec3b()}};
    const cv::Mat depth = renderDepthExact(scene);
    // The top lies at 900 mm, its radius of 80 mm is 53.33 pixels there.
    int wrong = 0;
    for (int row = 0; row < 480; ++row) {
        for (int col = 0; col < 640; ++col) {
            const bool inside = std::hypot(col - 320, row - 240) <= 80.0 / 900.0 * 600.0;
            wrong += std::abs(depth.at<double>(row, col) - (inside ? 900.0 : 1000.0)) > 1e-9 ? 1 : 0;
        }
    }
    EXPECT_EQ(wrong, 0) << "pixels that are neither disc nor surface where they should be";
}

TEST(Depth, CylinderSideIsMetWhereTheRayCrossesIt) {
    Scene scene = flatScene();
    scene.cylinders = {{300.0, 0.0, 160.0, 100.0, cv::Vec3b()}};
    const cv::Mat depth = renderDepthExact(scene);
    // In the middle row the near side is at x = 220 mm: columns 452 to 466.67.
    EXPECT_EQ(depth.at<double>(240, 451), 1000.0);
    EXPECT_NEAR(depth.at<double>(240, 460), 220.0 * 600.0 / 140.0, 1e-6);
    EXPECT_NEAR(depth.at<double>(240, 467), 900.0, 1e-9);
}

TEST(Depth, TheNearestOfOverlappingObjectsIsSeen) {
    Scene scene = flatScene();
    scene.boxes = {{0.0, 0.0, 0.0, 100.0, 100.0, 50.0, cv::Vec3b()}, {0.0, 0.0, 0.0, 300.0, 300.0, 20.0, cv::Vec3b()}};
    scene.cylinders = {{0.0, 0.0, 40.0, 90.0, cv::Vec3b()}};
    const cv::Mat depth = renderDepthExact(scene);
    EXPECT_NEAR(depth.at<double>(240, 320), 910.0, 1e-9);
    EXPECT_NEAR(depth.at<double>(240, 345), 950.0, 1e-9);
    EXPECT_NEAR(depth.at<double>(240, 400), 980.0, 1e-9);
}

TEST(Depth, ObjectOutsideThePictureChangesNothing) {
    Scene scene = flatScene();
    scene.boxes = {{5000.0, 0.0, 0.0, 100.0, 100.0, 50.0, cv::Vec3b()}};
    EXPECT_EQ(cv::countNonZero(renderDepthExact(scene) != 1000.0), 0);
}

TEST(Depth, AnyPictureSizeAndIntrinsics) {
    Scene scene = flatScene(700.0);
    scene.camera = {200.0, 300.0, -10.0, 60.0, 101, 7};
    scene.surface.tiltYDeg = 30.0;
    const cv::Mat depth = renderDepthExact(scene);
    ASSERT_EQ(depth.size(), cv::Size(101, 7));
    // 700 / (x sin 30 + cos 30) with x = (90 + 10) / 200
    EXPECT_NEAR(depth.at<double>(3, 90), 627.22587, 1e-4);
    scene.camera = {10.0, 10.0, 0.0, 0.0, 1, 1};
    EXPECT_EQ(renderDepthExact(scene).total(), 1U);
}

TEST(Depth, SensorDepthIsRoundedToTheNearestMillimetre) {
    EXPECT_EQ(renderDepth(flatScene(1000.4)).at<std::uint16_t>(10, 10), 1000);
    EXPECT_EQ(renderDepth(flatScene(1000.6)).at<std::uint16_t>(10, 10), 1001);
    EXPECT_EQ(render(flatScene(1000.6)).depth.type(), CV_16UC1);
}

TEST(Depth, BeyondSixteenBitsThereIsNoMeasurement) {
    EXPECT_EQ(renderDepth(flatScene(65535.4)).at<std::uint16_t>(0, 0), 65535);
    EXPECT_EQ(renderDepth(flatScene(65535.6)).at<std::uint16_t>(0, 0), 0);
    EXPECT_EQ(renderDepth(flatScene(70000.0)).at<std::uint16_t>(0, 0), 0);
}

TEST(Depth, UnrenderableSceneIsRefusedWithTheReason) {
    Scene scene = flatScene();
    scene.camera.width = 0;
    try {
        render(scene);
        FAIL() << "a picture without columns was rendered";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "camera.width: expected a number from 1 to 16384, found 0");
    }
    EXPECT_THROW(renderDepth(scene), std::invalid_argument);
    EXPECT_THROW(renderDepthExact(scene), std::invalid_argument);
    EXPECT_THROW(renderEmpty(scene), std::invalid_argument);
}

}  // namespace
}  // namespace quorvel::sim
