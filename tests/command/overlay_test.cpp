// SPDX-License-Identifier: Apache-2.0
#include "kit/draw/overlay.h"

#include <gtest/gtest.h>

#include "kit/draw/drawing.h"

namespace quorvel::command {

using namespace kit;
namespace {

const Camera kCamera{600.0, 600.0, 320.0, 240.0, 640, 480};

/// A box of 200 x 100 mm, 100 mm high, in the middle under a camera at 1000 mm.
Measurement measuredBox() {
    Measurement measurement;
    measurement.state.plane = {{0.0F, 0.0F, 1.0F}, 1000.0F};
    measurement.state.detectionArea = {20, 20, 600, 440};
    measurement.result.corners = {{260, 210}, {380, 210}, {380, 270}, {260, 270},
                                  {253, 207}, {387, 207}, {387, 273}, {253, 273}};
    measurement.result.length = 200.0F;
    measurement.result.width = 100.0F;
    measurement.result.height = 100.0F;
    measurement.result.inView = true;
    return measurement;
}

int changedPixels(const cv::Mat& a, const cv::Mat& b, const cv::Rect& where) {
    cv::Mat difference;
    cv::absdiff(a(where), b(where), difference);
    cv::Mat any = cv::Mat::zeros(difference.size(), CV_8UC1);
    for (int channel = 0; channel < 3; ++channel) {
        cv::Mat one;
        cv::extractChannel(difference, one, channel);
        any |= one;
    }
    return cv::countNonZero(any);
}

const cv::Rect kTopStrip(10, 25, 620, 40);

TEST(Overlay, LeavesTheColorImageAndDrawsTheBox) {
    const cv::Mat color(480, 640, CV_8UC3, cv::Scalar(90, 120, 60));
    const cv::Mat before = color.clone();
    const cv::Mat overlay = drawOverlay(color, kCamera, measuredBox());
    EXPECT_EQ(cv::norm(color, before, cv::NORM_INF), 0.0);
    EXPECT_EQ(overlay.size(), color.size());
    EXPECT_EQ(overlay.type(), CV_8UC3);
    const auto& top = overlay.at<cv::Vec3b>(207, 350);
    EXPECT_GT(top[1], top[2]) << "the top rectangle is green";
    const auto& ground = overlay.at<cv::Vec3b>(230, 260);
    EXPECT_GT(ground[2], ground[0]) << "the ground rectangle is orange";
}

TEST(Overlay, SizesAreLegibleOnBlackAndOnWhite) {
    // The label's letters and its plate must differ strongly wherever it lies.
    for (const double level : {0.0, 255.0}) {
        const cv::Mat color(480, 640, CV_8UC3, cv::Scalar::all(level));
        const cv::Mat overlay = drawOverlay(color, kCamera, measuredBox());
        cv::Mat green;
        cv::extractChannel(overlay(cv::Rect(260, 160, 120, 40)), green, 1);  // above the upper long side
        double darkest = 0.0;
        double brightest = 0.0;
        cv::minMaxLoc(green, &darkest, &brightest);
        EXPECT_GT(brightest, 180.0) << "background " << level;
        EXPECT_LT(darkest, 100.0) << "background " << level;
    }
}

TEST(Overlay, ReasonIsWrittenAtTheTop) {
    Measurement nothing = measuredBox();
    nothing.result = MeasureResult();
    nothing.diagnosis = {Reason::NothingHighEnough, "no pixel stands 10.0 mm or more above the plane", {}};
    const cv::Mat color(480, 640, CV_8UC3, cv::Scalar(90, 120, 60));
    EXPECT_GT(changedPixels(drawOverlay(color, kCamera, nothing), color, kTopStrip), 10000);
    EXPECT_EQ(changedPixels(drawOverlay(color, kCamera, measuredBox()), color, {30, 30, 500, 40}), 0);
}

TEST(Overlay, ReasonMovesDownWhenTheBoxIsAtTheTop) {
    Measurement outside = measuredBox();
    outside.result.inView = false;
    outside.result.corners = {{260, 10}, {380, 10}, {380, 50}, {260, 50}, {253, -7}, {387, -7}, {387, 53}, {253, 53}};
    outside.diagnosis = {Reason::OutOfView, "corner 4 leaves the picture", {}};
    const cv::Mat color(480, 640, CV_8UC3, cv::Scalar(90, 120, 60));
    const cv::Mat overlay = drawOverlay(color, kCamera, outside);
    EXPECT_GT(changedPixels(overlay, color, {10, 430, 620, 30}), 10000);
}

TEST(Overlay, CornersThatAreNoPositionsAreSkipped) {
    Measurement outside = measuredBox();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    outside.result.inView = false;
    outside.result.corners[0] = {nan, nan};
    outside.result.corners[5] = {1e30F, -1e30F};
    outside.diagnosis = {Reason::OutOfView, "corner 0 leaves the picture", {}};
    const cv::Mat color(480, 640, CV_8UC3, cv::Scalar(90, 120, 60));
    EXPECT_EQ(drawOverlay(color, kCamera, outside).size(), color.size());
}

TEST(Overlay, TinyAndLargePicturesWork) {
    for (const cv::Size size : {cv::Size(16, 16), cv::Size(2000, 40), cv::Size(40, 1500)}) {
        const cv::Mat color(size, CV_8UC3, cv::Scalar(90, 120, 60));
        EXPECT_EQ(drawOverlay(color, kCamera, measuredBox()).size(), size);
        Measurement nothing;
        nothing.diagnosis = {Reason::NoPlane, "there is no stored plane", {}};
        EXPECT_EQ(drawOverlay(color, kCamera, nothing).size(), size);
    }
}

TEST(WrapText, BreaksBetweenWordsAndKeepsThemAll) {
    const auto lines = wrapText("one two three four five six seven", 120, 10.0);
    ASSERT_GT(lines.size(), 1U);
    std::string joined;
    for (const std::string& line : lines) {
        EXPECT_LE(textSize(line, 10.0).width, 120) << line;
        joined += (joined.empty() ? "" : " ") + line;
    }
    EXPECT_EQ(joined, "one two three four five six seven");
    EXPECT_EQ(wrapText("", 120, 10.0).size(), 1U);
    EXPECT_EQ(wrapText("unbreakablelongword", 5, 10.0).size(), 1U);
}

}  // namespace
}  // namespace quorvel::command
