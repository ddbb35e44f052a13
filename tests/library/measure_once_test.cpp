// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/measure_draws.h"
#include "library/plain/object_chain.h"
#include "library/same_result.h"
#include "support/captured_output.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

const std::array<ProductType, 4> kModes{KIOSK, GROUND_TRACKING, GROUND_GROWING, KIOSK_LOW_OBJECT};

/// A ruler that has seen a scene and knows its plane; detection area: the whole picture.
Quorvel rulerBefore(const DepthScene& scene, ProductType mode) {
    Draws draws(1);
    Quorvel ruler = scene.ruler();
    EXPECT_TRUE(ruler.getCameraFrame(scene.color(), scene.depth(draws)));
    setPlane(ruler, {0, 0, 1}, scene.distance, 5);
    ruler.productType = mode;
    ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene.size);
    return ruler;
}

void expectSameImages(const Quorvel& a, const Quorvel& b) {
    EXPECT_TRUE(sameBits(a.colorImage, b.colorImage)) << "colorImage";
    EXPECT_TRUE(sameBits(a.depthImage, b.depthImage)) << "depthImage";
    EXPECT_TRUE(sameBits(a.colorSmall, b.colorSmall)) << "colorSmall";
    EXPECT_TRUE(sameBits(a.depthSmall, b.depthSmall)) << "depthSmall";
    EXPECT_TRUE(sameBits(a.pointCloud, b.pointCloud)) << "pointCloud";
    EXPECT_TRUE(sameBits(a.pointCloudSmall, b.pointCloudSmall)) << "pointCloudSmall";
    EXPECT_TRUE(sameBits(a.pointCloudSmallCopy, b.pointCloudSmallCopy)) << "pointCloudSmallCopy";
}

TEST(MeasureOnce, MeasuresTheObjectInTheThreeMeasuringModes) {
    // At z = 800 a pixel is 13.33 mm. 22 x 14 pixels of points but for the corners: -146 ... 133 and -93 ... 80 whole
    // mm, the vertical side times 1 + 250 / 304; height 200 - 0.007 * 800 = 194.4, in GROUND_TRACKING 7 less.
    for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING}) {
        Quorvel ruler = rulerBefore(blockScene(200), mode);
        ruler.result = oldResult();
        const CapturedOutput output;
        ruler.debugMode = true;
        EXPECT_EQ(ruler.measureOnce(), 0) << mode;
        EXPECT_EQ(output.text(), "") << mode;
        EXPECT_NEAR(ruler.result.length, 173 * (1 + 250.0 / 304), 1e-2) << mode;
        EXPECT_NEAR(ruler.result.width, 279, 1e-2) << mode;
        EXPECT_NEAR(ruler.result.height, mode == GROUND_TRACKING ? 187.4 : 194.4, 1e-3) << mode;
        EXPECT_TRUE(ruler.result.inView) << mode;
        EXPECT_EQ(ruler.result.onTarget, mode != GROUND_GROWING) << mode;
        EXPECT_EQ(ruler.result.corners.size(), 8U) << mode;
        EXPECT_EQ(ruler.result.sideMargin, 0.0F) << mode;
    }
}

TEST(MeasureOnce, LeavesOnlyTheObjectInTheImages) {
    Quorvel ruler = rulerBefore(blockScene(200), GROUND_GROWING);
    EXPECT_EQ(ruler.measureOnce(), 0);
    EXPECT_EQ(cv::countNonZero(ruler.depthSmall), 24) << "6 x 4 small pixels";
    EXPECT_EQ(cv::countNonZero(ruler.depthSmall == 800), 24);
    cv::Mat depths;
    cv::extractChannel(ruler.pointCloud, depths, 2);
    EXPECT_EQ(cv::countNonZero(depths), 304);
    EXPECT_EQ(cv::countNonZero(ruler.depthImage), 64 * 48) << "the frame itself stays";
    EXPECT_EQ(cv::countNonZero(ruler.pointCloudSmall.reshape(1) == 0),
              cv::countNonZero(ruler.pointCloudSmallCopy.reshape(1) == 0));
}

TEST(MeasureOnce, MeasuresNothingInOtherModes) {
    for (const int mode : {static_cast<int>(KIOSK_LOW_OBJECT), 4, 17, -1}) {
        for (const bool calibrated : {false, true}) {
            Quorvel ruler = rulerBefore(blockScene(200), KIOSK);
            ruler.productType = mode;
            ruler.calibStatus = calibrated;
            ruler.minObjectHeight = 77;
            ruler.debugMode = true;
            ruler.result = oldResult();
            const Quorvel before = detachedCopy(ruler);
            const CapturedOutput output;
            EXPECT_EQ(ruler.measureOnce(), 0) << mode;
            EXPECT_EQ(output.text(), "") << mode;
            EXPECT_TRUE(isEmptyResult(ruler.result)) << mode;
            EXPECT_EQ(ruler.minObjectHeight, 77.0F) << mode;
            expectSameImages(ruler, before);
        }
    }
}

TEST(MeasureOnce, NeedsAPlaneInTheModesWithAFixedCamera) {
    for (const ProductType mode : {KIOSK, GROUND_GROWING}) {
        for (const bool debug : {false, true}) {
            Quorvel ruler = rulerBefore(blockScene(200), mode);
            ruler.calibStatus = false;
            ruler.debugMode = debug;
            ruler.minObjectHeight = 77;
            ruler.result = oldResult();
            const Quorvel before = detachedCopy(ruler);
            const CapturedOutput output;
            EXPECT_EQ(ruler.measureOnce(), 1);
            EXPECT_EQ(output.text(), debug ? "No calibration data.\n" : "");
            EXPECT_TRUE(isEmptyResult(ruler.result));
            EXPECT_EQ(ruler.minObjectHeight, 77.0F) << "no band is chosen without a plane";
            expectSameImages(ruler, before);
        }
    }
}

TEST(MeasureOnce, AsksForNoCalibrationInGroundTracking) {
    Quorvel ruler = rulerBefore(blockScene(200), GROUND_TRACKING);
    ruler.calibStatus = false;
    EXPECT_EQ(ruler.measureOnce(), 0);
    EXPECT_TRUE(ruler.result.inView);
}

TEST(MeasureOnce, FailsWithAZeroNormalInEveryMode) {
    for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING}) {
        Quorvel ruler = rulerBefore(blockScene(200), mode);
        ruler.refPlaneNormal = {0, 0, 0};
        ruler.result = oldResult();
        EXPECT_EQ(ruler.measureOnce(), 1) << mode;
        EXPECT_TRUE(isEmptyResult(ruler.result)) << mode;
    }
    // With the distance 0 every depth is ground, and the search for an object prints its line too.
    Quorvel ruler = rulerBefore(blockScene(200), GROUND_TRACKING);
    setPlane(ruler, {0, 0, 0}, 0, 0);
    const CapturedOutput output;
    EXPECT_EQ(ruler.measureOnce(), 1);
    EXPECT_EQ(output.text(), "No object found.\n");
}

TEST(MeasureOnce, SaysThatThereIsNoObjectWhateverTheDebugMode) {
    for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING}) {
        for (const bool debug : {false, true}) {
            Quorvel ruler = rulerBefore(blockScene(2), mode);
            ruler.debugMode = debug;
            ruler.result = oldResult();
            const CapturedOutput output;
            EXPECT_EQ(ruler.measureOnce(), 1);
            EXPECT_EQ(output.text(), "No object found.\n");
            EXPECT_TRUE(isEmptyResult(ruler.result)) << "mode " << mode;
        }
    }
}

TEST(MeasureOnce, ChoosesTheMinimumHeightByTheDistanceOnlyInKiosk) {
    const std::vector<std::pair<float, float>> bands{{500, 3},     {800, 3},  {800.5F, 5},   {1000, 5},
                                                     {1000.5F, 8}, {1200, 8}, {1200.5F, 10}, {3000, 10}};
    for (const auto& [distance, height] : bands) {
        DepthScene scene = blockScene(200);
        scene.distance = distance;
        Quorvel ruler = rulerBefore(scene, KIOSK);
        ruler.minObjectHeight = 77;
        EXPECT_EQ(ruler.measureOnce(), 0) << distance;
        EXPECT_EQ(ruler.minObjectHeight, height) << "t " << distance;
        for (const ProductType mode : {GROUND_TRACKING, GROUND_GROWING}) {
            Quorvel other = rulerBefore(scene, mode);
            other.minObjectHeight = 77;
            EXPECT_EQ(other.measureOnce(), 0) << distance;
            EXPECT_EQ(other.minObjectHeight, 77.0F) << "mode " << mode << ", t " << distance;
        }
    }
}

TEST(MeasureOnce, UsesTheMinimumHeightItChose) {
    // 4 mm above a plane at 800 mm is an object, at 801 mm it is not.
    for (const auto& [distance, status] : {std::pair<float, int>{800, 0}, {801, 1}}) {
        DepthScene scene = blockScene(4);
        scene.distance = distance;
        const CapturedOutput output;
        EXPECT_EQ(rulerBefore(scene, KIOSK).measureOnce(), status) << "t " << distance;
    }
}

TEST(MeasureOnce, KeepsTheMinimumHeightWhenTheDistanceIsNoNumber) {
    Quorvel ruler = rulerBefore(blockScene(200), KIOSK);
    ruler.refPlaneOffset = kNaN;
    ruler.minObjectHeight = 77;
    const CapturedOutput output;
    ruler.measureOnce();
    EXPECT_EQ(ruler.minObjectHeight, 77.0F);
}

TEST(MeasureOnce, LowersTheHeightByTheDistanceOnlyInGroundTracking) {
    const std::vector<std::pair<float, float>> bands{{500, 1}, {550, 1},    {550.5F, 3}, {700, 3},     {700.5F, 5},
                                                     {900, 5}, {900.5F, 7}, {1100, 7},   {1100.1F, 8}, {2000, 8}};
    for (const auto& [distance, lowering] : bands) {
        DepthScene scene = blockScene(150);
        scene.distance = distance;
        Quorvel tracking = rulerBefore(scene, GROUND_TRACKING);
        Quorvel growing = rulerBefore(scene, GROUND_GROWING);
        EXPECT_EQ(tracking.measureOnce(), 0);
        EXPECT_EQ(growing.measureOnce(), 0);
        ASSERT_TRUE(growing.result.inView) << "t " << distance;
        EXPECT_EQ(tracking.result.height, growing.result.height - lowering) << "t " << distance;
        EXPECT_EQ(tracking.result.length, growing.result.length) << "t " << distance;
    }
}

TEST(MeasureOnce, LowersTheHeightOfAnEmptyRecordToo) {
    Quorvel missed = rulerBefore(blockScene(200), GROUND_TRACKING);
    missed.effectiveRegion = {};
    EXPECT_EQ(missed.measureOnce(), 0) << "the top misses the detection area, which is no failure";
    EXPECT_TRUE(missed.result.corners.empty());
    EXPECT_EQ(missed.result.height, -7.0F);
    Quorvel outOfView = rulerBefore(blockScene(200), GROUND_TRACKING);
    outOfView.setCameraType(true, 10000);
    EXPECT_EQ(outOfView.measureOnce(), 0);
    EXPECT_EQ(outOfView.result.corners.size(), 8U);
    EXPECT_FALSE(outOfView.result.inView);
    EXPECT_EQ(outOfView.result.height, -7.0F);
}

TEST(MeasureOnce, KeepsTheSideBandClearOnceACameraTypeIsSet) {
    for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING}) {
        Quorvel ruler = rulerBefore(blockScene(200), mode);
        ruler.setCameraType(false, 60);
        // A host may write the member itself: truncated to 60 mm.
        ruler.cameraType = 60.9F;
        EXPECT_EQ(ruler.measureOnce(), 0);
        if (mode == GROUND_GROWING) {
            EXPECT_EQ(ruler.result.sideMargin, 0.0F);
        } else {
            EXPECT_FLOAT_EQ(ruler.result.sideMargin, 60 * 60.0F / 800 * 1.3F) << mode;
        }
    }
}

TEST(MeasureOnce, SurvivesACameraTypeThatIsNoNumber) {
    Quorvel ruler = rulerBefore(blockScene(200), KIOSK);
    ruler.cameraTypeSet = true;
    ruler.cameraType = kNaN;
    EXPECT_EQ(ruler.measureOnce(), 0);
    // INT_MIN mm: the bounds become far-out numbers, left of the picture and right of it.
    EXPECT_LT(ruler.result.sideMargin, -1e8F);
}

TEST(MeasureOnce, RemovesOnlyDepthsStrictlyBeyondThePlaneWithWeightZero) {
    // Candidates are all points up to 5 mm below the plane; the rows at 1001 mm are ground nevertheless.
    const DepthScene scene;
    Draws draws(1);
    cv::Mat depth = scene.depth(draws);
    depth.rowRange(0, 24).setTo(1001);
    Quorvel ruler = scene.ruler();
    ASSERT_TRUE(ruler.getCameraFrame(scene.color(), depth));
    setPlane(ruler, {0, 0, 1}, 1000, 5);
    ruler.productType = GROUND_GROWING;
    ruler.minObjectHeight = -5;
    EXPECT_EQ(ruler.measureOnce(), 0);
    EXPECT_EQ(cv::countNonZero(ruler.depthSmall.rowRange(0, 6)), 0);
    EXPECT_EQ(cv::countNonZero(ruler.depthSmall.rowRange(6, 12) == 1000), 16 * 6);
}

TEST(MeasureOnce, TakesTheBandOfTheFilterWeightForGround) {
    // A weight of 0.25 removes everything beyond 750 mm, the block at 800 mm included.
    Quorvel ruler = rulerBefore(blockScene(200), KIOSK);
    ruler.setFilterWeight(0.25F);
    const CapturedOutput output;
    EXPECT_EQ(ruler.measureOnce(), 1);
    EXPECT_EQ(output.text(), "No object found.\n");
    Quorvel kept = rulerBefore(blockScene(200), KIOSK);
    kept.setFilterWeight(0.2F);
    EXPECT_EQ(kept.measureOnce(), 0) << "800 is not beyond 0.8 * 1000";
}

TEST(MeasureOnce, SurvivesACallBeforeAnyFrame) {
    for (const ProductType mode : kModes) {
        for (const bool calibrated : {false, true}) {
            Quorvel ruler = blockScene(200).ruler();
            ruler.productType = mode;
            ruler.result = oldResult();
            if (calibrated) {
                setPlane(ruler, {0, 0, 1}, 1000, 5);
            }
            const CapturedOutput output;
            EXPECT_EQ(ruler.measureOnce(), mode == KIOSK_LOW_OBJECT ? 0 : 1) << mode;
            EXPECT_TRUE(isEmptyResult(ruler.result)) << mode;
            EXPECT_TRUE(ruler.depthSmall.empty());
        }
    }
}

bool samePixels(const cv::Mat& a, const cv::Mat& b) {
    return a.empty() ? b.empty() : cv::norm(a, b, cv::NORM_INF) == 0;
}

TEST(MeasureOnce, SurvivesAHostThatSwapsImages) {
    const std::vector<std::pair<std::string, std::function<void(Quorvel&)>>> swaps{
        {"no small depth", [](Quorvel& r) { r.depthSmall.release(); }},
        {"no small cloud", [](Quorvel& r) { r.pointCloudSmallCopy.release(); }},
        {"no cloud", [](Quorvel& r) { r.pointCloud.release(); }},
        {"full-size depth", [](Quorvel& r) { r.depthSmall = r.depthImage; }},
        {"full-size cloud in place of the small one", [](Quorvel& r) { r.pointCloudSmallCopy = r.pointCloud; }},
        {"small cloud in place of the full-size one", [](Quorvel& r) { r.pointCloud = r.pointCloudSmall; }},
        {"8-bit depth", [](Quorvel& r) { r.depthSmall.convertTo(r.depthSmall, CV_8U); }},
        {"float depth", [](Quorvel& r) { r.depthSmall.convertTo(r.depthSmall, CV_32F); }},
        {"small cloud in double", [](Quorvel& r) { r.pointCloudSmallCopy.convertTo(r.pointCloudSmallCopy, CV_64F); }},
        {"cloud in double", [](Quorvel& r) { r.pointCloud.convertTo(r.pointCloud, CV_64F); }},
        {"cloud of one channel", [](Quorvel& r) { r.pointCloud = r.pointCloud.reshape(1).colRange(0, 64); }},
        {"another frame size", [](Quorvel& r) { r.imageWidth = 63; }},
        {"no frame size", [](Quorvel& r) { r.imageWidth = r.imageHeight = 0; }},
        {"a negative frame size", [](Quorvel& r) { r.imageHeight = -48; }},
    };
    for (const auto& [what, swap] : swaps) {
        for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING}) {
            Quorvel ruler = rulerBefore(blockScene(200), mode);
            swap(ruler);
            ruler.result = oldResult();
            const cv::Mat depth = ruler.depthSmall.clone();
            const cv::Mat cloud = ruler.pointCloud.clone();
            EXPECT_EQ(ruler.measureOnce(), 1) << what << ", mode " << mode;
            EXPECT_TRUE(isEmptyResult(ruler.result)) << what << ", mode " << mode;
            EXPECT_TRUE(samePixels(ruler.depthSmall, depth)) << what << ": nothing is removed";
            EXPECT_TRUE(samePixels(ruler.pointCloud, cloud)) << what << ": nothing is cleared";
        }
    }
}

TEST(MeasureOnce, SurvivesAHostThatChangesTheDownScale) {
    // The picture's size is the size of the small image times this factor: 0, negative, too small or huge.
    for (const auto& [downScale, inView] :
         {std::pair<int, bool>{0, false}, {-4, false}, {2, false}, {1000, true}, {1 << 30, true}}) {
        Quorvel ruler = rulerBefore(blockScene(200), KIOSK);
        ruler.downScale = downScale;
        EXPECT_EQ(ruler.measureOnce(), 0) << downScale;
        EXPECT_EQ(ruler.result.inView, inView) << downScale;
        EXPECT_EQ(ruler.result.corners.empty(), downScale <= 0) << downScale;
    }
}

TEST(MeasureOnce, WorksOnTheReducedImagesInASecondCall) {
    // The first call leaves 304 of the block's 384 points; the second filters those again and measures less.
    Quorvel ruler = rulerBefore(blockScene(200), GROUND_GROWING);
    EXPECT_EQ(ruler.measureOnce(), 0);
    const MeasureResult first = ruler.result;
    EXPECT_EQ(ruler.measureOnce(), 0);
    EXPECT_LT(ruler.result.width, first.width);
    EXPECT_GT(ruler.result.width, 0.0F);
}

TEST(MeasureOnce, MeasuresTheLastGoodFrameAfterARefusedOne) {
    Quorvel ruler = rulerBefore(blockScene(200), KIOSK);
    Quorvel untouched = rulerBefore(blockScene(200), KIOSK);
    EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(2, 2, CV_8UC3), cv::Mat(2, 2, CV_16UC1)));
    EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(), cv::Mat()));
    EXPECT_EQ(ruler.measureOnce(), 0);
    EXPECT_EQ(untouched.measureOnce(), 0);
    EXPECT_TRUE(sameResult(ruler.result, untouched.result));
}

class MeasureOnceLoops : public EveryLoopVariant {};

INSTANTIATE_TEST_SUITE_P(Loops, MeasureOnceLoops, runnableLoopVariants(), loopVariantName);

TEST_P(MeasureOnceLoops, AgreesWithThePlainFormInRandomStates) {
    Draws draws(116);
    int measured = 0;
    for (int run = 0; run < 2000; ++run) {
        const DepthScene scene = drawScene(draws);
        Quorvel ruler = scene.ruler();
        ruler.downScale = draws.chance(70) ? 4 : draws.between(1, 5);
        ASSERT_TRUE(ruler.getCameraFrame(scene.color(), scene.depth(draws)));
        const CapturedOutput settingsOutput;
        ruler.productType = draws.chance(6) ? draws.between(3, 5) : draws.below(3);
        drawState(draws, scene, ruler);
        ruler.result = oldResult();
        Quorvel byHand = detachedCopy(ruler);
        for (int call = 0; call < 2; ++call) {
            const CapturedOutput plainOutput;
            const int expected = plain::measureOnce(byHand);
            const CapturedOutput output;
            ASSERT_EQ(ruler.measureOnce(), expected) << "run " << run << ", call " << call;
            ASSERT_EQ(output.text(), plainOutput.text()) << "run " << run << ", call " << call;
            ASSERT_TRUE(sameResult(ruler.result, byHand.result)) << "run " << run << ", call " << call;
            ASSERT_TRUE(sameBits(ruler.minObjectHeight, byHand.minObjectHeight)) << "run " << run;
            expectSameImages(ruler, byHand);
            ASSERT_FALSE(HasFailure()) << "run " << run << ", call " << call << ", mode " << ruler.productType;
            measured += ruler.result.inView ? 1 : 0;
        }
    }
    EXPECT_GT(measured, 400) << "the random scenes must exercise measurements";
}

}  // namespace

}  // namespace quorvel::test
