// SPDX-License-Identifier: Apache-2.0
#include "measure/height_cut.h"

#include <vector>

#include <gtest/gtest.h>

#include "library/fast_forms.h"
#include "library/measure_draws.h"
#include "library/plain/height_cut.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

const cv::Vec3f kTowardsScene(0.0F, 0.0F, 1.0F);

struct CutImages {
    cv::Mat depth;
    cv::Mat cloud;
    cv::Mat mask;
};

/// One row of pixels, each with depth 500 and the point given.
CutImages rowOf(const std::vector<cv::Vec3f>& points) {
    const int columns = static_cast<int>(points.size());
    CutImages images{cv::Mat(1, columns, CV_16UC1, cv::Scalar(500)), cv::Mat(1, columns, CV_32FC3),
                     cv::Mat(1, columns, CV_8UC1, cv::Scalar(0))};
    for (int column = 0; column < columns; ++column) {
        images.cloud.at<cv::Vec3f>(0, column) = points[static_cast<std::size_t>(column)];
    }
    return images;
}

/// Which pixels of a row were marked, after checking that exactly they kept their depth.
std::vector<bool> marked(const CutImages& images) {
    std::vector<bool> marks;
    for (int column = 0; column < images.mask.cols; ++column) {
        const int mark = images.mask.at<uchar>(0, column);
        EXPECT_TRUE(mark == 0 || mark == 255) << "column " << column << " has mark " << mark;
        EXPECT_EQ(images.depth.at<ushort>(0, column), mark == 255 ? 500 : 0) << "column " << column;
        marks.push_back(mark == 255);
    }
    return marks;
}

TEST(HeightCut, KeepsAPointExactlyAtTheMinimumHeight) {
    // Plane z = 1000, minimum 10: distances -10, -9.5, -10.5.
    CutImages images = rowOf({{0, 0, 990}, {0, 0, 990.5F}, {0, 0, 989.5F}});
    EXPECT_EQ(fast::cutAboveReferencePlane(images.depth, images.cloud, kTowardsScene, 1000, 10, images.mask), 0);
    EXPECT_EQ(marked(images), (std::vector<bool>{true, false, true}));
}

TEST(HeightCut, BlanksPointsBelowThePlaneAndOnIt) {
    CutImages images = rowOf({{5, 6, 1000}, {5, 6, 1010}, {5, 6, 1500}, {5, 6, 999}});
    EXPECT_EQ(fast::cutAboveReferencePlane(images.depth, images.cloud, kTowardsScene, 1000, 10, images.mask), 0);
    EXPECT_EQ(marked(images), (std::vector<bool>{false, false, false, false}));
}

TEST(HeightCut, BlanksAnAbsentPointWhateverThePlane) {
    // The origin lies 1000 mm above the first plane and would be high enough, were it a point.
    for (const float offset : {1000.0F, 0.0F, -1000.0F}) {
        CutImages images = rowOf({{0, 0, 0}});
        EXPECT_EQ(fast::cutAboveReferencePlane(images.depth, images.cloud, kTowardsScene, offset, 10, images.mask), 0);
        EXPECT_EQ(marked(images), std::vector<bool>{false}) << "offset " << offset;
    }
}

TEST(HeightCut, IgnoresAPointShorterThanItsThreshold) {
    // 1e-9F widens to 9.9999997e-10, which is below 1e-9; 1.1e-9F is not.
    CutImages images = rowOf({{0, 0, 1e-9F}, {0, 0, 1.1e-9F}, {-1.1e-9F, 0, 0}});
    EXPECT_EQ(fast::cutAboveReferencePlane(images.depth, images.cloud, kTowardsScene, 1000, 10, images.mask), 0);
    EXPECT_EQ(marked(images), (std::vector<bool>{false, true, true}));
}

TEST(HeightCut, KeepsAPointWhoseDistanceIsNotANumber) {
    CutImages images = rowOf({{kNaN, 0, 1000}, {0, 0, kNaN}, {0, 0, -kInfinity}, {0, 0, kInfinity}});
    EXPECT_EQ(fast::cutAboveReferencePlane(images.depth, images.cloud, kTowardsScene, 1000, 10, images.mask), 0);
    // The two infinite points are plainly above and below: the normal's zeros meet finite components only.
    EXPECT_EQ(marked(images), (std::vector<bool>{true, true, true, false}));
}

TEST(HeightCut, RefusesAZeroNormalAndTouchesNothing) {
    for (const float zero : {0.0F, -0.0F}) {
        CutImages images = rowOf({{0, 0, 990}, {0, 0, 0}});
        images.mask.at<uchar>(0, 1) = 9;
        EXPECT_EQ(fast::cutAboveReferencePlane(images.depth, images.cloud, {zero, 0, zero}, 1000, 10, images.mask), 1);
        EXPECT_EQ(images.depth.at<ushort>(0, 0), 500);
        EXPECT_EQ(images.depth.at<ushort>(0, 1), 500);
        EXPECT_EQ(images.mask.at<uchar>(0, 0), 0);
        EXPECT_EQ(images.mask.at<uchar>(0, 1), 9);
    }
}

TEST(HeightCut, UsesTheNormalAsGiven) {
    // Twice the unit normal doubles n . p: 2 * 990 - 1000 = 980 is far below the plane.
    CutImages images = rowOf({{0, 0, 990}, {0, 0, 495}});
    EXPECT_EQ(fast::cutAboveReferencePlane(images.depth, images.cloud, {0, 0, 2}, 1000, 10, images.mask), 0);
    EXPECT_EQ(marked(images), (std::vector<bool>{false, true}));
}

TEST(HeightCut, TakesANegativeMinimumAsDepthBelowThePlane) {
    CutImages images = rowOf({{0, 0, 1005}, {0, 0, 1005.5F}});
    EXPECT_EQ(fast::cutAboveReferencePlane(images.depth, images.cloud, kTowardsScene, 1000, -5, images.mask), 0);
    EXPECT_EQ(marked(images), (std::vector<bool>{true, false}));
}

TEST(HeightCut, AcceptsEmptyImages) {
    cv::Mat depth;
    cv::Mat mask;
    EXPECT_EQ(fast::cutAboveReferencePlane(depth, cv::Mat(), kTowardsScene, 1000, 10, mask), 0);
}

CutImages drawImages(Draws& draws) {
    const int columns = draws.between(1, 20);
    const int rows = draws.between(1, 12);
    const cv::Size size(columns, rows);
    CutImages images{drawMatrix(draws, size, CV_16UC1), drawMatrix(draws, size, CV_32FC3),
                     drawMatrix(draws, size, CV_8UC1)};
    const bool wholeNumbers = draws.chance(40);
    const int absent = draws.chance(20) ? 100 : draws.between(0, 60);
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            images.depth.at<ushort>(row, column) = static_cast<ushort>(draws.below(65536));
            if (draws.chance(absent)) {
                continue;
            }
            const float x = draws.real(-300, 300);
            const float y = draws.real(-300, 300);
            cv::Vec3f point(x, y, draws.real(880, 1030));
            if (wholeNumbers) {
                point = {0.0F, 0.0F, static_cast<float>(draws.between(985, 995))};
            }
            if (draws.chance(3)) {
                point[draws.below(3)] = draws.chance(50) ? kNaN : kInfinity;
            }
            images.cloud.at<cv::Vec3f>(row, column) = point;
        }
    }
    return images;
}

class HeightCutLoops : public EveryLoopVariant {};

INSTANTIATE_TEST_SUITE_P(Loops, HeightCutLoops, runnableLoopVariants(), loopVariantName);

TEST_P(HeightCutLoops, AgreesWithThePlainFormOnRandomImages) {
    Draws draws(101);
    for (int run = 0; run < 2000; ++run) {
        CutImages images = drawImages(draws);
        const cv::Vec3f normal = draws.chance(4) ? cv::Vec3f(0, 0, 0) : drawNormal(draws);
        const float offset = draws.chance(40) ? 1000.0F : draws.real(900, 1100);
        const float minHeight = draws.chance(60) ? 10.0F : draws.real(-20, 30);
        cv::Mat plainDepth = images.depth.clone();
        cv::Mat plainMask = images.mask.clone();
        const int expected =
            plain::cutAboveReferencePlane(plainDepth, images.cloud, normal, offset, minHeight, plainMask);
        ASSERT_EQ(fast::cutAboveReferencePlane(images.depth, images.cloud, normal, offset, minHeight, images.mask),
                  expected)
            << "run " << run;
        ASSERT_TRUE(sameBits(images.depth, plainDepth)) << "depth, run " << run;
        ASSERT_TRUE(sameBits(images.mask, plainMask)) << "mask, run " << run;
    }
}

}  // namespace

}  // namespace quorvel::test
