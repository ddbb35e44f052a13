// SPDX-License-Identifier: Apache-2.0
#include "library/plain/calibration_region.h"

#include <climits>
#include <limits>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "calib/calibration_input.h"
#include "library/calib_support.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

using internal::halfRegionArea;
using internal::regionCorners;
using internal::RegionCorners;

cv::Mat pointsInsideRegion(const cv::Mat& cloud, const RegionCorners& corners) {
    cv::Mat inside(cloud.size(), CV_32FC3, cv::Scalar::all(77.0));
    const uchar* storage = inside.data;
    internal::pointsInsideRegion(cloud, corners, inside);
    EXPECT_EQ(inside.data, storage) << "storage that nobody else holds is not kept";
    return inside;
}

cv::Mat fullCloud(int rows, int columns) {
    return {rows, columns, CV_32FC3, cv::Scalar(1.0, 2.0, 900.0)};
}

/// The smallest rectangle around the points that are there.
cv::Rect presentBounds(const cv::Mat& cloud) {
    cv::Mat depth;
    cv::extractChannel(cloud, depth, 2);
    return cv::boundingRect(depth != 0.0);
}

int presentPoints(const cv::Mat& cloud) {
    cv::Mat depth;
    cv::extractChannel(cloud, depth, 2);
    return cv::countNonZero(depth);
}

TEST(RegionCorners, AreTopLeftBottomLeftAndTopRight) {
    EXPECT_EQ(regionCorners({270, 190, 100, 80}),
              (RegionCorners{cv::Point(270, 190), cv::Point(270, 270), cv::Point(370, 190)}));
    EXPECT_EQ(regionCorners({-5, -7, 0, -3}),
              (RegionCorners{cv::Point(-5, -7), cv::Point(-5, -10), cv::Point(-5, -7)}));
}

TEST(RegionCorners, PassThroughFloat) {
    // 2^24 + 1 is no float; the tie goes to the even 2^24. 2^24 + 3 goes to 2^24 + 4.
    EXPECT_EQ(
        regionCorners({16777217, 16777219, 2, 0}),
        (RegionCorners{cv::Point(16777216, 16777220), cv::Point(16777216, 16777220), cv::Point(16777220, 16777220)}));
}

TEST(RegionCorners, AreIntMinBeyondInt) {
    const RegionCorners corners = regionCorners({INT_MAX - 60, 0, 100, INT_MAX});
    EXPECT_EQ(corners[0].x, INT_MIN) << "2147483587 rounds to 2^31 as a float";
    EXPECT_EQ(corners[2].x, INT_MIN);
    EXPECT_EQ(corners[1].y, INT_MIN);
    EXPECT_EQ(regionCorners({INT_MIN, INT_MIN, INT_MIN, INT_MIN})[2].x, INT_MIN);
    EXPECT_EQ(regionCorners({INT_MIN, 0, INT_MAX, 0})[2].x, -1) << "the sum is exact";
}

TEST(PointsInsideRegion, LeavesOutTheFirstRowAndColumnAndKeepsTheLast) {
    const cv::Mat inside = pointsInsideRegion(fullCloud(40, 50), regionCorners({10, 20, 8, 6}));
    EXPECT_EQ(presentBounds(inside), cv::Rect(11, 21, 7, 5)) << "x 11 ... 17, y 21 ... 25";
    EXPECT_EQ(presentPoints(inside), 35);
}

TEST(PointsInsideRegion, AHundredByAHundredHolds9801) {
    EXPECT_EQ(presentPoints(pointsInsideRegion(fullCloud(480, 640), regionCorners({270, 190, 100, 100}))), 9801);
}

TEST(PointsInsideRegion, CopiesPointsAsTheyAreAndSkipsThoseWithoutDepth) {
    cv::Mat cloud = fullCloud(5, 5);
    cloud.at<cv::Vec3f>(2, 2) = {7.0F, 8.0F, -0.0F};
    cloud.at<cv::Vec3f>(2, 3) = {7.0F, 8.0F, -9.0F};
    const cv::Mat inside = pointsInsideRegion(cloud, regionCorners({0, 0, 5, 5}));
    EXPECT_EQ(inside.at<cv::Vec3f>(2, 2), cv::Vec3f(0.0F, 0.0F, 0.0F));
    EXPECT_EQ(inside.at<cv::Vec3f>(2, 3), cv::Vec3f(7.0F, 8.0F, -9.0F)) << "points behind the camera count";
}

TEST(PointsInsideRegion, ARegionWithoutAnInsideHoldsNothing) {
    for (const cv::Rect& region : {cv::Rect(), cv::Rect(3, 3, 1, 1), cv::Rect(3, 3, 0, 9), cv::Rect(3, 3, 9, 0),
                                   cv::Rect(3, 3, -1, 9), cv::Rect(50, 3, 9, 9), cv::Rect(-20, 3, 9, 9)}) {
        EXPECT_EQ(presentPoints(pointsInsideRegion(fullCloud(20, 20), regionCorners(region))), 0) << region;
    }
}

TEST(PointsInsideRegion, ANegativeSizeSpansToTheOtherSide) {
    // x + width < u < x: 4 ... 9.
    const cv::Mat inside = pointsInsideRegion(fullCloud(20, 20), regionCorners({10, 5, -7, 4}));
    EXPECT_EQ(presentBounds(inside), cv::Rect(4, 6, 6, 3));
}

TEST(PointsInsideRegion, ARegionThatReachesBeyondTheImageIsCutAtItsBorder) {
    const cv::Mat cloud = fullCloud(20, 30);
    EXPECT_EQ(presentPoints(pointsInsideRegion(cloud, regionCorners({-1, -1, 100, 100}))), 600);
    EXPECT_EQ(presentPoints(pointsInsideRegion(cloud, regionCorners({0, 0, 100, 100}))), 29 * 19);
    EXPECT_EQ(presentPoints(pointsInsideRegion(cloud, regionCorners({-1000000000, -1000000000, INT_MAX, INT_MAX}))),
              600);
}

TEST(PointsInsideRegion, WritesIntoNobodyElsesPixels) {
    cv::Mat inside(4, 4, CV_32FC3, cv::Scalar::all(77.0));
    const cv::Mat held = inside;
    internal::pointsInsideRegion(fullCloud(4, 4), regionCorners({0, 0, 4, 4}), inside);
    EXPECT_EQ(held.at<cv::Vec3f>(1, 1), cv::Vec3f(77.0F, 77.0F, 77.0F));
    EXPECT_EQ(inside.at<cv::Vec3f>(1, 1), cv::Vec3f(1.0F, 2.0F, 900.0F));
}

TEST(PointsInsideRegion, PointsWhoseDepthIsNoNumberAreLeftOut) {
    cv::Mat cloud = fullCloud(3, 3);
    cloud.at<cv::Vec3f>(1, 1)[2] = std::numeric_limits<float>::quiet_NaN();
    cloud.at<cv::Vec3f>(1, 2)[2] = -std::numeric_limits<float>::infinity();
    const cv::Mat inside = pointsInsideRegion(cloud, regionCorners({0, 0, 3, 3}));
    EXPECT_EQ(inside.at<cv::Vec3f>(1, 1), cv::Vec3f(0.0F, 0.0F, 0.0F));
    EXPECT_EQ(inside.at<cv::Vec3f>(1, 2), cloud.at<cv::Vec3f>(1, 2));
}

TEST(PointsInsideRegion, AgreesWithTheDotProductsOnRandomRegions) {
    Draws random(101);
    for (int i = 0; i < 2000; ++i) {
        const int rows = random.between(1, 14);
        const int columns = random.between(1, 24);
        const auto kind = static_cast<calib::CloudKind>(random.below(3));
        const cv::Mat cloud = calib::randomCloud(random, rows, columns, kind, 25);
        const int left = random.between(-6, 16);
        const int top = random.between(-6, 16);
        const int width = random.between(-12, 30);
        const int height = random.between(-12, 20);
        const cv::Rect region(left, top, width, height);
        const RegionCorners corners = regionCorners(region);
        const cv::Mat expected = plain::pointsInsideRegion(cloud, corners);
        EXPECT_TRUE(sameBits(pointsInsideRegion(cloud, corners), expected)) << region;
        EXPECT_TRUE(sameBits(pointsInsideRegion(calib::asSubMatrix(cloud), corners), expected)) << region;
    }
}

TEST(PointsInsideRegion, AgreesWithTheDotProductsOnHugeRegions) {
    Draws random(102);
    const cv::Mat cloud = fullCloud(9, 11);
    const auto anyInt = [&random] {
        const int choice = random.below(6);
        return choice == 0 ? INT_MIN
                           : (choice == 1 ? INT_MAX : random.between(-1000, 1000) * (choice < 4 ? 1 : 2147480));
    };
    for (int i = 0; i < 1000; ++i) {
        const int left = anyInt();
        const int top = anyInt();
        const int width = anyInt();
        const int height = anyInt();
        const cv::Rect region(left, top, width, height);
        const RegionCorners corners = regionCorners(region);
        EXPECT_TRUE(sameBits(pointsInsideRegion(cloud, corners), plain::pointsInsideRegion(cloud, corners))) << region;
        EXPECT_TRUE(sameBits(halfRegionArea(corners), plain::halfRegionArea(corners))) << region;
    }
}

TEST(HalfRegionArea, IsHalfTheAreaInPixels) {
    EXPECT_EQ(halfRegionArea(regionCorners({270, 190, 100, 100})), 5000.0F);
    EXPECT_EQ(halfRegionArea(regionCorners({0, 0, 3, 5})), 7.5F);
    EXPECT_EQ(halfRegionArea(regionCorners({9, 9, -3, 5})), 7.5F) << "lengths have no sign";
    EXPECT_EQ(halfRegionArea(regionCorners({9, 9, 0, 5})), 0.0F);
}

}  // namespace

}  // namespace quorvel::test
