// SPDX-License-Identifier: Apache-2.0
#include "calib/normal_map.h"

#include <string>

#include <gtest/gtest.h>

#include "library/calib_support.h"
#include "library/plain/normal_map.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

using internal::computeNormalMap;

const cv::Vec3f kNone(0.0F, 0.0F, 0.0F);

/// A cloud of 3 x 3 pixels with a point in the middle, to its right and below it; the rest is absent.
cv::Mat cornerCloud(const cv::Vec3f& middle, const cv::Vec3f& right, const cv::Vec3f& below) {
    cv::Mat cloud = cv::Mat::zeros(3, 3, CV_32FC3);
    cloud.at<cv::Vec3f>(1, 1) = middle;
    cloud.at<cv::Vec3f>(1, 2) = right;
    cloud.at<cv::Vec3f>(2, 1) = below;
    return cloud;
}

cv::Vec3f middleColour(const cv::Mat& cloud) {
    return computeNormalMap(cloud).at<cv::Vec3f>(1, 1);
}

TEST(ComputeNormalMap, AFlatFloorSeenStraightFacesAway) {
    Draws random(61);
    calib::FloorView view;
    view.width = 8;
    view.height = 6;
    const cv::Mat map = computeNormalMap(calib::floorCloud(view, random));
    for (int row = 1; row < 5; ++row) {
        for (int column = 1; column < 7; ++column) {
            EXPECT_TRUE(sameBits(map.at<cv::Vec3f>(row, column), cv::Vec3f(127.5F, 127.5F, 255.0F)))
                << "row " << row << ", column " << column;
        }
    }
}

TEST(ComputeNormalMap, TheOutermostRowsAndColumnsStayZero) {
    Draws random(62);
    const cv::Mat map = computeNormalMap(calib::randomCloud(random, 5, 7, calib::CloudKind::kFloats, 0));
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 7; ++column) {
            const bool border = row == 0 || row == 4 || column == 0 || column == 6;
            EXPECT_EQ(map.at<cv::Vec3f>(row, column) == kNone, border) << "row " << row << ", column " << column;
        }
    }
}

TEST(ComputeNormalMap, OnlyTheCentreOfThreeByThreeIsSet) {
    Draws random(63);
    cv::Mat map = computeNormalMap(calib::randomCloud(random, 3, 3, calib::CloudKind::kFloats, 0));
    EXPECT_NE(map.at<cv::Vec3f>(1, 1), kNone);
    map.at<cv::Vec3f>(1, 1) = kNone;
    EXPECT_TRUE(sameBits(map, cv::Mat::zeros(3, 3, CV_32FC3)));
}

TEST(ComputeNormalMap, CrossesTheRightWithTheLowerDifference) {
    // right - p = (3, 0, 4), below - p = (0, 5, 0): cross product (-20, 0, 15), length 25, normal (-0.8, 0, 0.6).
    const cv::Vec3f colour = middleColour(cornerCloud({1, 1, 100}, {4, 1, 104}, {1, 6, 100}));
    EXPECT_FLOAT_EQ(colour[0], 25.5F);
    EXPECT_EQ(colour[1], 127.5F);
    EXPECT_FLOAT_EQ(colour[2], 204.0F);
}

TEST(ComputeNormalMap, ReachesBothEndsOfTheColourRange) {
    EXPECT_EQ(middleColour(cornerCloud({0, 0, 9}, {1, 0, 9}, {0, 1, 9})), cv::Vec3f(127.5F, 127.5F, 255.0F));
    EXPECT_EQ(middleColour(cornerCloud({0, 0, 9}, {0, 1, 9}, {1, 0, 9})), cv::Vec3f(127.5F, 127.5F, 0.0F));
}

TEST(ComputeNormalMap, ANormalOfLengthZeroStaysBlack) {
    EXPECT_EQ(middleColour(cornerCloud({1, 2, 3}, {1, 2, 3}, {5, 5, 5})), kNone) << "the right point is the same";
    EXPECT_EQ(middleColour(cornerCloud({1, 1, 1}, {2, 2, 2}, {3, 3, 3})), kNone) << "the three points lie in a line";
}

TEST(ComputeNormalMap, AbsentNeighboursTakePartAsTheyAre) {
    // right - p = (-1, -1, -100) with an absent right neighbour, below - p = (0, 1, 0): cross product (100, 0, -1).
    const cv::Vec3f colour = middleColour(cornerCloud({1, 1, 100}, kNone, {1, 2, 100}));
    EXPECT_NEAR(colour[0], 254.99, 0.01);
    EXPECT_EQ(colour[1], 127.5F);
    EXPECT_NEAR(colour[2], 126.23, 0.01);
    EXPECT_NE(middleColour(cornerCloud(kNone, {1, 0, 100}, {0, 1, 100})), kNone) << "an absent pixel has a normal too";
}

TEST(ComputeNormalMap, MapsOfFewerThanThreeRowsOrColumnsAreZero) {
    Draws random(64);
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(2, 2), cv::Size(1, 9), cv::Size(9, 1), cv::Size(2, 9)}) {
        const cv::Mat cloud = calib::randomCloud(random, size.height, size.width, calib::CloudKind::kFloats, 0);
        EXPECT_TRUE(sameBits(computeNormalMap(cloud), cv::Mat::zeros(size, CV_32FC3))) << size;
    }
    EXPECT_EQ(computeNormalMap(cv::Mat()).total(), 0U);
}

void expectAsPlain(const cv::Mat& cloud, const std::string& what) {
    const cv::Mat expected = plain::computeNormalMap(cloud);
    forEachLoopVariant([&] {
        EXPECT_TRUE(sameBits(computeNormalMap(cloud), expected)) << what;
        EXPECT_TRUE(sameBits(computeNormalMap(calib::asSubMatrix(cloud)), expected)) << what;
    });
}

TEST(ComputeNormalMap, AgreesWithThePlainFormOnRandomClouds) {
    Draws random(65);
    for (int i = 0; i < 2000; ++i) {
        const auto kind = static_cast<calib::CloudKind>(random.below(3));
        const int columns = random.between(1, 24);
        const int rows = random.between(1, 8);
        const cv::Size size(columns, rows);
        expectAsPlain(calib::randomCloud(random, size.height, size.width, kind, random.below(4) * 33),
                      "input " + std::to_string(i));
    }
}

TEST(ComputeNormalMap, AgreesWithThePlainFormOnExtremeLengths) {
    Draws random(66);
    for (const float scale : {1e-20F, 1e-12F, 1e9F, 1e18F, 1e30F}) {
        expectAsPlain(calib::randomCloud(random, 20, 20, calib::CloudKind::kFloats, 10) * scale,
                      "scale " + std::to_string(scale));
    }
}

TEST(ComputeNormalMap, HandsOutAMapThatLaterCallsLeave) {
    Draws random(67);
    const cv::Mat cloud = calib::randomCloud(random, 9, 9, calib::CloudKind::kFloats, 0);
    const cv::Mat kept = computeNormalMap(cloud);
    computeNormalMap(cloud * 2);
    computeNormalMap(cv::Mat::zeros(9, 9, CV_32FC3));
    EXPECT_TRUE(sameBits(kept, plain::computeNormalMap(cloud)));
}

}  // namespace

}  // namespace quorvel::test
