// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/frame_draws.h"
#include "library/plain/batch.h"
#include "library/same_result.h"
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

const std::string kNoPlane = "No calibration data.\n";
const std::string kNothing = "ERROR !! result is empty.\n";
const std::string kDisagree = "ERROR !! The result did not reach the threshold\n";
const std::array<ProductType, 2> kMeasuringModes{KIOSK, GROUND_TRACKING};

/// Gives a ruler the plane of a scene and the whole picture as detection area.
void prepare(Quorvel& ruler, const DepthScene& scene, ProductType mode) {
    setPlane(ruler, {0, 0, 1}, scene.distance, 5);
    ruler.productType = mode;
    ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene.size);
}

/// Pushes frames in a mode that fits no plane, then switches to the one asked for.
Quorvel rulerBefore(const DepthScene& scene, const Batch& batch, ProductType mode) {
    Quorvel ruler = scene.ruler();
    EXPECT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
    prepare(ruler, scene, mode);
    return ruler;
}

/// A batch of blocks of the given heights above one surface at 1000 mm; 2 mm is no object.
Batch blockBatch(const std::vector<float>& heights) {
    Draws draws(1);
    Batch batch;
    for (const float height : heights) {
        const Batch one = sceneBatch(blockScene(height), draws, 1);
        batch.colors.push_back(one.colors[0] + cv::Scalar::all(static_cast<double>(batch.colors.size())));
        batch.depths.push_back(one.depths[0]);
    }
    return batch;
}

Quorvel rulerBefore(const std::vector<float>& heights, ProductType mode) {
    return rulerBefore(blockScene(0), blockBatch(heights), mode);
}

/// What one frame alone measures in KIOSK.
MeasureResult measuredAlone(const DepthScene& scene, const cv::Mat& color, const cv::Mat& depth) {
    Quorvel ruler = scene.ruler();
    EXPECT_TRUE(ruler.getCameraFrame(color, depth));
    prepare(ruler, scene, KIOSK);
    EXPECT_EQ(ruler.measureOnce(), 0);
    return ruler.result;
}

::testing::AssertionResult allBuffersEmpty(const Quorvel& ruler) {
    for (const auto& [name, buffer] : rulerBuffers()) {
        if (!(ruler.*buffer).empty()) {
            return ::testing::AssertionFailure() << name << " holds " << (ruler.*buffer).size();
        }
    }
    return ::testing::AssertionSuccess();
}

TEST(MeasureMultiple, StoresTheMeanOfTheBatch) {
    // Blocks of 190, 200 and 216 mm.
    const DepthScene scene = blockScene(0);
    const Batch batch = blockBatch({190, 200, 216});
    std::vector<MeasureResult> alone;
    for (std::size_t i = 0; i < 3; ++i) {
        alone.push_back(measuredAlone(scene, batch.colors[i], batch.depths[i]));
    }
    for (const ProductType mode : kMeasuringModes) {
        Quorvel ruler = rulerBefore(scene, batch, mode);
        ruler.result = oldResult();
        ruler.debugMode = true;
        const CapturedOutput output;
        EXPECT_EQ(ruler.measureMultiple(50, 50, 50), 0);
        EXPECT_EQ(output.text(), "");
        MeasureResult expected = alone[2];
        expected.length = (alone[0].length + alone[1].length + alone[2].length) / 3.0F;
        expected.width = (alone[0].width + alone[1].width + alone[2].width) / 3.0F;
        expected.height = (alone[0].height + alone[1].height + alone[2].height) / 3.0F;
        EXPECT_TRUE(sameResult(ruler.result, expected)) << "mode " << mode;
        EXPECT_NEAR(ruler.result.height, 202 - 0.007 * 798, 1e-2) << "mode " << mode;
        EXPECT_TRUE(allBuffersEmpty(ruler));
    }
}

TEST(MeasureMultiple, MakesTheLastFrameTheCurrentOne) {
    const Batch batch = blockBatch({200, 200, 201});
    Quorvel ruler = rulerBefore(blockScene(0), batch, KIOSK);
    const Quorvel before = detachedCopy(ruler);
    ASSERT_EQ(ruler.measureMultiple(50, 50, 50), 0);
    EXPECT_EQ(ruler.colorImage.data, batch.colors[2].data) << "shared with the host, not copied";
    EXPECT_EQ(ruler.depthImage.data, batch.depths[2].data);
    EXPECT_TRUE(sameBits(ruler.colorImage, batch.colors[2]));
    // The other images of the current frame are still those of the batch's first frame.
    EXPECT_TRUE(sameBits(ruler.depthSmall, before.depthSmall));
    EXPECT_TRUE(sameBits(ruler.colorSmall, before.colorSmall));
    EXPECT_TRUE(sameBits(ruler.pointCloud, before.pointCloud));
    EXPECT_TRUE(sameBits(ruler.pointCloudSmall, before.pointCloudSmall));
    EXPECT_TRUE(sameBits(ruler.pointCloudSmallCopy, before.pointCloudSmallCopy));
}

TEST(MeasureMultiple, KeepsTheFirstFrameTheCurrentOneWhenItFails) {
    const Batch batch = blockBatch({200, 150});
    for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING}) {
        Quorvel ruler = rulerBefore(blockScene(0), batch, mode);
        const Quorvel before = detachedCopy(ruler);
        const CapturedOutput output;
        EXPECT_EQ(ruler.measureMultiple(1, 1, 1), 1);
        EXPECT_TRUE(sameImages(ruler, before)) << "mode " << mode;
    }
}

TEST(MeasureMultiple, OfOneFrameIsWhatThatFrameMeasures) {
    Draws draws(43);
    int measured = 0;
    for (int run = 0; run < 60; ++run) {
        const DepthScene scene = drawScene(draws);
        const Batch batch = sceneBatch(scene, draws, 1);
        Quorvel ruler = rulerBefore(scene, batch, KIOSK);
        Quorvel single = scene.ruler();
        ASSERT_TRUE(single.getCameraFrame(batch.colors[0], batch.depths[0]));
        prepare(single, scene, KIOSK);
        const CapturedOutput output;
        const int status = single.measureOnce();
        const bool usable = status == 0 && single.result.inView && !single.result.corners.empty();
        EXPECT_EQ(ruler.measureMultiple(0, 0, 0), usable ? 0 : 1) << "run " << run;
        ASSERT_TRUE(sameResult(ruler.result, usable ? single.result : MeasureResult{})) << "run " << run;
        measured += usable ? 1 : 0;
    }
    EXPECT_GT(measured, 15) << "the random scenes must exercise measurements";
}

TEST(MeasureMultiple, LowersNoHeightInGroundTracking) {
    for (const auto& [distance, lowering] :
         std::vector<std::pair<float, float>>{{540, 1}, {650, 3}, {850, 5}, {1000, 7}, {1300, 8}}) {
        DepthScene scene = blockScene(150);
        scene.distance = distance;
        Draws draws(1);
        const Batch batch = sceneBatch(scene, draws, 1);
        Quorvel ruler = rulerBefore(scene, batch, GROUND_TRACKING);
        Quorvel single = scene.ruler();
        ASSERT_TRUE(single.getCameraFrame(batch.colors[0], batch.depths[0]));
        prepare(single, scene, GROUND_TRACKING);
        ASSERT_EQ(single.measureOnce(), 0);
        ASSERT_EQ(ruler.measureMultiple(0, 0, 0), 0) << distance;
        EXPECT_EQ(single.result.height, ruler.result.height - lowering) << "t " << distance;
        EXPECT_EQ(single.result.length, ruler.result.length) << "t " << distance;
        EXPECT_EQ(single.result.width, ruler.result.width) << "t " << distance;
    }
}

TEST(MeasureMultiple, ChoosesTheMinimumHeightByTheDistanceOnlyInKiosk) {
    const std::vector<std::pair<float, float>> bands{{500, 3},     {800, 3},  {800.5F, 5},   {1000, 5},
                                                     {1000.5F, 8}, {1200, 8}, {1200.5F, 10}, {3000, 10}};
    for (const auto& [distance, height] : bands) {
        DepthScene scene = blockScene(200);
        scene.distance = distance;
        Draws draws(1);
        const Batch batch = sceneBatch(scene, draws, 2);
        for (const ProductType mode : kMeasuringModes) {
            Quorvel ruler = rulerBefore(scene, batch, mode);
            ruler.minObjectHeight = 77;
            EXPECT_EQ(ruler.measureMultiple(0, 0, 0), 0) << distance;
            EXPECT_EQ(ruler.minObjectHeight, mode == KIOSK ? height : 77.0F) << "t " << distance << ", mode " << mode;
        }
    }
}

TEST(MeasureMultiple, UsesTheMinimumHeightItChose) {
    // 4 mm above a plane at 800 mm is an object, at 801 mm it is not.
    for (const auto& [distance, status] : {std::pair<float, int>{800, 0}, {801, 1}}) {
        DepthScene scene = blockScene(4);
        scene.distance = distance;
        Draws draws(1);
        Quorvel ruler = rulerBefore(scene, sceneBatch(scene, draws, 1), KIOSK);
        const CapturedOutput output;
        ruler.measureMultiple(0, 0, 0);
        EXPECT_EQ(output.text() == "No object found.\n", status == 1) << "t " << distance << ": " << output.text();
        EXPECT_EQ(ruler.minObjectHeight, distance <= 800 ? 3.0F : 5.0F);
    }
}

TEST(MeasureMultiple, KeepsTheMinimumHeightWhenTheDistanceIsNoNumber) {
    Quorvel ruler = rulerBefore({200, 200}, KIOSK);
    ruler.refPlaneOffset = kNaN;
    ruler.minObjectHeight = 77;
    const CapturedOutput output;
    ruler.measureMultiple(50, 50, 50);
    EXPECT_EQ(ruler.minObjectHeight, 77.0F);
}

TEST(MeasureMultiple, NeedsAPlaneInKioskAndKeepsTheBatchWithoutOne) {
    for (const bool debug : {false, true}) {
        Quorvel ruler = rulerBefore({200, 200, 200}, KIOSK);
        ruler.calibStatus = false;
        ruler.debugMode = debug;
        ruler.minObjectHeight = 77;
        ruler.result = oldResult();
        Quorvel expected = detachedCopy(ruler);
        expected.result = MeasureResult{};
        const CapturedOutput output;
        EXPECT_EQ(ruler.measureMultiple(50, 50, 50), 1);
        EXPECT_EQ(output.text(), debug ? kNoPlane : "");
        EXPECT_TRUE(sameRuler(ruler, expected)) << "only the result is reset";
        // After a calibration the host can measure the batch that was kept.
        ruler.calibStatus = true;
        EXPECT_EQ(ruler.measureMultiple(50, 50, 50), 0);
        EXPECT_TRUE(ruler.result.inView);
        EXPECT_TRUE(allBuffersEmpty(ruler));
    }
}

TEST(MeasureMultiple, TakesANewBatchAfterOneThatWasKept) {
    Quorvel ruler = rulerBefore({150, 150, 150}, KIOSK);
    ruler.calibStatus = false;
    EXPECT_EQ(ruler.measureMultiple(50, 50, 50), 1);
    const Batch next = blockBatch({200, 200});
    ASSERT_TRUE(ruler.getCameraMultipleFrame(next.colors, next.depths));
    ruler.calibStatus = true;
    EXPECT_EQ(ruler.measureMultiple(1, 1, 1), 0);
    EXPECT_NEAR(ruler.result.height, 194.4, 1e-3);
}

TEST(MeasureMultiple, AsksForNoCalibrationInGroundTracking) {
    Quorvel ruler = rulerBefore({200, 200}, GROUND_TRACKING);
    ruler.calibStatus = false;
    EXPECT_EQ(ruler.measureMultiple(1, 1, 1), 0);
    EXPECT_TRUE(ruler.result.inView);
}

/// A call that must fail: status 1, result reset, these lines on standard output, buffers emptied.
void expectFailure(const Quorvel& ruler, const std::string& message, const std::string& what) {
    for (const bool debug : {false, true}) {
        Quorvel tried = detachedCopy(ruler);
        tried.debugMode = debug;
        tried.result = oldResult();
        const CapturedOutput output;
        EXPECT_EQ(tried.measureMultiple(3, 3, 3), 1) << what;
        EXPECT_EQ(output.text(), message) << what << ", debugMode " << debug;
        EXPECT_TRUE(isEmptyResult(tried.result)) << what;
        EXPECT_TRUE(allBuffersEmpty(tried)) << what;
    }
}

TEST(MeasureMultiple, SaysThatNothingWasMeasuredWithoutABatch) {
    for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING, KIOSK_LOW_OBJECT}) {
        for (const bool calibrated : {false, true}) {
            Quorvel ruler = blockScene(200).ruler();
            prepare(ruler, blockScene(200), mode);
            ruler.calibStatus = calibrated;
            expectFailure(ruler, kNothing, "mode " + std::to_string(mode));
        }
    }
}

TEST(MeasureMultiple, SaysThatNothingWasMeasuredInOtherModes) {
    for (const int mode : {static_cast<int>(GROUND_GROWING), static_cast<int>(KIOSK_LOW_OBJECT), 4, -1}) {
        for (const bool calibrated : {false, true}) {
            Quorvel ruler = rulerBefore({200, 200}, KIOSK);
            ruler.productType = mode;
            ruler.calibStatus = calibrated;
            ruler.minObjectHeight = 77;
            expectFailure(ruler, kNothing, "mode " + std::to_string(mode));
            const CapturedOutput output;
            ruler.measureMultiple(3, 3, 3);
            EXPECT_EQ(ruler.minObjectHeight, 77.0F) << mode;
        }
    }
}

TEST(MeasureMultiple, SaysThatTheFramesDisagree) {
    for (const ProductType mode : kMeasuringModes) {
        expectFailure(rulerBefore({200, 200, 205}, mode), kDisagree, "the last frame is higher");
        expectFailure(rulerBefore({205, 200, 200}, mode), kDisagree, "the first frame is higher");
        expectFailure(rulerBefore({198, 200, 202}, mode), kDisagree, "only neighbours agree");
    }
}

TEST(MeasureMultiple, PassesADifferenceEqualToItsTolerance) {
    const DepthScene scene = blockScene(0);
    const Batch batch = blockBatch({200, 202, 204});
    const MeasureResult low = measuredAlone(scene, batch.colors[0], batch.depths[0]);
    const MeasureResult high = measuredAlone(scene, batch.colors[2], batch.depths[2]);
    const float length = std::fabs(low.length - high.length);
    const float width = std::fabs(low.width - high.width);
    const float height = std::fabs(low.height - high.height);
    for (const float value : {length, width, height}) {
        ASSERT_GT(value, 0.0F) << "the frames must differ in every size";
    }
    const CapturedOutput output;
    EXPECT_EQ(rulerBefore(scene, batch, KIOSK).measureMultiple(length, width, height), 0);
    EXPECT_EQ(rulerBefore(scene, batch, KIOSK).measureMultiple(std::nextafter(length, 0.0F), width, height), 1);
    EXPECT_EQ(rulerBefore(scene, batch, KIOSK).measureMultiple(length, std::nextafter(width, 0.0F), height), 1);
    EXPECT_EQ(rulerBefore(scene, batch, KIOSK).measureMultiple(length, width, std::nextafter(height, 0.0F)), 1);
    EXPECT_EQ(output.text(), kDisagree + kDisagree + kDisagree);
}

TEST(MeasureMultiple, FailsWithoutAWordWhenAFrameShowsNoObject) {
    // The search for an object says so itself; the batch adds nothing, and later frames are not looked at.
    for (const ProductType mode : kMeasuringModes) {
        for (const std::vector<float>& heights :
             {std::vector<float>{2, 200, 200}, {200, 2, 200}, {200, 200, 2}, {200, 2, 2}}) {
            expectFailure(rulerBefore(heights, mode), "No object found.\n", "mode " + std::to_string(mode));
        }
        Quorvel zeroNormal = rulerBefore({200, 200}, mode);
        zeroNormal.refPlaneNormal = {0, 0, 0};
        expectFailure(zeroNormal, "", "without a normal");
    }
}

TEST(MeasureMultiple, FailsWhenAFrameIsOutOfViewOrMissesTheDetectionArea) {
    for (const ProductType mode : kMeasuringModes) {
        Quorvel missed = rulerBefore({200, 200}, mode);
        missed.effectiveRegion = {};
        expectFailure(missed, kDisagree, "no record has corners");
        Quorvel outOfView = rulerBefore({200, 200}, mode);
        const CapturedOutput output;
        outOfView.setCameraType(true, 10000);
        expectFailure(outOfView, kDisagree, "no record is in view");
    }
}

TEST(MeasureMultiple, FailsWhenOneFrameAloneIsOutOfView) {
    // With a side band of 9.75 pixels a block that begins at the edge is out of view, one at column 20 is not.
    Draws draws(1);
    DepthScene edge;
    edge.blocks.push_back({{0, 16, 44, 16}, 200});
    for (const std::size_t at : {0U, 1U, 2U}) {
        Batch batch = blockBatch({200, 200, 200});
        const CapturedOutput settingsOutput;
        Quorvel allInView = rulerBefore(edge, batch, KIOSK);
        allInView.setCameraType(true, 100);
        EXPECT_EQ(allInView.measureMultiple(1e6F, 1e6F, 1e6F), 0);
        batch.depths[at] = edge.depth(draws);
        Quorvel ruler = rulerBefore(edge, batch, KIOSK);
        ruler.setCameraType(true, 100);
        const CapturedOutput output;
        EXPECT_EQ(ruler.measureMultiple(1e6F, 1e6F, 1e6F), 1) << "frame " << at;
        EXPECT_EQ(output.text(), kDisagree) << "frame " << at;
        EXPECT_TRUE(isEmptyResult(ruler.result)) << "frame " << at;
    }
}

TEST(MeasureMultiple, FindsNothingInASecondCall) {
    Quorvel ruler = rulerBefore({200, 200}, KIOSK);
    ASSERT_EQ(ruler.measureMultiple(1, 1, 1), 0);
    expectFailure(ruler, kNothing, "second call");
}

TEST(MeasureMultiple, MeasuresNoBatchThatWasRefused) {
    Quorvel ruler = rulerBefore({200, 200}, KIOSK);
    ASSERT_FALSE(
        ruler.getCameraMultipleFrame({cv::Mat(48, 64, CV_8UC3), cv::Mat()}, {cv::Mat(48, 64, CV_16UC1), cv::Mat()}));
    ASSERT_EQ(ruler.depthFrameBuffer.size(), 2U) << "the frames up to the empty one";
    expectFailure(ruler, kNothing, "no small images were made");
}

TEST(MeasureMultiple, LeavesTheBatchOfACopy) {
    Quorvel ruler = rulerBefore({200, 201, 202}, KIOSK);
    Quorvel copy(ruler);
    Quorvel assigned = blockScene(0).ruler();
    assigned = ruler;
    Quorvel byHand = detachedCopy(ruler);
    ASSERT_EQ(plain::measureMultiple(byHand, 50, 50, 50), 0);
    ASSERT_EQ(copy.measureMultiple(50, 50, 50), 0);
    EXPECT_TRUE(sameResult(copy.result, byHand.result));
    EXPECT_TRUE(allBuffersEmpty(copy));
    for (const Quorvel& other : {ruler, assigned}) {
        EXPECT_EQ(other.depthSmallBuffer.size(), 3U) << "the vectors are its own";
        EXPECT_TRUE(isEmptyResult(other.result));
    }
    // The pixels of the buffers are shared, as every copy shares them: they are reduced to the object by now.
    EXPECT_EQ(cv::countNonZero(ruler.depthSmallBuffer[0]), 24) << "6 x 4 small pixels";
}

TEST(MeasureMultiple, SurvivesAHostThatChangesTheBuffers) {
    const std::vector<std::pair<std::string, std::function<void(Quorvel&)>>> changes{
        {"no colour frames", [](Quorvel& r) { r.colorFrameBuffer.clear(); }},
        {"no depth frames", [](Quorvel& r) { r.depthFrameBuffer.clear(); }},
        {"a colour frame too few", [](Quorvel& r) { r.colorFrameBuffer.pop_back(); }},
        {"a small depth too many", [](Quorvel& r) { r.depthSmallBuffer.push_back(r.depthSmallBuffer[0].clone()); }},
        {"a cloud too few", [](Quorvel& r) { r.pointCloudBuffer.pop_back(); }},
        {"a small cloud too few", [](Quorvel& r) { r.pointCloudSmallCopyBuffer.pop_back(); }},
        {"an empty small depth", [](Quorvel& r) { r.depthSmallBuffer[1].release(); }},
        {"an empty cloud", [](Quorvel& r) { r.pointCloudBuffer[1].release(); }},
        {"an empty small cloud", [](Quorvel& r) { r.pointCloudSmallCopyBuffer[1].release(); }},
        {"a full-size depth", [](Quorvel& r) { r.depthSmallBuffer[1] = r.depthFrameBuffer[1].clone(); }},
        {"a small cloud of full size", [](Quorvel& r) { r.pointCloudSmallCopyBuffer[1] = r.pointCloudBuffer[1]; }},
        {"a cloud of small size", [](Quorvel& r) { r.pointCloudBuffer[1] = r.pointCloudSmallBuffer[1]; }},
        {"8-bit depth", [](Quorvel& r) { r.depthSmallBuffer[1].convertTo(r.depthSmallBuffer[1], CV_8U); }},
        {"cloud in double", [](Quorvel& r) { r.pointCloudBuffer[1].convertTo(r.pointCloudBuffer[1], CV_64F); }},
        {"another frame size", [](Quorvel& r) { r.imageWidth = 63; }},
        {"no frame size", [](Quorvel& r) { r.imageWidth = r.imageHeight = 0; }},
    };
    for (const auto& [what, change] : changes) {
        for (const ProductType mode : kMeasuringModes) {
            Quorvel ruler = rulerBefore({200, 200, 200}, mode);
            change(ruler);
            expectFailure(ruler, "", what + ", mode " + std::to_string(mode));
        }
    }
}

class MeasureMultipleLoops : public EveryLoopVariant {};

INSTANTIATE_TEST_SUITE_P(Loops, MeasureMultipleLoops, runnableLoopVariants(), loopVariantName);

TEST_P(MeasureMultipleLoops, AgreesWithThePlainFormInRandomStates) {
    Draws draws(420);
    std::array<int, 2> measured{};
    for (int run = 0; run < 400; ++run) {
        DepthScene scene = drawScene(draws);
        scene.noise = draws.chance(50) ? 0 : draws.between(1, 2);
        Quorvel ruler = scene.ruler();
        ruler.downScale = draws.chance(70) ? 4 : draws.between(1, 5);
        const Batch batch = sceneBatch(scene, draws, draws.between(1, 5));
        const Batch host = batch.clone();
        ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
        const CapturedOutput settingsOutput;
        ruler.productType = draws.chance(4) ? draws.between(2, 5) : draws.below(2);
        drawState(draws, scene, ruler);
        ruler.result = oldResult();
        Quorvel byHand = detachedCopy(ruler);
        const float tolerance = draws.chance(50) ? 1000.0F : draws.real(0, 20);
        for (int call = 0; call < 2; ++call) {
            const CapturedOutput plainOutput;
            const int expected = plain::measureMultiple(byHand, tolerance, 2 * tolerance, tolerance / 2);
            const CapturedOutput output;
            ASSERT_EQ(ruler.measureMultiple(tolerance, 2 * tolerance, tolerance / 2), expected) << "run " << run;
            ASSERT_EQ(output.text(), plainOutput.text()) << "run " << run << ", call " << call;
            ASSERT_TRUE(sameRuler(ruler, byHand)) << "run " << run << ", call " << call;
            if (expected == 0) {
                ++measured.at(static_cast<std::size_t>(ruler.productType));
            }
        }
        for (std::size_t i = 0; i < host.depths.size(); ++i) {
            ASSERT_TRUE(sameBits(batch.depths[i], host.depths[i])) << "run " << run << ": the host's frame " << i;
            ASSERT_TRUE(sameBits(batch.colors[i], host.colors[i])) << "run " << run << ": the host's frame " << i;
        }
    }
    EXPECT_GT(measured[KIOSK], 25) << "the random scenes must exercise measurements";
    EXPECT_GT(measured[GROUND_TRACKING], 25);
}

}  // namespace

}  // namespace quorvel::test
