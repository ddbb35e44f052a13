// SPDX-License-Identifier: Apache-2.0
#include "calib/least_squares.h"

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "library/calib_support.h"
#include "library/fast_forms.h"
#include "library/plain/least_squares.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

using internal::fitPlaneLeastSquares;

const cv::Vec3f kUntouchedNormal(-77.0F, -78.0F, -79.0F);
constexpr float kUntouchedOffset = -80.0F;

struct FitResult {
    int status = 0;
    cv::Vec3f normal = kUntouchedNormal;
    float offset = kUntouchedOffset;
};

FitResult fit(const cv::Mat& cloud, float minPoints) {
    FitResult result;
    result.status = fast::fitPlaneLeastSquares(cloud, result.normal, result.offset, minPoints);
    return result;
}

void expectUntouched(const FitResult& result) {
    EXPECT_EQ(result.status, -1);
    EXPECT_TRUE(sameBits(result.normal, kUntouchedNormal));
    EXPECT_EQ(result.offset, kUntouchedOffset);
}

void expectAsPlain(const cv::Mat& cloud, float minPoints) {
    FitResult expected;
    expected.status = plain::fitPlaneLeastSquares(cloud, expected.normal.val, expected.offset, minPoints);
    forEachLoopVariant([&] {
        const FitResult result = fit(cloud, minPoints);
        EXPECT_EQ(result.status, expected.status) << cloud.size() << ", at least " << minPoints;
        EXPECT_TRUE(sameBits(result.normal, expected.normal)) << cloud.size() << ", at least " << minPoints;
        EXPECT_TRUE(sameBits(result.offset, expected.offset)) << result.offset << " and " << expected.offset;
    });
}

/// Points (x, y, slopeX x + slopeY y + base) over the grid x, y = -2 ... 2.
cv::Mat gridCloud(float slopeX, float slopeY, float base) {
    cv::Mat cloud(5, 5, CV_32FC3);
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 5; ++column) {
            const auto x = static_cast<float>(column - 2);
            const auto y = static_cast<float>(row - 2);
            cloud.at<cv::Vec3f>(row, column) = cv::Vec3f(x, y, slopeX * x + slopeY * y + base);
        }
    }
    return cloud;
}

TEST(FitPlaneLeastSquares, AFlatCloudFacesTheCameraWithNegativeZeros) {
    const FitResult result = fit(gridCloud(0.0F, 0.0F, 1000.0F), 25.0F);
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(sameBits(result.normal, cv::Vec3f(-0.0F, -0.0F, 1.0F)));
    EXPECT_EQ(result.offset, 1000.0F);
}

TEST(FitPlaneLeastSquares, ATiltedCloudGivesTheUnitNormalAndThePerpendicularDistance) {
    // z = 0.75 y + 1000: normal (0, -0.75, 1) / 1.25, distance 1000 / 1.25.
    const FitResult result = fit(gridCloud(0.0F, 0.75F, 1000.0F), 1.0F);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.normal[0], 0.0F);
    EXPECT_FLOAT_EQ(result.normal[1], -0.6F);
    EXPECT_FLOAT_EQ(result.normal[2], 0.8F);
    EXPECT_FLOAT_EQ(result.offset, 800.0F);
}

TEST(FitPlaneLeastSquares, MinimisesTheSquaresInZ) {
    // z = 10 at x = -1 and 1, 40 at x = 0 twice (y = -1, 1): the best plane is flat at the mean 25.
    cv::Mat cloud(1, 4, CV_32FC3);
    cloud.at<cv::Vec3f>(0) = {-1.0F, 0.0F, 10.0F};
    cloud.at<cv::Vec3f>(1) = {1.0F, 0.0F, 10.0F};
    cloud.at<cv::Vec3f>(2) = {0.0F, -1.0F, 40.0F};
    cloud.at<cv::Vec3f>(3) = {0.0F, 1.0F, 40.0F};
    const FitResult result = fit(cloud, 4.0F);
    EXPECT_EQ(result.normal[2], 1.0F);
    EXPECT_EQ(result.offset, 25.0F);
}

TEST(FitPlaneLeastSquares, SkipsPointsWithoutDepthWhateverTheirPlace) {
    cv::Mat cloud = gridCloud(0.0F, 0.75F, 1000.0F);
    cloud.push_back(cv::Mat(5, 5, CV_32FC3, cv::Scalar(500.0, -300.0, 0.0)));
    EXPECT_TRUE(sameBits(fit(cloud, 1.0F).normal, fit(gridCloud(0.0F, 0.75F, 1000.0F), 1.0F).normal));
    EXPECT_EQ(fit(cloud, 25.0F).status, 0);
    EXPECT_EQ(fit(cloud, 26.0F).status, -1) << "points without depth count";
}

TEST(FitPlaneLeastSquares, TakesPointsBehindTheCamera) {
    EXPECT_EQ(fit(gridCloud(0.0F, 0.0F, -1000.0F), 25.0F).offset, -1000.0F);
}

TEST(FitPlaneLeastSquares, TooFewPointsTouchNothing) {
    expectUntouched(fit(gridCloud(0.0F, 0.0F, 1000.0F), 26.0F));
    EXPECT_EQ(fit(gridCloud(0.0F, 0.0F, 1000.0F), 25.0F).status, 0);
}

TEST(FitPlaneLeastSquares, TheMinimumIsRoundedUp) {
    expectUntouched(fit(gridCloud(0.0F, 0.0F, 1000.0F), 25.001F));
    EXPECT_EQ(fit(gridCloud(0.0F, 0.0F, 1000.0F), 24.001F).status, 0);
}

TEST(FitPlaneLeastSquares, ACloudWithoutDepthIsTooFewForAnyMinimumAboveZero) {
    expectUntouched(fit(cv::Mat::zeros(4, 4, CV_32FC3), 0.5F));
    expectUntouched(fit(cv::Mat(), 0.5F));
}

TEST(FitPlaneLeastSquares, NoPointsAndNoMinimumGiveNan) {
    const FitResult result = fit(cv::Mat::zeros(4, 4, CV_32FC3), 0.0F);
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(std::isnan(result.normal[2])) << result.normal;
    EXPECT_TRUE(std::isnan(result.offset)) << result.offset;
}

TEST(FitPlaneLeastSquares, ASingularSystemGivesAPlaneThroughTheCamera) {
    // The same point everywhere: the equations have rank one.
    const FitResult result = fit(cv::Mat(3, 3, CV_32FC3, cv::Scalar(1.0, 2.0, 900.0)), 9.0F);
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(sameBits(result.normal, cv::Vec3f(-0.0F, -0.0F, 1.0F)));
    EXPECT_EQ(result.offset, 0.0F);
}

TEST(FitPlaneLeastSquares, SumsInFloatInRowOrder) {
    // Along a row of depths 2^24, 1, 1 the ones are lost; with the large one last they are not.
    cv::Mat cloud(1, 3, CV_32FC3);
    cloud.at<cv::Vec3f>(0) = {0.0F, 1.0F, 16777216.0F};
    cloud.at<cv::Vec3f>(1) = {1.0F, 0.0F, 1.0F};
    cloud.at<cv::Vec3f>(2) = {-1.0F, -1.0F, 1.0F};
    const FitResult first = fit(cloud, 3.0F);
    std::swap(cloud.at<cv::Vec3f>(0), cloud.at<cv::Vec3f>(2));
    const FitResult last = fit(cloud, 3.0F);
    // c = (sum of z) / 3: 2^24 / 3 and (2^24 + 2) / 3; the slopes, and so the length, are the same.
    EXPECT_NE(first.offset, last.offset);
    expectAsPlain(cloud, 3.0F);
}

TEST(FitPlaneLeastSquares, AgreesWithThePlainFormOnRandomClouds) {
    Draws random(51);
    for (int i = 0; i < 2000; ++i) {
        const auto kind = static_cast<calib::CloudKind>(random.below(3));
        const int rows = random.between(1, 12);
        const int columns = random.between(1, 40);
        const int absent = random.below(4) * 33;
        const cv::Mat cloud = calib::randomCloud(random, rows, columns, kind, absent);
        const float minPoints = random.chance(50) ? 0.0F : random.real(0.0F, 60.0F);
        expectAsPlain(cloud, minPoints);
        expectAsPlain(calib::asSubMatrix(cloud), minPoints);
    }
}

TEST(FitPlaneLeastSquares, AbsentPointsAddNothingWhateverTheyHold) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    cv::Mat cloud = gridCloud(0.5F, 0.25F, 800.0F);
    cloud.at<cv::Vec3f>(1, 1) = {nan, infinity, 0.0F};
    cloud.at<cv::Vec3f>(3, 2) = {-infinity, nan, -0.0F};
    EXPECT_TRUE(std::isfinite(fit(cloud, 23.0F).offset));
    expectAsPlain(cloud, 23.0F);
    expectAsPlain(cloud, 24.0F);
}

TEST(PlaneSums, PointsAddedOneByOneAndByRowsMakeTheSamePlane) {
    Draws random(53);
    for (int i = 0; i < 200; ++i) {
        const cv::Mat cloud = calib::randomCloud(random, 1, random.between(1, 60), calib::CloudKind::kFloats, 0);
        internal::PlaneSums single;
        for (int column = 0; column < cloud.cols; ++column) {
            single.add(cloud.at<cv::Vec3f>(column));
        }
        forEachLoopVariant([&] {
            internal::PlaneSums row;
            row.addRow(cloud.ptr<float>(), cloud.cols);
            EXPECT_EQ(row.count(), single.count());
            EXPECT_TRUE(sameBits(row.solve().offset, single.solve().offset)) << "input " << i;
        });
    }
}

TEST(PlaneSums, CountsLikeAFloat) {
    const std::vector<float> row(3 * 65536, 1.0F);
    internal::PlaneSums sums;
    for (int i = 0; i < 256; ++i) {
        sums.addRow(row.data(), 65536);
    }
    EXPECT_EQ(sums.count(), 16777216.0F);
    sums.add({1.0F, 1.0F, 1.0F});
    EXPECT_EQ(sums.count(), 16777216.0F) << "16777217 is no float";
}

TEST(FitPlaneLeastSquares, AgreesWithThePlainFormOnLargeFloors) {
    Draws random(52);
    for (int i = 0; i < 10; ++i) {
        calib::FloorView view;
        view.width = 200;
        view.height = 150;
        view.focal = 180.0F;
        view.slopeX = random.real(-0.3F, 0.3F);
        view.slopeY = random.real(-0.3F, 0.3F);
        view.noise = 3.0F;
        view.absent = 10;
        expectAsPlain(calib::floorCloud(view, random), 1000.0F);
    }
}

}  // namespace

}  // namespace quorvel::test
