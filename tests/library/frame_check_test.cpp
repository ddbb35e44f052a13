// SPDX-License-Identifier: Apache-2.0
#include "image/frame_check.h"

#include <array>
#include <climits>
#include <string>

#include <gtest/gtest.h>

#include "image/image_form.h"
#include "library/hostile_draws.h"

namespace quorvel::test {

namespace {

using internal::frameProblem;

const cv::Mat kColor(48, 64, CV_8UC3, cv::Scalar::all(1));
const cv::Mat kDepth(48, 64, CV_16UC1, cv::Scalar(1));

cv::Mat cube(int type) {
    const std::array<int, 3> sizes{2, 48, 64};
    return {3, sizes.data(), type, cv::Scalar::all(0)};
}

TEST(FrameCheck, TellsAnImagesForm) {
    EXPECT_TRUE(internal::hasForm(kDepth, {64, 48}, CV_16UC1));
    EXPECT_FALSE(internal::hasForm(kDepth, {48, 64}, CV_16UC1));
    EXPECT_FALSE(internal::hasForm(kDepth, {63, 48}, CV_16UC1));
    EXPECT_FALSE(internal::hasForm(kDepth, {64, 48}, CV_16SC1));
    EXPECT_FALSE(internal::hasForm(cv::Mat(), {64, 48}, CV_16UC1));
    EXPECT_FALSE(internal::hasForm(cv::Mat(0, 0, CV_16UC1), {0, 0}, CV_16UC1)) << "no pixels";
    EXPECT_FALSE(internal::hasForm(withoutPixels(48, 64, CV_16UC1), {64, 48}, CV_16UC1));
    EXPECT_FALSE(internal::hasForm(cube(CV_16UC1), {64, 48}, CV_16UC1));
    EXPECT_FALSE(internal::hasForm(cube(CV_16UC1), {-1, -1}, CV_16UC1)) << "rows and columns of a cube are -1";
}

TEST(FrameCheck, FindsNothingWrongWithAFittingFrame) {
    EXPECT_EQ(frameProblem(kColor, kDepth, 64, 48, 4), "");
    EXPECT_EQ(frameProblem(kColor, kDepth, 64, 48, 48), "") << "a small image of one row";
}

TEST(FrameCheck, AcceptsWindowsOfLargerImages) {
    const cv::Mat color(60, 90, CV_8UC3);
    const cv::Mat depth(60, 90, CV_16UC1);
    const cv::Rect window(3, 5, 64, 48);
    EXPECT_EQ(frameProblem(color(window), depth(window), 64, 48, 4), "");
}

TEST(FrameCheck, SaysWhatWasExpectedAndWhatCame) {
    EXPECT_EQ(frameProblem(cv::Mat(10, 20, CV_8UC1), kDepth, 64, 48, 4),
              "Frame refused: expected colour and depth of 64 x 48 in CV_8UC3 and CV_16UC1, got colour 20 x 10 CV_8UC1 "
              "and depth 64 x 48 CV_16UC1.");
    EXPECT_EQ(frameProblem(cube(CV_8UC3), cv::Mat(48, 64, CV_32FC1), 64, 48, 4),
              "Frame refused: expected colour and depth of 64 x 48 in CV_8UC3 and CV_16UC1, got colour 64 x 48 x 2 "
              "CV_8UC3 and depth 64 x 48 CV_32FC1.");
}

TEST(FrameCheck, SaysWhichImageHasNoPixels) {
    EXPECT_EQ(frameProblem(kColor, withoutPixels(48, 64, CV_16UC1), 64, 48, 4),
              "Frame refused: expected colour and depth of 64 x 48 in CV_8UC3 and CV_16UC1, got colour 64 x 48 CV_8UC3 "
              "and depth 64 x 48 CV_16UC1 without pixels.");
}

TEST(FrameCheck, RefusesFramesThatAreTooLarge) {
    EXPECT_EQ(frameProblem(kColor, kDepth, 32769, 48, 4),
              "Frame refused: a frame of 32769 x 48 is too large, at most 32768 pixels a side and 67108864 in all are "
              "measured.");
    EXPECT_NE(frameProblem(kColor, kDepth, 8193, 8192, 4).find("too large"), std::string::npos);
    EXPECT_NE(frameProblem(kColor, kDepth, INT_MAX, INT_MAX, 4).find("too large"), std::string::npos);
    EXPECT_EQ(frameProblem(kColor, kDepth, 8192, 8192, 4).find("too large"), std::string::npos) << "2^26 pixels";
    EXPECT_EQ(frameProblem(cv::Mat(4, 32768, CV_8UC3), cv::Mat(4, 32768, CV_16UC1), 32768, 4, 4), "");
}

TEST(FrameCheck, RefusesEveryMismatch) {
    EXPECT_NE(frameProblem(kColor.t(), kDepth, 64, 48, 4), "") << "colour turned";
    EXPECT_NE(frameProblem(kColor, kDepth.t(), 64, 48, 4), "") << "depth turned";
    EXPECT_NE(frameProblem(kColor.colRange(0, 63), kDepth, 64, 48, 4), "") << "colour a column short";
    EXPECT_NE(frameProblem(kColor, kDepth.rowRange(0, 47), 64, 48, 4), "") << "depth a row short";
    EXPECT_NE(frameProblem(cv::Mat(48, 64, CV_8UC4), kDepth, 64, 48, 4), "") << "colour with four channels";
    EXPECT_NE(frameProblem(kColor, cv::Mat(48, 64, CV_16UC3), 64, 48, 4), "") << "depth with three channels";
    EXPECT_NE(frameProblem(kDepth, kColor, 64, 48, 4), "") << "swapped";
    EXPECT_NE(frameProblem(kColor, cube(CV_16UC1), 64, 48, 4), "") << "depth of three dimensions";
}

TEST(FrameCheck, RefusesEveryFrameOfAnUnconfiguredRuler) {
    for (const std::array<int, 3>& form : {std::array<int, 3>{0, 0, 0},
                                           {64, 48, 0},
                                           {64, 48, -4},
                                           {0, 48, 4},
                                           {64, 0, 4},
                                           {-64, 48, 4},
                                           {64, 48, INT_MIN}}) {
        const std::string problem = frameProblem(kColor, kDepth, form[0], form[1], form[2]);
        EXPECT_EQ(problem, "Frame refused: the ruler is not configured, its frame size is " + std::to_string(form[0]) +
                               " x " + std::to_string(form[1]) + " and its down-scale factor " +
                               std::to_string(form[2]) + ".");
    }
}

TEST(FrameCheck, RefusesAFrameSmallerThanTheDownScaleFactor) {
    EXPECT_EQ(frameProblem(cv::Mat(3, 8, CV_8UC3), cv::Mat(3, 8, CV_16UC1), 8, 3, 4),
              "Frame refused: a frame of 8 x 3 is too small for the down-scale factor 4.");
    EXPECT_NE(frameProblem(cv::Mat(8, 3, CV_8UC3), cv::Mat(8, 3, CV_16UC1), 3, 8, 4), "");
    EXPECT_EQ(frameProblem(cv::Mat(4, 4, CV_8UC3), cv::Mat(4, 4, CV_16UC1), 4, 4, 4), "");
}

}  // namespace

}  // namespace quorvel::test
