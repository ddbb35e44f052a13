// SPDX-License-Identifier: Apache-2.0
#include "measure/object_component.h"

#include <climits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "library/fast_forms.h"
#include "library/measure_draws.h"
#include "library/plain/object_component.h"
#include "support/captured_output.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

const std::string kNoObject = "No object found.\n";

cv::Mat maskOf(const cv::Mat& depth) {
    return depth > 0;
}

/// A depth image, 0 but for rectangles of 700 mm.
cv::Mat depthWith(const cv::Size& size, const std::vector<cv::Rect>& regions) {
    cv::Mat depth = cv::Mat::zeros(size, CV_16UC1);
    for (const cv::Rect& region : regions) {
        depth(region).setTo(700);
    }
    return depth;
}

struct Selection {
    int status = -1;
    cv::Mat mask;
    std::string output;
};

Selection select(const cv::Mat& depth, int minPixels) {
    const CapturedOutput captured;
    Selection selection;
    selection.mask = maskOf(depth);
    selection.status = fast::selectObjectComponent(depth, minPixels, selection.mask);
    selection.output = captured.text();
    return selection;
}

TEST(ObjectComponent, ReportsAnEmptyImageAndLeavesTheMask) {
    const cv::Mat depth = cv::Mat::zeros(6, 8, CV_16UC1);
    cv::Mat mask(6, 8, CV_8UC1, cv::Scalar(255));
    const CapturedOutput captured;
    EXPECT_EQ(fast::selectObjectComponent(depth, 0, mask), 1);
    EXPECT_EQ(captured.text(), kNoObject);
    EXPECT_EQ(cv::countNonZero(mask), 48) << "the mask must stay as the height cut made it";
}

TEST(ObjectComponent, TakesARegionOfExactlyTheMinimumForTooSmall) {
    const cv::Mat depth = depthWith({9, 9}, {{3, 3, 3, 3}});
    const Selection refused = select(depth, 9);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.output, kNoObject);
    EXPECT_TRUE(sameBits(refused.mask, maskOf(depth)));
    const Selection taken = select(depth, 8);
    EXPECT_EQ(taken.status, 0);
    EXPECT_EQ(taken.output, "");
    EXPECT_TRUE(sameBits(taken.mask, maskOf(depth))) << "a 3 x 3 square survives the opening unchanged";
}

TEST(ObjectComponent, PrefersASmallCentralRegionToALargeOneAtTheBorder) {
    const cv::Rect central(9, 6, 3, 3);
    const Selection selection = select(depthWith({20, 16}, {{0, 0, 20, 4}, central}), 8);
    EXPECT_EQ(selection.status, 0);
    EXPECT_TRUE(sameBits(selection.mask, maskOf(depthWith({20, 16}, {central}))));
}

TEST(ObjectComponent, PrefersTheLargeRegionWhenTheCentralOneIsTooSmall) {
    const cv::Rect large(0, 0, 20, 4);
    const Selection selection = select(depthWith({20, 16}, {large, {9, 6, 3, 3}}), 9);
    EXPECT_EQ(selection.status, 0);
    EXPECT_TRUE(sameBits(selection.mask, maskOf(depthWith({20, 16}, {large}))));
}

TEST(ObjectComponent, KeepsTheRegionMetFirstOnATie) {
    // Centre (5, 5). Both squares' distances add up to 36.7688065 in float, row by row, though in another order.
    const cv::Rect left(0, 4, 3, 3);
    const cv::Rect right(8, 4, 3, 3);
    const cv::Rect below(4, 8, 3, 3);
    const Selection leftWins = select(depthWith({11, 11}, {left, right, below}), 8);
    EXPECT_TRUE(sameBits(leftWins.mask, maskOf(depthWith({11, 11}, {left}))));
    const Selection rightWins = select(depthWith({11, 11}, {right, below}), 8);
    EXPECT_TRUE(sameBits(rightWins.mask, maskOf(depthWith({11, 11}, {right}))));
}

TEST(ObjectComponent, AddsTheDistancesInFloatRowByRow) {
    // Two squares that mirror each other at a diagonal: the same nine distances, 63.4321766 in sum. Added in float they
    // make 63.4321785 above, which is met first, and 63.4321747 on the left.
    const cv::Rect above(7, 0, 3, 3);
    const cv::Rect left(0, 7, 3, 3);
    const Selection selection = select(depthWith({17, 17}, {above, left}), 8);
    EXPECT_TRUE(sameBits(selection.mask, maskOf(depthWith({17, 17}, {left}))));
}

TEST(ObjectComponent, MeasuresFromTheIntegerHalvesOfTheSize) {
    // Ten columns have their middle at column 5: columns 1-3 lie 3 away on average, columns 6-8 only 2. From 4.5 both
    // would be 2.5 away and the left region, met first, would win.
    const cv::Rect left(1, 3, 3, 5);
    const cv::Rect right(6, 3, 3, 5);
    const Selection even = select(depthWith({10, 10}, {left, right}), 8);
    EXPECT_TRUE(sameBits(even.mask, maskOf(depthWith({10, 10}, {right}))));
    // Nine columns have theirs at 9 / 2 = 4: columns 1-3 are 2 away, columns 6-8 are 3.
    const Selection odd = select(depthWith({9, 10}, {left, right}), 8);
    EXPECT_TRUE(sameBits(odd.mask, maskOf(depthWith({9, 10}, {left}))));
}

TEST(ObjectComponent, LosesAOnePixelWideRegionInTheOpening) {
    const Selection selection = select(depthWith({12, 12}, {{2, 6, 9, 1}}), 4);
    EXPECT_EQ(selection.status, 0);
    EXPECT_EQ(selection.output, "");
    EXPECT_EQ(cv::countNonZero(selection.mask), 0);
}

TEST(ObjectComponent, SeparatesDiagonalNeighbours) {
    // Two 3 x 3 squares that touch in a corner: 18 pixels as one region, 9 each as two.
    const cv::Mat depth = depthWith({12, 12}, {{3, 3, 3, 3}, {6, 6, 3, 3}});
    EXPECT_EQ(select(depth, 9).status, 1);
    EXPECT_EQ(select(depth, 8).status, 0);
}

TEST(ObjectComponent, TakesTheOutsideOfTheImageAsEmptyInTheOpening) {
    // Two columns at the left border hold no 3 x 3 square, unless the outside counted as filled.
    EXPECT_EQ(cv::countNonZero(select(depthWith({9, 9}, {{0, 1, 2, 7}}), 4).mask), 0);
    // Three columns do: the dilation regains the border column that the erosion took.
    const cv::Mat wide = depthWith({9, 9}, {{0, 1, 3, 7}});
    EXPECT_TRUE(sameBits(select(wide, 4).mask, maskOf(wide)));
}

TEST(ObjectComponent, OpensAwayASpurOfTheRegion) {
    const cv::Mat body = depthWith({12, 12}, {{4, 4, 4, 4}});
    const cv::Mat withSpur = depthWith({12, 12}, {{4, 4, 4, 4}, {8, 5, 3, 2}});
    EXPECT_TRUE(sameBits(select(withSpur, 4).mask, maskOf(body)));
}

TEST(ObjectComponent, CountsEveryDepthAboveZeroAsCandidate) {
    // 256 would wrap to 0 in 8 bits; saturated it stays a candidate and joins the halves into one region.
    cv::Mat depth = depthWith({9, 9}, {{3, 3, 3, 3}});
    depth.row(4).colRange(3, 6).setTo(256);
    depth.at<ushort>(3, 3) = 1;
    depth.at<ushort>(5, 5) = 65535;
    EXPECT_EQ(select(depth, 8).status, 0);
}

TEST(ObjectComponent, OnlyReducesTheMask) {
    // A candidate that the height cut did not mark stays unmarked.
    const cv::Mat depth = depthWith({9, 9}, {{3, 3, 3, 3}});
    cv::Mat mask = cv::Mat::zeros(9, 9, CV_8UC1);
    EXPECT_EQ(fast::selectObjectComponent(depth, 4, mask), 0);
    EXPECT_EQ(cv::countNonZero(mask), 0);
}

TEST(ObjectComponent, LeavesTheDepthAlone) {
    const cv::Mat depth = depthWith({9, 9}, {{3, 3, 3, 3}, {0, 0, 2, 2}});
    const cv::Mat before = depth.clone();
    select(depth, 4);
    EXPECT_TRUE(sameBits(depth, before));
}

TEST(ObjectComponent, AcceptsAnyMinimum) {
    const cv::Mat depth = depthWith({9, 9}, {{3, 3, 3, 3}});
    EXPECT_EQ(select(depth, INT_MIN).status, 0);
    EXPECT_EQ(select(depth, -1).status, 0);
    EXPECT_EQ(select(depth, INT_MAX).status, 1);
}

TEST(ObjectComponent, SurvivesMoreRegionsThanLabels) {
    // A checkerboard of 150000 single pixels; a label has 16 bits.
    cv::Mat depth = cv::Mat::zeros(500, 600, CV_16UC1);
    for (int row = 0; row < depth.rows; ++row) {
        for (int column = row % 2; column < depth.cols; column += 2) {
            depth.at<ushort>(row, column) = 700;
        }
    }
    const Selection selection = select(depth, 100);
    EXPECT_EQ(selection.status, 1);
    EXPECT_EQ(selection.output, kNoObject);
    EXPECT_TRUE(sameBits(selection.mask, maskOf(depth)));
}

TEST(ObjectComponent, AcceptsASinglePixelImage) {
    const cv::Mat depth(1, 1, CV_16UC1, cv::Scalar(900));
    EXPECT_EQ(select(depth, 1).status, 1);
    const Selection selection = select(depth, 0);
    EXPECT_EQ(selection.status, 0);
    EXPECT_EQ(cv::countNonZero(selection.mask), 0);
}

/// Blobs of random rectangles, speckle, or a full image.
cv::Mat drawDepth(Draws& draws) {
    const int columns = draws.between(1, 24);
    const int rows = draws.between(1, 24);
    const cv::Size size(columns, rows);
    cv::Mat depth = drawMatrix(draws, size, CV_16UC1);
    const int rectangles = draws.below(9);
    for (int i = 0; i < rectangles; ++i) {
        const int left = draws.between(-3, size.width);
        const int top = draws.between(-3, size.height);
        const int width = draws.between(1, 9);
        const int height = draws.between(1, 9);
        const cv::Rect wanted(left, top, width, height);
        depth(wanted & cv::Rect(cv::Point(0, 0), size)).setTo(draws.between(1, 1200));
    }
    const int speckle = draws.chance(50) ? draws.below(60) : 0;
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            if (draws.chance(speckle)) {
                depth.at<ushort>(row, column) = static_cast<ushort>(draws.chance(50) ? 0 : draws.between(1, 65535));
            }
        }
    }
    return depth;
}

TEST(ObjectComponent, TakesWhatSurroundsAWindowAsOutside) {
    // The mask is a window of a larger image of 255: the opening must not see that.
    const cv::Mat depth(6, 8, CV_16UC1, cv::Scalar(900));
    cv::Mat alone(depth.size(), CV_8UC1, cv::Scalar(255));
    cv::Mat larger(20, 20, CV_8UC1, cv::Scalar(255));
    cv::Mat window = larger(cv::Rect(5, 7, depth.cols, depth.rows));
    ASSERT_EQ(fast::selectObjectComponent(depth, 1, alone), 0);
    ASSERT_EQ(fast::selectObjectComponent(depth, 1, window), 0);
    EXPECT_TRUE(sameBits(window, alone));
}

class ObjectComponentLoops : public EveryLoopVariant {};

INSTANTIATE_TEST_SUITE_P(Loops, ObjectComponentLoops, runnableLoopVariants(), loopVariantName);

TEST_P(ObjectComponentLoops, AgreesWithThePlainFormOnRandomImages) {
    Draws draws(103);
    for (int run = 0; run < 2000; ++run) {
        const cv::Mat depth = drawDepth(draws);
        const int minPixels = draws.chance(70) ? draws.below(12) : draws.between(-2, 200);
        cv::Mat mask = maskOf(depth);
        if (draws.chance(20)) {
            mask.row(draws.below(mask.rows)).setTo(0);
        }
        cv::Mat plainMask = mask.clone();
        const CapturedOutput plainOutput;
        const int expected = plain::selectObjectComponent(depth, minPixels, plainMask);
        const CapturedOutput output;
        const int status = fast::selectObjectComponent(depth, minPixels, mask);
        ASSERT_EQ(status, expected) << "run " << run;
        ASSERT_EQ(output.text(), plainOutput.text()) << "run " << run;
        ASSERT_TRUE(sameBits(mask, plainMask)) << "run " << run << ", minimum " << minPixels << "\n" << depth;
    }
}

}  // namespace

}  // namespace quorvel::test
