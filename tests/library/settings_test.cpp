// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <climits>
#include <string>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/measure_draws.h"
#include "support/captured_output.h"

namespace quorvel::test {

namespace {

Quorvel rulerOf(int width, int height) {
    return {600, 600, 320, 240, width, height, false, ""};
}

cv::Rect calibrationOf(float ratio, int width, int height) {
    Quorvel ruler = rulerOf(width, height);
    cv::Rect region;
    EXPECT_EQ(ruler.setCalibrationRoI(ratio, region), 0);
    EXPECT_EQ(ruler.calibrationRoI, region);
    cv::Rect other;
    EXPECT_EQ(ruler.setEffectiveRegionInArea(ratio, other), 0);
    EXPECT_EQ(ruler.effectiveRegion, other);
    EXPECT_EQ(other, region) << "both regions follow the same rule";
    return region;
}

TEST(Settings, ReportsTheVersion) {
    EXPECT_EQ(rulerOf(640, 480).getVersion(), QUORVEL_VERSION);
}

TEST(Settings, TheVersionIsTheOneOfThisRelease) {
    EXPECT_STREQ(QUORVEL_VERSION, "3.6.4.1");
}

TEST(Settings, TheVersionsNumbersMakeItsText) {
    const std::array<int, 4> numbers{QUORVEL_VERSION_MAJOR, QUORVEL_VERSION_MINOR, QUORVEL_VERSION_PATCH,
                                     QUORVEL_VERSION_TWEAK};
    std::string text;
    for (const int number : numbers) {
        text += (text.empty() ? "" : ".") + std::to_string(number);
    }
    EXPECT_EQ(text, QUORVEL_VERSION);
}

TEST(Settings, StoresTheCameraTypeWhateverTheFlag) {
    for (const bool flag : {false, true}) {
        Quorvel ruler = rulerOf(640, 480);
        EXPECT_EQ(ruler.setCameraType(flag, 5), 0);
        EXPECT_EQ(ruler.cameraType, 5.0F);
        EXPECT_TRUE(ruler.cameraTypeSet);
    }
}

TEST(Settings, KeepsTheCameraTypeSet) {
    Quorvel ruler = rulerOf(640, 480);
    ruler.setCameraType(true, 30);
    ruler.setCameraType(true, 0);
    EXPECT_EQ(ruler.cameraType, 0.0F);
    EXPECT_TRUE(ruler.cameraTypeSet);
    ruler.setCameraType(true, -7);
    EXPECT_EQ(ruler.cameraType, -7.0F);
    // 2^31 - 1 rounds to 2^31 as a float.
    ruler.setCameraType(true, INT_MAX);
    EXPECT_EQ(ruler.cameraType, 2147483648.0F);
}

TEST(Settings, SwitchesTheDiagnosticLines) {
    Quorvel ruler = rulerOf(640, 480);
    ruler.setDebugMode(true);
    EXPECT_TRUE(ruler.debugMode);
    ruler.setDebugMode(false);
    EXPECT_FALSE(ruler.debugMode);
}

TEST(Settings, HasNoCameraHeightBeforeACalibration) {
    Quorvel ruler = rulerOf(640, 480);
    ruler.cameraHeight = 700;
    float height = 99;
    EXPECT_EQ(ruler.getCameraHeight(height), 1);
    EXPECT_EQ(height, 0.0F);
    bool status = true;
    EXPECT_EQ(ruler.getCalibStatus(status), 0);
    EXPECT_FALSE(status);
}

TEST(Settings, ReportsTheCameraHeightOfACalibration) {
    Quorvel ruler = rulerOf(640, 480);
    setPlane(ruler, {0, 0, 1}, 812.5F, 10);
    // The stored height counts, not the plane: they part in GROUND_TRACKING.
    ruler.refPlaneOffset = 900;
    float height = 0;
    EXPECT_EQ(ruler.getCameraHeight(height), 0);
    EXPECT_EQ(height, 812.5F);
    bool status = false;
    EXPECT_EQ(ruler.getCalibStatus(status), 0);
    EXPECT_TRUE(status);
}

TEST(Settings, CentresARegionOfARatio) {
    EXPECT_EQ(calibrationOf(1.0F, 641, 481), cv::Rect(0, 0, 641, 481));
    EXPECT_EQ(calibrationOf(0.5F, 640, 480), cv::Rect(160, 120, 320, 240));
    // 640 * 0.3F = 192.000008 rounds to 192; (640 - 192) / 2 = 224, (480 - 144) / 2 = 168.
    EXPECT_EQ(calibrationOf(0.3F, 640, 480), cv::Rect(224, 168, 192, 144));
    // 641 * 0.5 = 320.5, (641 - 320.5) / 2 = 160.25; 481 * 0.5 = 240.5, 120.25: truncated.
    EXPECT_EQ(calibrationOf(0.5F, 641, 481), cv::Rect(160, 120, 320, 240));
}

TEST(Settings, BoundsNoRatio) {
    EXPECT_EQ(calibrationOf(2.0F, 640, 480), cv::Rect(-320, -240, 1280, 960));
    EXPECT_EQ(calibrationOf(0.0F, 640, 480), cv::Rect(320, 240, 0, 0));
    EXPECT_EQ(calibrationOf(-0.5F, 640, 480), cv::Rect(480, 360, -320, -240));
    // (641 - 961.5) / 2 = -160.25 is truncated towards zero.
    EXPECT_EQ(calibrationOf(1.5F, 641, 481), cv::Rect(-160, -120, 961, 721));
}

TEST(Settings, TurnsARatioThatIsNoNumberIntoTheLowestInts) {
    EXPECT_EQ(calibrationOf(kNaN, 640, 480), cv::Rect(INT_MIN, INT_MIN, INT_MIN, INT_MIN));
    EXPECT_EQ(calibrationOf(1e30F, 640, 480), cv::Rect(INT_MIN, INT_MIN, INT_MIN, INT_MIN));
}

TEST(Settings, StoresRegionsAsGiven) {
    Quorvel ruler = rulerOf(640, 480);
    const cv::Rect odd(-5, 2000, -7, 0);
    EXPECT_EQ(ruler.setCalibrationRoI(odd), 0);
    EXPECT_EQ(ruler.calibrationRoI, odd);
    EXPECT_EQ(ruler.effectiveRegion, cv::Rect(270, 190, 100, 100)) << "the other region stays";
    EXPECT_EQ(ruler.setEffectiveRegionInArea(odd), 0);
    EXPECT_EQ(ruler.effectiveRegion, odd);
}

TEST(Settings, PrintsOnlyTheDetectionRegionAndOnlyWithDebugMode) {
    Quorvel ruler = rulerOf(640, 480);
    cv::Rect region;
    {
        const CapturedOutput output;
        ruler.setEffectiveRegionInArea(cv::Rect(270, 190, 100, 100));
        EXPECT_EQ(output.text(), "");
    }
    ruler.setDebugMode(true);
    const CapturedOutput output;
    ruler.setEffectiveRegionInArea(0.5F, region);
    ruler.setCalibrationRoI(0.5F, region);
    ruler.setCalibrationRoI(cv::Rect(1, 2, 3, 4));
    ruler.setCameraType(true, 1);
    EXPECT_EQ(output.text(), "");
    ruler.setEffectiveRegionInArea(cv::Rect(270, 190, 100, 100));
    EXPECT_EQ(output.text(), "DYNAMIC mode object effective RoI value : [100 x 100 from (270, 190)]\n");
}

TEST(Settings, StoresTheFilterWeightAsGiven) {
    Quorvel ruler = rulerOf(640, 480);
    const CapturedOutput output;
    EXPECT_EQ(ruler.setFilterWeight(-0.25F), 0);
    EXPECT_EQ(ruler.filterWeight, -0.25F);
    EXPECT_EQ(output.text(), "");
    ruler.setDebugMode(true);
    EXPECT_EQ(ruler.setFilterWeight(0.005F), 0);
    EXPECT_EQ(ruler.filterWeight, 0.005F);
    EXPECT_EQ(output.text(), "Filter weight value : 0.005\n");
}

TEST(Settings, StopKeepsEverything) {
    Quorvel ruler = rulerOf(640, 480);
    setPlane(ruler, {0, 0, 1}, 900, 10);
    EXPECT_EQ(ruler.stop(), 0);
    EXPECT_EQ(ruler.stop(), 0);
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_EQ(ruler.refPlaneOffset, 900.0F);
    Draws draws(1);
    const DepthScene scene = blockScene(100);
    Quorvel stopped = scene.ruler();
    stopped.stop();
    EXPECT_TRUE(stopped.getCameraFrame(scene.color(), scene.depth(draws))) << "the object stays usable";
}

}  // namespace

}  // namespace quorvel::test
