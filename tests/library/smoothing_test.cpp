// SPDX-License-Identifier: Apache-2.0
#include "calib/smoothing.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "library/calib_support.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

using internal::smoothDepth;

TEST(SmoothDepth, AFlatImageStaysFlat) {
    const cv::Mat depth(9, 11, CV_16UC1, cv::Scalar(1234));
    EXPECT_TRUE(sameBits(smoothDepth(depth), depth));
}

TEST(SmoothDepth, SpreadsAPixelWithTheKernelAppliedTwice) {
    // (1 4 6 4 1) / 16 twice is (1 8 28 56 70 56 28 8 1) / 256 in each direction. 61440 is 15 * 4096: at offsets
    // (dx, dy) it leaves 15 * K(dx) * K(dy) / 16: 70 * 70 -> 4593.75, 70 * 56 -> 3675, 56 * 56 -> 2940,
    // 8 * 70 -> 525, 1 * 1 -> 0.94.
    cv::Mat depth = cv::Mat::zeros(21, 21, CV_16UC1);
    depth.at<ushort>(10, 10) = 61440;
    const cv::Mat smoothed = smoothDepth(depth);
    EXPECT_EQ(smoothed.at<ushort>(10, 10), 4594);
    EXPECT_EQ(smoothed.at<ushort>(10, 11), 3675);
    EXPECT_EQ(smoothed.at<ushort>(9, 10), 3675);
    EXPECT_EQ(smoothed.at<ushort>(11, 11), 2940);
    EXPECT_EQ(smoothed.at<ushort>(10, 13), 525);
    EXPECT_EQ(smoothed.at<ushort>(14, 14), 1);
    EXPECT_EQ(smoothed.at<ushort>(10, 15), 0) << "beyond four pixels nothing arrives";
}

TEST(SmoothDepth, ReflectsAtTheBorderWithoutTheEdgePixel) {
    // One row: the first pass at pixel 0 is (6 * p0 + 2 * 4 * p1 + 2 * p2) / 16 in each direction.
    cv::Mat depth = cv::Mat::zeros(1, 9, CV_16UC1);
    depth.at<ushort>(0, 1) = 2560;
    // First pass: 640+640 at 0 (= 1280), 960 + 160 at 1 (p1 and its mirror image at -1), 640, 160.
    // Second pass at 0: (6 * 1280 + 8 * 1120 + 2 * 640) / 16 = 1120.
    EXPECT_EQ(smoothDepth(depth).at<ushort>(0, 0), 1120);
}

TEST(SmoothDepth, AHoleGetsASmallerDepth) {
    cv::Mat depth(9, 9, CV_16UC1, cv::Scalar(1000));
    depth.at<ushort>(4, 4) = 0;
    const auto inHole = smoothDepth(depth).at<ushort>(4, 4);
    // 1000 * (1 - 4900 / 65536) = 925.2.
    EXPECT_NEAR(inHole, 925, 1);
}

TEST(SmoothDepth, LeavesTheImageItself) {
    cv::Mat depth = cv::Mat::zeros(9, 9, CV_16UC1);
    depth.at<ushort>(4, 4) = 60000;
    const cv::Mat before = depth.clone();
    smoothDepth(depth);
    EXPECT_TRUE(sameBits(depth, before));
}

TEST(SmoothDepth, HandsOutAnImageThatLaterCallsLeave) {
    const cv::Mat depth(9, 9, CV_16UC1, cv::Scalar(1000));
    const cv::Mat kept = smoothDepth(depth);
    smoothDepth(depth * 2);
    EXPECT_TRUE(sameBits(kept, depth));
}

TEST(SmoothDepth, AcceptsAnEmptyImage) {
    EXPECT_TRUE(smoothDepth(cv::Mat()).empty());
}

cv::Mat blurredTwice(const cv::Mat& depth) {
    cv::Mat once;
    cv::Mat twice;
    cv::GaussianBlur(depth, once, cv::Size(5, 5), 0.0, 0.0, cv::BORDER_REFLECT_101);
    cv::GaussianBlur(once, twice, cv::Size(5, 5), 0.0, 0.0, cv::BORDER_REFLECT_101);
    return twice;
}

void expectAsBlurred(const cv::Mat& depth) {
    const cv::Mat expected = blurredTwice(depth);
    forEachLoopVariant([&] {
        EXPECT_TRUE(sameBits(smoothDepth(depth), expected)) << depth.size();
        EXPECT_TRUE(sameBits(smoothDepth(calib::asSubMatrix(depth)), expected))
            << depth.size() << ": pixels outside the image take part";
    });
}

/// Depths of the whole range, small ones, whose halves are often rounded, or the two ends of the range alone.
cv::Mat randomDepths(calib::Random& random, const cv::Size& size) {
    const int kind = random.below(3);
    cv::Mat depth(size, CV_16UC1);
    for (int i = 0; i < depth.rows * depth.cols; ++i) {
        const int value = kind == 2 ? 65535 * random.below(2) : random.below(kind == 0 ? 65536 : 40);
        depth.at<ushort>(i / depth.cols, i % depth.cols) = static_cast<ushort>(value);
    }
    return depth;
}

TEST(SmoothDepth, AgreesWithTheLibrarysBlurOnRandomImages) {
    calib::Random random(131);
    for (int i = 0; i < 2000; ++i) {
        expectAsBlurred(randomDepths(random, {random.within(1, 20), random.within(1, 12)}));
    }
}

TEST(SmoothDepth, AgreesWithTheLibrarysBlurOnWideAndHighImages) {
    calib::Random random(136);
    for (const cv::Size& size : {cv::Size(63, 3), cv::Size(64, 4), cv::Size(65, 5), cv::Size(641, 7), cv::Size(1, 70),
                                 cv::Size(2, 70), cv::Size(5, 71), cv::Size(160, 120)}) {
        for (int i = 0; i < 3; ++i) {
            expectAsBlurred(randomDepths(random, size));
        }
    }
}

TEST(SmoothDepth, TheDeepestImageStaysAsItIs) {
    expectAsBlurred(cv::Mat(20, 37, CV_16UC1, cv::Scalar(65535)));
}

}  // namespace

}  // namespace quorvel::test
