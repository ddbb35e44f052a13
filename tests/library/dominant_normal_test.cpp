// SPDX-License-Identifier: Apache-2.0
#include "library/plain/dominant_normal.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "calib/normal_map.h"
#include "library/calib_support.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

cv::Vec3f binOf(const cv::Mat& map) {
    cv::Vec3f bin(-77.0F, -78.0F, -79.0F);
    bin = internal::dominantNormalBin(map);
    return bin;
}

/// A map of one row.
cv::Mat row(const std::vector<cv::Vec3f>& colours) {
    return cv::Mat(colours, true).reshape(3, 1);
}

TEST(DominantNormalBin, AFlatFloorIsOneOneThree) {
    EXPECT_EQ(binOf(cv::Mat(4, 5, CV_32FC3, cv::Scalar(127.5, 127.5, 255.0))), cv::Vec3f(1, 1, 3));
}

TEST(DominantNormalBin, EveryChannelHasFourBinsOf64) {
    EXPECT_EQ(binOf(row({{63.99F, 64.0F, 127.99F}})), cv::Vec3f(0, 1, 1));
    EXPECT_EQ(binOf(row({{128.0F, 191.99F, 192.0F}})), cv::Vec3f(2, 2, 3));
    EXPECT_EQ(binOf(row({{255.0F, 0.0F, 63.0F}})), cv::Vec3f(3, 0, 0));
}

TEST(DominantNormalBin, OnlyTheLowEightBitsCount) {
    // 256 -> 0, 300 -> 44, 511 -> 255, -0.5 -> 0, -1 -> 255, -65 -> 191.
    EXPECT_EQ(binOf(row({{256.0F, 300.0F, 511.0F}})), cv::Vec3f(0, 0, 3));
    EXPECT_EQ(binOf(row({{-0.5F, -1.0F, -65.0F}})), cv::Vec3f(0, 3, 2));
}

TEST(DominantNormalBin, ValuesThatAreNoColourFallInBinZero) {
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(binOf(row({{std::numeric_limits<float>::quiet_NaN(), infinity, 64.0F}})), cv::Vec3f(0, 0, 1));
    EXPECT_EQ(binOf(row({{1e20F, -infinity, 64.0F}})), cv::Vec3f(0, 0, 1));
}

TEST(DominantNormalBin, TheMostFrequentBinWins) {
    const cv::Vec3f a(10, 10, 200);
    const cv::Vec3f b(10, 200, 10);
    EXPECT_EQ(binOf(row({a, b, b, a, b})), cv::Vec3f(0, 3, 0));
    EXPECT_EQ(binOf(row({a, b, a, a, b})), cv::Vec3f(0, 0, 3));
}

TEST(DominantNormalBin, AmongEqualsTheFirstToReachTheCountWins) {
    const cv::Vec3f a(10, 10, 200);
    const cv::Vec3f b(10, 200, 10);
    EXPECT_EQ(binOf(row({a, b, b, a})), cv::Vec3f(0, 3, 0)) << "b reaches two first";
    EXPECT_EQ(binOf(row({a, b, a, b})), cv::Vec3f(0, 0, 3)) << "a reaches two first";
}

TEST(DominantNormalBin, TheColourOfEmptyPixelsNeverWins) {
    const cv::Vec3f black(0, 0, 0);
    const cv::Vec3f dark(63, 63, 63);
    EXPECT_EQ(binOf(row({black, dark, black, {0, 64, 0}, black})), cv::Vec3f(0, 1, 0));
    EXPECT_EQ(binOf(row({black, dark, black})), cv::Vec3f(0, 0, 0)) << "there is no other";
    EXPECT_EQ(binOf(cv::Mat::zeros(5, 5, CV_32FC3)), cv::Vec3f(0, 0, 0));
    EXPECT_EQ(binOf(cv::Mat()), cv::Vec3f(0, 0, 0));
}

void expectAsPlain(const cv::Mat& map, const std::string& what) {
    const cv::Vec3f expected = plain::dominantNormalBin(map);
    forEachLoopVariant([&] {
        EXPECT_TRUE(sameBits(binOf(map), expected)) << what;
        EXPECT_TRUE(sameBits(binOf(calib::asSubMatrix(map)), expected)) << what;
    });
}

TEST(DominantNormalBin, AgreesWithThePlainFormOnRandomMaps) {
    Draws random(71);
    for (int i = 0; i < 2000; ++i) {
        const int columns = random.between(1, 30);
        const int rows = random.between(1, 12);
        const cv::Size size(columns, rows);
        const cv::Mat cloud =
            calib::randomCloud(random, size.height, size.width, static_cast<calib::CloudKind>(random.below(3)), 30);
        // Few, many and out-of-range colours, with plenty of ties.
        expectAsPlain(random.chance(50) ? cv::Mat(cloud * 43.0) : cloud, "input " + std::to_string(i));
    }
}

TEST(DominantNormalBin, AgreesWithThePlainFormWhereTwoOrientationsTie) {
    Draws random(72);
    for (int i = 0; i < 300; ++i) {
        const int count = 2 * random.between(1, 40);
        cv::Mat map(1, count, CV_32FC3, cv::Scalar(10.0, 10.0, 200.0));
        for (int left = count / 2; left > 0;) {
            auto& colour = map.at<cv::Vec3f>(random.below(count));
            left -= colour[2] == 200.0F ? 1 : 0;
            colour = cv::Vec3f(10.0F, 200.0F, 10.0F);
        }
        expectAsPlain(map, "tie " + std::to_string(i));
    }
}

}  // namespace

}  // namespace quorvel::test
