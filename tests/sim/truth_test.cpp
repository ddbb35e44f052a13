// SPDX-License-Identifier: Apache-2.0
#include "sim/truth.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "sim/render.h"
#include "sim/test_scenes.h"

namespace quorvel::sim {
namespace {

void expectNear(const cv::Point2d& found, const cv::Point2d& expected, const char* which) {
    EXPECT_NEAR(found.x, expected.x, 1e-6) << which;
    EXPECT_NEAR(found.y, expected.y, 1e-6) << which;
}

TEST(PlaneTruth, NormalPointsAwayFromTheCamera) {
    Scene scene = flatScene(900.0);
    EXPECT_EQ(planeTruth(scene).normal, cv::Vec3d(0.0, 0.0, 1.0));
    EXPECT_EQ(planeTruth(scene).offset, 900.0);
    scene.surface.tiltXDeg = 30.0;
    EXPECT_NEAR(cv::norm(planeTruth(scene).normal - cv::Vec3d(0.0, -0.5, 0.8660254037844)), 0.0, 1e-11);
    scene.surface.tiltXDeg = 0.0;
    scene.surface.tiltYDeg = 30.0;
    EXPECT_NEAR(cv::norm(planeTruth(scene).normal - cv::Vec3d(0.5, 0.0, 0.8660254037844)), 0.0, 1e-11);
    EXPECT_EQ(planeTruth(scene).offset, 900.0);
}

TEST(ObjectTruth, BoxCornersByHand) {
    Scene scene = flatScene();
    scene.boxes = {{0.0, 0.0, 0.0, 300.0, 200.0, 200.0, cv::Vec3b()}};
    const ObjectTruth truth = objectTruth(scene).at(0);
    ASSERT_EQ(truth.corners.size(), 8U);
    // Ground at 1000 mm: 150 and 100 mm are 90 and 60 pixels; top at 800 mm: 112.5 and 75 pixels.
    expectNear(truth.corners[0], {230.0, 180.0}, "ground -x -y");
    expectNear(truth.corners[1], {410.0, 180.0}, "ground +x -y");
    expectNear(truth.corners[2], {410.0, 300.0}, "ground +x +y");
    expectNear(truth.corners[3], {230.0, 300.0}, "ground -x +y");
    expectNear(truth.corners[4], {207.5, 165.0}, "top -x -y");
    expectNear(truth.corners[5], {432.5, 165.0}, "top +x -y");
    expectNear(truth.corners[6], {432.5, 315.0}, "top +x +y");
    expectNear(truth.corners[7], {207.5, 315.0}, "top -x +y");
}

TEST(ObjectTruth, CornersFollowYawAndPlace) {
    Scene scene = flatScene();
    scene.boxes = {{100.0, -50.0, 90.0, 200.0, 100.0, 200.0, cv::Vec3b()}};
    const ObjectTruth truth = objectTruth(scene).at(0);
    // The length axis points down the picture: corner (-x, -y) is at (100 + 50, -50 - 100) mm.
    expectNear(truth.corners[0], {410.0, 150.0}, "ground -x -y");
    expectNear(truth.corners[1], {410.0, 270.0}, "ground +x -y");
    expectNear(truth.corners[6], {357.5, 277.5}, "top +x +y");
}

TEST(ObjectTruth, CornersOnATiltedSurfaceByHand) {
    Scene scene = flatScene();
    scene.surface.tiltXDeg = 30.0;
    scene.boxes = {{0.0, 100.0, 0.0, 200.0, 200.0, 100.0, cv::Vec3b()}};
    const ObjectTruth truth = objectTruth(scene).at(0);
    // Plane point (100, 200): (100, 200 cos 30, 1154.7005 + 200 sin 30); its top: + 100 (0, sin 30, -cos 30).
    const double groundZ = 1254.7005383793;
    expectNear(truth.corners[2], {320.0 + 60000.0 / groundZ, 240.0 + 600.0 * 173.2050807569 / groundZ}, "ground");
    const double topZ = groundZ - 86.6025403784;
    expectNear(truth.corners[6], {320.0 + 60000.0 / topZ, 240.0 + 600.0 * 223.2050807569 / topZ}, "top");
}

TEST(ObjectTruth, LongerSideGivesLengthAndYaw) {
    Scene scene = flatScene();
    scene.boxes = {{0.0, 0.0, 20.0, 200.0, 100.0, 50.0, cv::Vec3b()},
                   {0.0, 0.0, 20.0, 100.0, 200.0, 50.0, cv::Vec3b()},
                   {0.0, 0.0, -30.0, 200.0, 100.0, 50.0, cv::Vec3b()},
                   {0.0, 0.0, 180.0, 100.0, 100.0, 50.0, cv::Vec3b()},
                   {0.0, 0.0, -270.0, 200.0, 100.0, 50.0, cv::Vec3b()}};
    const std::vector<ObjectTruth> truths = objectTruth(scene);
    const std::vector<double> yaws{20.0, 110.0, 150.0, 0.0, 90.0};
    for (std::size_t i = 0; i < truths.size(); ++i) {
        EXPECT_EQ(truths[i].shape, "box");
        EXPECT_EQ(truths[i].yawDeg, yaws[i]) << "box " << i;
        EXPECT_EQ(truths[i].length, i == 3 ? 100.0 : 200.0) << "box " << i;
        EXPECT_EQ(truths[i].width, 100.0) << "box " << i;
        EXPECT_EQ(truths[i].height, 50.0) << "box " << i;
    }
}

TEST(ObjectTruth, CylinderHasItsBoundingSquare) {
    Scene scene = flatScene();
    scene.boxes = {{0.0, 0.0, 0.0, 10.0, 10.0, 10.0, cv::Vec3b()}};
    scene.cylinders = {{100.0, 50.0, 200.0, 200.0, cv::Vec3b()}};
    const std::vector<ObjectTruth> truths = objectTruth(scene);
    ASSERT_EQ(truths.size(), 2U);
    EXPECT_EQ(truths[1].shape, "cylinder");
    EXPECT_EQ(truths[1].x, 100.0);
    EXPECT_EQ(truths[1].y, 50.0);
    EXPECT_EQ(truths[1].yawDeg, 0.0);
    EXPECT_EQ(truths[1].length, 200.0);
    EXPECT_EQ(truths[1].width, 200.0);
    expectNear(truths[1].corners.at(0), {320.0, 210.0}, "ground -x -y");
    expectNear(truths[1].corners.at(6), {470.0, 352.5}, "top +x +y");
}

TEST(ObjectTruth, InViewUpToThePictureBorder) {
    Scene scene = flatScene();
    scene.boxes = {{400.0, 0.0, 0.0, 53.0, 100.0, 200.0, cv::Vec3b()}};  // top edge at 320 + 426.5 * 0.75 = 639.875
    EXPECT_TRUE(objectTruth(scene).at(0).inView);
    scene.boxes[0].length = 54.0;  // 640.25
    EXPECT_FALSE(objectTruth(scene).at(0).inView);
    scene.boxes[0] = {0.0, -300.0, 0.0, 100.0, 100.0, 200.0, cv::Vec3b()};  // above the upper border
    EXPECT_FALSE(objectTruth(scene).at(0).inView);
}

TEST(ObjectTruth, BehindTheCameraIsNotInView) {
    Scene scene = flatScene(500.0);
    scene.surface.tiltXDeg = 60.0;
    scene.boxes = {{0.0, -3000.0, 0.0, 100.0, 100.0, 50.0, cv::Vec3b()}};
    const ObjectTruth truth = objectTruth(scene).at(0);
    EXPECT_FALSE(truth.inView);
    EXPECT_TRUE(std::isnan(truth.corners.at(0).x));
    EXPECT_EQ(objectNearestMiddle(scene), -1);
}

/// Whether a position lies within the bounding rectangle of the positions, with a margin in pixels.
bool within(const std::vector<cv::Point2d>& positions, int col, int row, double margin) {
    const auto byX =
        std::minmax_element(positions.begin(), positions.end(), [](const auto& a, const auto& b) { return a.x < b.x; });
    const auto byY =
        std::minmax_element(positions.begin(), positions.end(), [](const auto& a, const auto& b) { return a.y < b.y; });
    return col >= byX.first->x - margin && col <= byX.second->x + margin && row >= byY.first->y - margin &&
           row <= byY.second->y + margin;
}

TEST(ObjectTruth, RenderedBoxFillsItsCorners) {
    for (std::uint32_t seed = 0; seed < 100; ++seed) {
        Scene scene = randomScene(seed);
        scene.boxes.resize(1);
        scene.boxes[0].x *= 0.3;
        scene.boxes[0].y *= 0.3;
        scene.cylinders.clear();
        Scene empty = scene;
        empty.boxes.clear();
        const std::vector<cv::Point2d> corners = objectTruth(scene).at(0).corners;
        const cv::Mat occupied = renderDepthExact(scene) < renderDepthExact(empty);
        std::vector<cv::Point> pixels;
        for (int row = 0; row < occupied.rows; ++row) {
            for (int col = 0; col < occupied.cols; ++col) {
                if (occupied.at<std::uint8_t>(row, col) != 0) {
                    pixels.emplace_back(col, row);
                    EXPECT_TRUE(within(corners, col, row, 1e-6)) << "seed " << seed << ": pixel (" << col << ", " << row
                                                                 << ") lies outside the projected corners";
                }
            }
        }
        ASSERT_FALSE(pixels.empty()) << "seed " << seed;
        const std::vector<cv::Point2d> seen(pixels.begin(), pixels.end());
        for (const cv::Point2d& corner : corners) {
            const int col = static_cast<int>(std::lround(std::clamp(corner.x, 0.0, scene.camera.width - 1.0)));
            const int row = static_cast<int>(std::lround(std::clamp(corner.y, 0.0, scene.camera.height - 1.0)));
            EXPECT_TRUE(within(seen, col, row, 2.0)) << "seed " << seed << ": corner " << corner << " is not filled";
        }
    }
}

TEST(NearestMiddle, TopMiddleDecides) {
    Scene scene = flatScene();
    EXPECT_EQ(objectNearestMiddle(scene), -1);
    scene.boxes = {{200.0, 0.0, 0.0, 100.0, 100.0, 50.0, cv::Vec3b()},
                   {-100.0, 0.0, 0.0, 100.0, 100.0, 50.0, cv::Vec3b()}};
    EXPECT_EQ(objectNearestMiddle(scene), 1);
    scene.cylinders = {{0.0, 95.0, 60.0, 10.0, cv::Vec3b()}};  // 57.6 pixels off; the box's 63.2
    EXPECT_EQ(objectNearestMiddle(scene), 2);
    scene.cylinders[0].height = 150.0;  // the same place, but its raised top is 67.1 pixels off
    EXPECT_EQ(objectNearestMiddle(scene), 1);
}

TEST(NearestMiddle, IsMeasuredFromThePicturesMiddleNotThePrincipalPoint) {
    Scene scene = flatScene();
    scene.camera.cx = 120.0;
    scene.boxes = {{0.0, 0.0, 0.0, 100.0, 100.0, 50.0, cv::Vec3b()},
                   {300.0, 0.0, 0.0, 100.0, 100.0, 50.0, cv::Vec3b()}};
    EXPECT_EQ(objectNearestMiddle(scene), 1);
}

}  // namespace
}  // namespace quorvel::sim
