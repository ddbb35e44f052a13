// SPDX-License-Identifier: Apache-2.0
// What the colour image shows, as far as it can be told without looking at it.
#include <cmath>

#include <gtest/gtest.h>

#include "sim/render.h"
#include "sim/test_scenes.h"

namespace quorvel::sim {
namespace {

double brightness(const cv::Mat& color, const cv::Rect& area) {
    const cv::Scalar mean = cv::mean(color(area));
    return (mean[0] + mean[1] + mean[2]) / 3.0;
}

Scene boxAt(double x, double y, double height) {
    Scene scene = flatScene();
    scene.boxes.emplace_back();
    scene.boxes[0].x = x;
    scene.boxes[0].y = y;
    scene.boxes[0].height = height;
    return scene;
}

TEST(Color, HasTheSizeOfThePicture) {
    Scene scene = flatScene();
    scene.camera = smallCamera();
    const cv::Mat color = render(scene).color;
    EXPECT_EQ(color.type(), CV_8UC3);
    EXPECT_EQ(color.size(), cv::Size(64, 48));
}

TEST(Color, BoardHasGrain) {
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(render(flatScene()).color, mean, deviation);
    EXPECT_GT(mean[2], mean[1]) << "wood is more red than green";
    EXPECT_GT(mean[1], mean[0]) << "and more green than blue";
    EXPECT_GT(deviation[1], 6.0) << "a plain area has no grain";
    EXPECT_LT(deviation[1], 40.0) << "objects could not be told from such a pattern";
}

TEST(Color, CornersAreDarkerThanTheMiddle) {
    const cv::Mat color = render(flatScene()).color;
    const double middle = brightness(color, {220, 140, 200, 200});
    const double corners = (brightness(color, {0, 0, 80, 80}) + brightness(color, {560, 0, 80, 80}) +
                            brightness(color, {0, 400, 80, 80}) + brightness(color, {560, 400, 80, 80})) /
                           4.0;
    EXPECT_NEAR(corners / middle, 0.86, 0.05);
}

TEST(Color, ShadowFallsToTheLowerRight) {
    const Scene scene = boxAt(0.0, 0.0, 100.0);  // its top covers 33 pixels around the middle
    const cv::Mat occupied = render(scene).color;
    const cv::Mat empty = renderEmpty(scene).color;
    const auto ratio = [&](const cv::Rect& area) { return brightness(occupied, area) / brightness(empty, area); };
    const double lowerRight = ratio({358, 278, 10, 10});
    const double upperLeft = ratio({272, 192, 10, 10});
    EXPECT_LT(lowerRight, 0.75);
    EXPECT_GT(upperLeft, lowerRight + 0.1);
    EXPECT_LT(upperLeft, 1.0) << "contact shadow on the lit side";
    EXPECT_EQ(ratio({500, 20, 100, 100}), 1.0) << "far away nothing changes";
}

TEST(Color, SideTowardsTheLampIsBrighter) {
    // Boxes to the left and right of the axis show their sides facing +x and -x, the lamp being at -x.
    const cv::Mat left = render(boxAt(-300.0, 0.0, 200.0)).color;
    const cv::Mat right = render(boxAt(300.0, 0.0, 200.0)).color;
    EXPECT_GT(brightness(right, {475, 230, 25, 20}), 1.15 * brightness(left, {140, 230, 25, 20}));
}

TEST(Color, ObjectHasItsColor) {
    Scene scene = flatScene();
    scene.boxes.emplace_back();
    scene.boxes[0].color = {200, 40, 30};
    scene.cylinders.emplace_back();
    scene.cylinders[0].x = 250.0;
    scene.cylinders[0].color = {30, 40, 200};
    const cv::Mat color = render(scene).color;
    const cv::Scalar box = cv::mean(color(cv::Rect(290, 212, 60, 10)));
    EXPECT_GT(box[0], 3.0 * box[2]) << "a blue box";
    const cv::Scalar lid = cv::mean(color(cv::Rect(477, 230, 20, 20)));
    EXPECT_GT(lid[2], 3.0 * lid[0]) << "a red lid";
}

TEST(Color, ParcelTapeRunsAlongTheLength) {
    Scene scene = flatScene();
    scene.boxes.emplace_back();
    scene.boxes[0].length = 300.0;
    scene.boxes[0].width = 200.0;
    scene.boxes[0].color = {10, 10, 10};
    const cv::Mat color = render(scene).color;
    EXPECT_GT(brightness(color, {250, 243, 140, 6}), brightness(color, {250, 200, 140, 6}) + 40.0);
}

TEST(Color, EdgesAreSmooth) {
    // A white box against darkness: pixels on its outline lie between the two brightnesses, nothing else does.
    Scene scene = flatScene();
    scene.surface.halfExtent = 20.0;
    scene.boxes = {{0.0, 0.0, 20.0, 300.0, 80.0, 100.0, cv::Vec3b(255, 255, 255)}};
    const cv::Mat color = render(scene).color;
    int between = 0;
    for (int row = 0; row < color.rows; ++row) {
        for (int col = 0; col < color.cols; ++col) {
            const int green = color.at<cv::Vec3b>(row, col)[1];
            between += green > 80 && green < 170 ? 1 : 0;
        }
    }
    EXPECT_GT(between, 150) << "the outline is some 500 pixels long";
}

TEST(Color, WhereNothingIsHitItIsDark) {
    Scene scene = flatScene();
    scene.surface.halfExtent = 100.0;
    EXPECT_LT(brightness(render(scene).color, {0, 0, 200, 100}), 50.0);
}

}  // namespace
}  // namespace quorvel::sim
