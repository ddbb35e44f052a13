// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstddef>

#include <gtest/gtest.h>

#include "calib/calibration_input.h"
#include "library/calib_support.h"
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

/// The kernel (1 4 6 4 1) / 16 in both directions over whole numbers, rounded once, halves up.
int weighedSum(const cv::Mat& depth, const cv::Point& pixel) {
    constexpr std::array<int, 5> kWeights{1, 4, 6, 4, 1};
    constexpr int kReach = 2;
    const int* const middle = kWeights.data() + kReach;
    int sum = 0;
    for (int dy = -kReach; dy <= kReach; ++dy) {
        for (int dx = -kReach; dx <= kReach; ++dx) {
            const int row = cv::borderInterpolate(pixel.y + dy, depth.rows, cv::BORDER_REFLECT_101);
            const int column = cv::borderInterpolate(pixel.x + dx, depth.cols, cv::BORDER_REFLECT_101);
            sum += middle[dy] * middle[dx] * depth.at<ushort>(row, column);
        }
    }
    return (sum + 128) / 256;
}

cv::Mat weighedOnce(const cv::Mat& depth) {
    cv::Mat smoothed(depth.size(), CV_16UC1);
    for (int row = 0; row < depth.rows; ++row) {
        for (int column = 0; column < depth.cols; ++column) {
            smoothed.at<ushort>(row, column) = static_cast<ushort>(weighedSum(depth, {column, row}));
        }
    }
    return smoothed;
}

void expectAsWeighed(const cv::Mat& depth) {
    const cv::Mat expected = weighedOnce(weighedOnce(depth));
    EXPECT_TRUE(sameBits(smoothDepth(depth), expected)) << depth.size();
    EXPECT_TRUE(sameBits(smoothDepth(calib::asSubMatrix(depth)), expected))
        << depth.size() << ": pixels outside the image take part";
}

/// Depths of the whole range, small ones, whose halves are often rounded, or the two ends of the range alone.
cv::Mat randomDepths(Draws& random, const cv::Size& size) {
    const int kind = random.below(3);
    cv::Mat depth(size, CV_16UC1);
    for (int i = 0; i < depth.rows * depth.cols; ++i) {
        const int value = kind == 2 ? 65535 * random.below(2) : random.below(kind == 0 ? 65536 : 40);
        depth.at<ushort>(i / depth.cols, i % depth.cols) = static_cast<ushort>(value);
    }
    return depth;
}

TEST(SmoothDepth, AgreesWithWholeNumbersOnRandomImages) {
    Draws random(131);
    for (int i = 0; i < 2000; ++i) {
        const int columns = random.between(1, 20);
        const int rows = random.between(1, 12);
        expectAsWeighed(randomDepths(random, {columns, rows}));
    }
}

TEST(SmoothDepth, AgreesWithWholeNumbersOnWideAndHighImages) {
    Draws random(136);
    for (const cv::Size& size : {cv::Size(63, 3), cv::Size(64, 4), cv::Size(65, 5), cv::Size(641, 7), cv::Size(1, 70),
                                 cv::Size(2, 70), cv::Size(5, 71), cv::Size(160, 120)}) {
        for (int i = 0; i < 3; ++i) {
            expectAsWeighed(randomDepths(random, size));
        }
    }
}

TEST(SmoothDepth, TheDeepestImageStaysAsItIs) {
    expectAsWeighed(cv::Mat(20, 37, CV_16UC1, cv::Scalar(65535)));
}

}  // namespace

}  // namespace quorvel::test
