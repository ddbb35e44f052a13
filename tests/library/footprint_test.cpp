// SPDX-License-Identifier: Apache-2.0
#include "measure/footprint.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "library/fast_forms.h"
#include "library/measure_draws.h"
#include "library/plain/footprint.h"
#include "library/same_result.h"
#include "support/loop_variants.h"

namespace quorvel::test {

namespace {

using plain::FootprintInput;

/// A 640 x 480 camera that looks straight at the plane z = 1000.
FootprintInput straightCamera() {
    FootprintInput input;
    input.small = {160, 120};
    input.normal = {0, 0, 1};
    input.offset = 1000;
    input.cx = 320;
    input.cy = 240;
    input.fx = 500;
    input.fy = 500;
    input.downScale = 4;
    input.effectiveRegion = {270, 190, 100, 100};
    return input;
}

MeasureResult general(const cv::Mat& cloud, const FootprintInput& in) {
    return fast::measureFootprint(cloud, in);
}

MeasureResult withoutMargin(const cv::Mat& cloud, const FootprintInput& in) {
    return fast::measureFootprintWithoutMargin(cloud, in);
}

/// One point a millimetre: x from -halfX to halfX, y from -halfY to halfY, all at z = 900, shifted by `by`.
cv::Mat topFace(int halfX, int halfY, const cv::Point& by = {0, 0}) {
    cv::Mat cloud(2 * halfY + 1, 2 * halfX + 1, CV_32FC3);
    for (int row = 0; row < cloud.rows; ++row) {
        for (int column = 0; column < cloud.cols; ++column) {
            cloud.at<cv::Vec3f>(row, column) = {static_cast<float>(column - halfX + by.x),
                                                static_cast<float>(row - halfY + by.y), 900};
        }
    }
    return cloud;
}

cv::Mat cloudOf(const std::vector<cv::Vec3f>& points) {
    return cv::Mat(points, true).reshape(3, 1);
}

struct Extent {
    float left;
    float right;
    float top;
    float bottom;
};

/// Checks that four corners starting at `first` are those of an upright rectangle.
void expectUpright(const MeasureResult& result, std::size_t first, const Extent& extent) {
    ASSERT_EQ(result.corners.size(), 8U);
    int counts[4] = {0, 0, 0, 0};
    for (std::size_t k = first; k < first + 4; ++k) {
        const cv::Point2f& corner = result.corners[k];
        EXPECT_TRUE(std::fabs(corner.x - extent.left) < 1e-3F || std::fabs(corner.x - extent.right) < 1e-3F) << corner;
        EXPECT_TRUE(std::fabs(corner.y - extent.top) < 1e-3F || std::fabs(corner.y - extent.bottom) < 1e-3F) << corner;
        const bool right = corner.x > (extent.left + extent.right) / 2;
        const bool low = corner.y > (extent.top + extent.bottom) / 2;
        ++counts[(right ? 1 : 0) + (low ? 2 : 0)];
    }
    for (const int count : counts) {
        EXPECT_EQ(count, 1) << "every corner once";
    }
}

TEST(Footprint, MeasuresAnUprightBox) {
    // 101 x 61 points, 100 mm above the plane. The side of 60 runs vertically in the picture and grows by
    // 5000 / 6161 * 0.05 = 4.06 % to 62.43. Height 100 - 0.007 (1000 - 100) = 93.7.
    const MeasureResult result = general(topFace(50, 30), straightCamera());
    EXPECT_NEAR(result.length, 100, 1e-3);
    EXPECT_NEAR(result.width, 60 * (5000.0 / 6161 * 0.05 + 1), 1e-3);
    EXPECT_FLOAT_EQ(result.height, 93.7F);
    EXPECT_TRUE(result.inView);
    EXPECT_TRUE(result.onTarget);
    EXPECT_EQ(result.sideMargin, 0.0F);
    // On the ground 500 * 50 / 1000 = 25 and 15 pixels from the middle, at the top 500 / 900 of 50 and 30.
    expectUpright(result, 0, {295, 345, 225, 255});
    expectUpright(result, 4, {320 - 250.0F / 9, 320 + 250.0F / 9, 240 - 150.0F / 9, 240 + 150.0F / 9});
}

TEST(Footprint, LeavesTheSidesOfManyPoints) {
    // 201 x 101 = 20301 points.
    const MeasureResult result = general(topFace(100, 50), straightCamera());
    EXPECT_NEAR(result.length, 200, 1e-3);
    EXPECT_NEAR(result.width, 100, 1e-3);
}

TEST(Footprint, SwapsTheSidesWhenTheVerticalOneIsLonger) {
    const MeasureResult result = general(topFace(30, 50), straightCamera());
    EXPECT_NEAR(result.length, 100 * (5000.0 / 6161 * 0.05 + 1), 1e-3);
    EXPECT_NEAR(result.width, 60, 1e-3);
}

TEST(Footprint, ShrinksADiagonalBox) {
    // Corners (+-60, 0) and (0, +-60): sides of 60 sqrt(2), both at 45 degrees.
    const MeasureResult result =
        general(cloudOf({{60, 0, 900}, {0, 60, 900}, {-60, 0, 900}, {0, -60, 900}}), straightCamera());
    EXPECT_NEAR(result.length, 60 * std::sqrt(2.0) * 0.99, 1e-2);
    EXPECT_NEAR(result.width, 60 * std::sqrt(2.0) * 0.99, 1e-2);
}

TEST(Footprint, NeedsFourPoints) {
    const std::vector<cv::Vec3f> three{{0, 0, 900}, {10, 0, 900}, {0, 10, 900}};
    for (const cv::Mat& cloud : {cv::Mat(cv::Mat::zeros(5, 5, CV_32FC3)), cloudOf({{0, 0, 900}}), cloudOf(three)}) {
        EXPECT_TRUE(isEmptyResult(general(cloud, straightCamera())));
        EXPECT_TRUE(isEmptyResult(withoutMargin(cloud, straightCamera())));
    }
    EXPECT_EQ(
        general(cloudOf({{0, 0, 900}, {10, 0, 900}, {0, 10, 900}, {10, 10, 900}}), straightCamera()).corners.size(),
        8U);
}

TEST(Footprint, FindsNoBoxAroundPointsTooFarOut) {
    // Points thousands of kilometres apart, as impossible intrinsics give them: OpenCV's minAreaRect raises an error.
    const cv::Mat cloud =
        cloudOf({{0, -2147483648.0F, 900}, {1e7F, -2147483648.0F, 900}, {1e7F, 1e9F, 900}, {0, 2e9F, 900}});
    EXPECT_TRUE(isEmptyResult(general(cloud, straightCamera())));
    EXPECT_TRUE(isEmptyResult(withoutMargin(cloud, straightCamera())));
}

TEST(Footprint, AcceptsFourPointsInOnePlace) {
    const MeasureResult result =
        general(cloudOf({{3, 4, 900}, {3, 4, 900}, {3, 4, 900}, {3, 4, 900}}), straightCamera());
    EXPECT_EQ(result.length, 0.0F);
    EXPECT_EQ(result.width, 0.0F);
    EXPECT_FLOAT_EQ(result.height, 93.7F);
}

TEST(Footprint, IsEmptyWhenTheTopMissesTheDetectionArea) {
    FootprintInput input = straightCamera();
    // The ground corners reach to 345, the top's to 347.8: drawn to 348.
    input.effectiveRegion = {349, 190, 50, 100};
    EXPECT_TRUE(isEmptyResult(general(topFace(50, 30), input)));
    EXPECT_TRUE(isEmptyResult(withoutMargin(topFace(50, 30), input)));
    input.effectiveRegion = {348, 190, 50, 100};
    EXPECT_TRUE(general(topFace(50, 30), input).onTarget) << "the top counts, not the ground";
}

TEST(Footprint, ReportsCornersButNoSizesOutOfView) {
    // Shifted by 300 mm the top reaches to 320 + 350 / 900 * 500 = 514; with a principal point at 140 pixels from the
    // right border that is outside.
    FootprintInput input = straightCamera();
    input.cx = 470;
    input.effectiveRegion = {0, 0, 640, 480};
    const MeasureResult result = general(topFace(50, 30, {300, 0}), input);
    EXPECT_EQ(result.corners.size(), 8U);
    EXPECT_FALSE(result.inView);
    EXPECT_TRUE(result.onTarget);
    EXPECT_EQ(result.length, 0.0F);
    EXPECT_EQ(result.width, 0.0F);
    EXPECT_EQ(result.height, 0.0F);
}

TEST(Footprint, CountsACornerOnTheBorderOfThePictureAsInView) {
    // The top's right side lies at 500 * 54 / 900 + 610 = 640 = W exactly, but for float rounding of the rectangle.
    FootprintInput input = straightCamera();
    input.cx = 610;
    input.effectiveRegion = {0, 0, 640, 480};
    const MeasureResult result = general(topFace(54, 30), input);
    ASSERT_EQ(result.corners.size(), 8U);
    float rightmost = 0;
    for (const cv::Point2f& corner : result.corners) {
        rightmost = std::max(rightmost, corner.x);
    }
    ASSERT_EQ(rightmost, 640.0F) << "the example must meet the border";
    EXPECT_TRUE(result.inView);
}

TEST(Footprint, KeepsTheSideBandClearOnlyInTheGeneralVariant) {
    // Margin 60 * 500 / (1000 - 100) * 1.3 = 43.33: x in [43, 596]. The top spans 552.2 ... 607.8 around 580.
    FootprintInput input = straightCamera();
    input.cx = 580;
    input.effectiveRegion = {0, 0, 640, 480};
    input.cameraTypeSet = true;
    input.cameraType = 60;
    const MeasureResult banded = general(topFace(50, 30), input);
    EXPECT_FLOAT_EQ(banded.sideMargin, 60 * 500.0F / 900 * 1.3F);
    EXPECT_FALSE(banded.inView);
    EXPECT_EQ(banded.length, 0.0F);
    const MeasureResult whole = withoutMargin(topFace(50, 30), input);
    EXPECT_EQ(whole.sideMargin, 0.0F);
    EXPECT_TRUE(whole.inView);
    EXPECT_GT(whole.length, 0.0F);
    input.cameraTypeSet = false;
    const MeasureResult unset = general(topFace(50, 30), input);
    EXPECT_EQ(unset.sideMargin, 0.0F);
    EXPECT_TRUE(unset.inView);
}

TEST(Footprint, NeverReportsTheTargetWithoutMargin) {
    MeasureResult variant = withoutMargin(topFace(50, 30), straightCamera());
    EXPECT_FALSE(variant.onTarget);
    variant.onTarget = true;
    EXPECT_TRUE(sameResult(variant, general(topFace(50, 30), straightCamera()))) << "all else is equal";
}

TEST(Footprint, TakesThePictureSizeFromTheSmallImage) {
    // 4 * 80 = 320 pixels wide: the box in the middle of 640 leaves it.
    FootprintInput input = straightCamera();
    input.small = {80, 120};
    EXPECT_FALSE(general(topFace(50, 30), input).inView);
    input.downScale = 8;
    EXPECT_TRUE(general(topFace(50, 30), input).inView);
}

TEST(Footprint, MeasuresTheTopByItsFarthestPointAndTheHeightByTheQuantile) {
    // One spike of 200 mm among 6161 points of 100: the top is projected at z = 800, the height stays 93.7.
    cv::Mat cloud = topFace(50, 30);
    cloud.at<cv::Vec3f>(30, 50)[2] = 800;
    const MeasureResult result = general(cloud, straightCamera());
    EXPECT_FLOAT_EQ(result.height, 93.7F);
    expectUpright(result, 4, {320 - 31.25F, 320 + 31.25F, 240 - 18.75F, 240 + 18.75F});
}

TEST(Footprint, SurvivesPointsThatAreNoNumbers) {
    for (const float odd : {kNaN, kInfinity, -kInfinity}) {
        for (int axis = 0; axis < 3; ++axis) {
            cv::Mat cloud = topFace(5, 5);
            cloud.at<cv::Vec3f>(2, 2)[axis] = odd;
            const MeasureResult result = general(cloud, straightCamera());
            EXPECT_FALSE(result.inView) << odd << " on axis " << axis;
            EXPECT_EQ(result.length, 0.0F) << odd << " on axis " << axis;
        }
    }
}

TEST(Footprint, SurvivesAPictureWithoutPixels) {
    FootprintInput input = straightCamera();
    input.downScale = 0;
    EXPECT_TRUE(isEmptyResult(general(topFace(50, 30), input)));
    input.downScale = 4;
    input.small = {0, 0};
    EXPECT_TRUE(isEmptyResult(general(topFace(50, 30), input)));
}

TEST(Footprint, SurvivesANormalThatHasNoBasis) {
    FootprintInput input = straightCamera();
    input.normal = {0, 0, -1};
    EXPECT_FALSE(general(topFace(50, 30), input).inView);
}

FootprintInput drawInput(Draws& draws) {
    FootprintInput input;
    input.small = {draws.between(10, 40), draws.between(8, 30)};
    input.downScale = draws.between(1, 4);
    const auto width = static_cast<float>(input.small.width * input.downScale);
    const auto height = static_cast<float>(input.small.height * input.downScale);
    input.normal = drawNormal(draws);
    const std::vector<float> distances{600, 1000, 1300, 1350, 1400, 1450, 1500, 1800};
    input.offset = draws.chance(50) ? draws.oneOf(distances) : draws.real(400, 2000);
    input.cx = draws.real(0.3F, 0.7F) * width;
    input.cy = draws.real(0.3F, 0.7F) * height;
    input.fx = draws.real(0.5F, 1.5F) * width;
    input.fy = draws.real(0.9F, 1.1F) * input.fx;
    input.cameraTypeSet = draws.chance(50);
    input.cameraType = draws.between(-20, 120);
    input.effectiveRegion = {draws.between(-10, input.small.width * 2), draws.between(-10, input.small.height * 2),
                             draws.between(0, input.small.width * 4), draws.between(0, input.small.height * 4)};
    return input;
}

/// A rotated slab of points around the optical axis, some of them absent, few of them odd.
cv::Mat drawCloud(Draws& draws, const FootprintInput& input) {
    const int columns = draws.between(1, 40);
    const int rows = draws.between(1, 40);
    cv::Mat cloud = drawMatrix(draws, {columns, rows}, CV_32FC3);
    const float angle = draws.chance(20) ? 0.0F : draws.real(0, 3.14F);
    const float stepX = draws.real(0.5F, 12);
    const float stepY = draws.real(0.5F, 12);
    const float height = draws.real(5, 250);
    const float noise = draws.chance(30) ? 0.0F : draws.real(0, 10);
    const int absent = draws.chance(60) ? draws.below(40) : draws.between(90, 100);
    const int odd = draws.chance(10) ? 30 : 0;
    for (int row = 0; row < cloud.rows; ++row) {
        for (int column = 0; column < cloud.cols; ++column) {
            if (draws.chance(absent)) {
                continue;
            }
            const float u = stepX * (static_cast<float>(column) - 0.5F * static_cast<float>(cloud.cols));
            const float v = stepY * (static_cast<float>(row) - 0.5F * static_cast<float>(cloud.rows));
            cv::Vec3f point(u * std::cos(angle) - v * std::sin(angle), u * std::sin(angle) + v * std::cos(angle),
                            input.offset - height + draws.real(-noise, noise));
            if (odd > 0 && draws.below(1000) < odd) {
                point[draws.below(3)] = draws.chance(50) ? kNaN : 1e12F;
            }
            cloud.at<cv::Vec3f>(row, column) = point;
        }
    }
    return cloud;
}

class FootprintLoops : public EveryLoopVariant {};

INSTANTIATE_TEST_SUITE_P(Loops, FootprintLoops, runnableLoopVariants(), loopVariantName);

TEST(Footprint, AgreesWithThePlainFormOnRandomCloudsInEveryLoopVariant) {
    Draws draws(110);
    int measured = 0;
    int outOfView = 0;
    for (int run = 0; run < 2000; ++run) {
        const FootprintInput input = drawInput(draws);
        const cv::Mat cloud = drawCloud(draws, input);
        const cv::Mat before = cloud.clone();
        const MeasureResult expected = plain::measureFootprint(cloud, input);
        const MeasureResult expectedWithoutMargin = plain::measureFootprintWithoutMargin(cloud, input);
        forEachLoopVariant([&] {
            ASSERT_TRUE(sameResult(general(cloud, input), expected)) << "general variant, run " << run;
            ASSERT_TRUE(sameResult(withoutMargin(cloud, input), expectedWithoutMargin))
                << "variant without margin, run " << run;
            ASSERT_TRUE(sameBits(cloud, before)) << "the cloud is read only, run " << run;
        });
        if (HasFatalFailure()) {
            return;
        }
        measured += expected.inView ? 1 : 0;
        outOfView += expected.corners.empty() || expected.inView ? 0 : 1;
    }
    EXPECT_GT(measured, 100) << "the random clouds must exercise boxes in view";
    EXPECT_GT(outOfView, 50) << "and boxes out of view";
}

TEST_P(FootprintLoops, AgreesWithThePlainFormOnLargeClouds) {
    Draws draws(111);
    FootprintInput input = straightCamera();
    input.effectiveRegion = {0, 0, 640, 480};
    for (int run = 0; run < 6; ++run) {
        cv::Mat cloud(160, 150, CV_32FC3);
        for (int row = 0; row < cloud.rows; ++row) {
            for (int column = 0; column < cloud.cols; ++column) {
                cloud.at<cv::Vec3f>(row, column) = {static_cast<float>(column) + draws.real(0, 1),
                                                    static_cast<float>(row) + draws.real(0, 1), draws.real(880, 920)};
            }
        }
        input.normal = run % 2 == 0 ? cv::Vec3f(0, 0, 1) : drawNormal(draws);
        ASSERT_TRUE(sameResult(general(cloud, input), plain::measureFootprint(cloud, input))) << "run " << run;
    }
}

}  // namespace

}  // namespace quorvel::test
