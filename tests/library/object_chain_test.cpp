// SPDX-License-Identifier: Apache-2.0
#include "measure/object_chain.h"

#include <array>

#include <gtest/gtest.h>

#include "library/depth_scene.h"
#include "library/fast_forms.h"
#include "library/plain/back_projection.h"
#include "library/plain/object_chain.h"
#include "library/same_result.h"
#include "support/captured_output.h"
#include "support/loop_variants.h"

namespace quorvel::test {

namespace {

using plain::ChainFrame;

ChainFrame frameOf(const DepthScene& scene, Draws& draws, int downScale) {
    const cv::Mat depth = scene.depth(draws);
    const auto scale = static_cast<float>(downScale);
    const float cx = static_cast<float>(scene.size.width) * 0.5F;
    const float cy = static_cast<float>(scene.size.height) * 0.5F;
    const float inverse = 1.0F / scene.focal;
    ChainFrame frame;
    frame.depthSmall = cv::Mat(scene.size.height / downScale, scene.size.width / downScale, CV_16UC1);
    for (int row = 0; row < frame.depthSmall.rows; ++row) {
        for (int column = 0; column < frame.depthSmall.cols; ++column) {
            frame.depthSmall.at<ushort>(row, column) = depth.at<ushort>(row * downScale, column * downScale);
        }
    }
    frame.cloudSmall = plain::backProject(frame.depthSmall, cx / scale, cy / scale, inverse * scale, inverse * scale);
    frame.cloud = plain::backProject(depth, cx, cy, inverse, inverse);
    return frame;
}

ChainFrame cloneOf(const ChainFrame& frame) {
    return {frame.depthSmall.clone(), frame.cloudSmall.clone(), frame.cloud.clone()};
}

plain::FootprintInput inputOf(const internal::MeasureSettings& settings, const cv::Size& small) {
    plain::FootprintInput input;
    input.small = small;
    input.normal = settings.plane.normal;
    input.offset = settings.plane.offset;
    input.cx = settings.camera.cx;
    input.cy = settings.camera.cy;
    input.fx = settings.camera.fx;
    input.fy = settings.camera.fy;
    input.downScale = settings.downScale;
    input.cameraTypeSet = settings.sideBand.has_value();
    input.cameraType = settings.sideBand.value_or(0);
    input.effectiveRegion = settings.detectionArea;
    return input;
}

internal::MeasureSettings settingsFor(const DepthScene& scene, int downScale) {
    internal::MeasureSettings settings;
    settings.plane = {{0, 0, 1}, scene.distance};
    settings.minHeight = 10;
    settings.minPixels = 5;
    settings.camera = {static_cast<float>(scene.size.width) * 0.5F, static_cast<float>(scene.size.height) * 0.5F,
                       scene.focal, scene.focal};
    settings.downScale = downScale;
    settings.detectionArea = cv::Rect(cv::Point(0, 0), scene.size);
    return settings;
}

int measure(ChainFrame& frame, const internal::MeasureSettings& settings, MeasureResult& result) {
    return fast::measureObject({frame.depthSmall, frame.cloudSmall, frame.cloud}, settings, result);
}

MeasureResult marked() {
    MeasureResult result;
    result.length = 7;
    result.sideMargin = 9;
    result.corners.emplace_back(1.0F, 2.0F);
    return result;
}

TEST(ObjectChain, MeasuresABlock) {
    Draws draws(1);
    const DepthScene scene = blockScene(200);
    ChainFrame frame = frameOf(scene, draws, 4);
    MeasureResult result;
    EXPECT_EQ(measure(frame, settingsFor(scene, 4), result), 0);
    // Of the block's 24 x 16 pixels the filter leaves 22 x 14 but for the four corners: 304 points. At z = 800 a pixel
    // is 13.33 mm: columns -11 ... 10 from the middle are -146 ... 133 whole mm, rows -7 ... 6 are -93 ... 80. The
    // vertical side grows by 5000 / 304 * 0.05.
    EXPECT_NEAR(result.length, 173 * (5000.0 / 304 * 0.05 + 1), 1e-2);
    EXPECT_NEAR(result.width, 279, 1e-2);
    EXPECT_NEAR(result.height, 200 - 0.007 * 800, 1e-3);
    EXPECT_TRUE(result.inView);
    EXPECT_TRUE(result.onTarget);
}

TEST(ObjectChain, ChoosesTheFootprintVariant) {
    Draws draws(1);
    const DepthScene scene = blockScene(200);
    internal::MeasureSettings settings = settingsFor(scene, 4);
    settings.sideBand = 30;
    settings.variant = internal::FootprintVariant::WithoutMargin;
    ChainFrame frame = frameOf(scene, draws, 4);
    MeasureResult result;
    EXPECT_EQ(measure(frame, settings, result), 0);
    EXPECT_FALSE(result.onTarget);
    EXPECT_EQ(result.sideMargin, 0.0F);
    settings.variant = internal::FootprintVariant::General;
    frame = frameOf(scene, draws, 4);
    EXPECT_EQ(measure(frame, settings, result), 0);
    EXPECT_TRUE(result.onTarget);
    EXPECT_FLOAT_EQ(result.sideMargin, 30 * 60.0F / 800 * 1.3F);
}

TEST(ObjectChain, TimesTheStagesThatRan) {
    Draws draws(1);
    const auto times = [&](float height) {
        const DepthScene scene = blockScene(height);
        ChainFrame frame = frameOf(scene, draws, 4);
        internal::AccountDetail detail;
        detail.times = true;
        return *internal::measureObject({frame.depthSmall, frame.cloudSmall, frame.cloud}, settingsFor(scene, 4),
                                        detail)
                    .times;
    };
    const internal::StageTimes whole = times(200);
    for (const double stage : {whole.heightCut, whole.component, whole.window, whole.surfaceFilter, whole.footprint}) {
        EXPECT_GT(stage, 0.0);
    }
    const CapturedOutput silence;
    const internal::StageTimes ended = times(9);
    EXPECT_GT(ended.component, 0.0);
    EXPECT_EQ(ended.surfaceFilter, 0.0) << "there is no object";
}

TEST(ObjectChain, LeavesTheRecordWithoutAnObject) {
    Draws draws(1);
    const DepthScene scene = blockScene(9);
    ChainFrame frame = frameOf(scene, draws, 4);
    const cv::Mat cloud = frame.cloud.clone();
    MeasureResult result = marked();
    const CapturedOutput output;
    EXPECT_EQ(measure(frame, settingsFor(scene, 4), result), 1);
    EXPECT_EQ(output.text(), "No object found.\n");
    EXPECT_TRUE(sameResult(result, marked()));
    EXPECT_TRUE(sameBits(frame.cloud, cloud)) << "the full cloud is only touched for an object";
}

TEST(ObjectChain, LeavesTheRecordWithoutAPlane) {
    Draws draws(1);
    const DepthScene scene = blockScene(200);
    internal::MeasureSettings settings = settingsFor(scene, 4);
    settings.plane.normal = {0, 0, 0};
    ChainFrame frame = frameOf(scene, draws, 4);
    const ChainFrame before = cloneOf(frame);
    MeasureResult result = marked();
    EXPECT_EQ(measure(frame, settings, result), 1);
    EXPECT_TRUE(sameResult(result, marked()));
    EXPECT_TRUE(sameBits(frame.depthSmall, before.depthSmall));
    EXPECT_TRUE(sameBits(frame.cloud, before.cloud));
}

TEST(ObjectChain, IsEmptyButSuccessfulWhenTheOpeningLeavesNothing) {
    Draws draws(1);
    DepthScene scene;
    scene.blocks.push_back({{8, 24, 48, 4}, 200});
    ChainFrame frame = frameOf(scene, draws, 4);
    MeasureResult result = marked();
    const CapturedOutput output;
    EXPECT_EQ(measure(frame, settingsFor(scene, 4), result), 0);
    EXPECT_EQ(output.text(), "");
    EXPECT_TRUE(isEmptyResult(result));
    EXPECT_EQ(cv::countNonZero(frame.cloud.reshape(1)), 0);
}

TEST(ObjectChain, KeepsOnlyPixelsWhollyInsideTheMask) {
    // 66 x 50 does not divide by 4: small pixels are 4.125 x 4.1667 full ones, and border pixels of the mask are mixed.
    Draws draws(1);
    DepthScene scene = blockScene(200);
    scene.size = {66, 50};
    scene.blocks[0].pixels = {0, 0, 66, 50};
    ChainFrame frame = frameOf(scene, draws, 4);
    plain::ChainFrame plainFrame = cloneOf(frame);
    const internal::MeasureSettings settings = settingsFor(scene, 4);
    MeasureResult result;
    MeasureResult expected;
    EXPECT_EQ(measure(frame, settings, result), 0);
    EXPECT_EQ(plain::measureObject(plainFrame, settings.minHeight, settings.minPixels,
                                   inputOf(settings, frame.depthSmall.size()), true, expected),
              0);
    EXPECT_TRUE(sameResult(result, expected));
    EXPECT_TRUE(sameBits(frame.cloud, plainFrame.cloud));
}

class ObjectChainLoops : public EveryLoopVariant {};

INSTANTIATE_TEST_SUITE_P(Loops, ObjectChainLoops, runnableLoopVariants(), loopVariantName);

TEST_P(ObjectChainLoops, AgreesWithThePlainFormOnRandomScenes) {
    Draws draws(112);
    std::array<int, 3> outcomes{};
    for (int run = 0; run < 2000; ++run) {
        const DepthScene scene = drawScene(draws);
        const int downScale = draws.between(1, 5);
        internal::MeasureSettings settings = settingsFor(scene, downScale);
        const float slopeX = draws.real(-0.05F, 0.05F);
        const float slopeY = draws.real(-0.05F, 0.05F);
        settings.plane.normal = draws.chance(5) ? cv::Vec3f(0, 0, 0) : cv::Vec3f(slopeX, slopeY, 1);
        settings.minHeight = draws.real(2, 20);
        settings.minPixels = draws.below(30);
        const bool sideBand = draws.chance(50);
        const int millimetres = draws.between(0, 60);
        settings.sideBand = sideBand ? std::optional(millimetres) : std::nullopt;
        settings.variant =
            draws.chance(60) ? internal::FootprintVariant::General : internal::FootprintVariant::WithoutMargin;
        ChainFrame frame = frameOf(scene, draws, downScale);
        ChainFrame plainFrame = cloneOf(frame);
        MeasureResult result = marked();
        MeasureResult expected = marked();
        const CapturedOutput plainOutput;
        const int status = plain::measureObject(plainFrame, settings.minHeight, settings.minPixels,
                                                inputOf(settings, frame.depthSmall.size()),
                                                settings.variant == internal::FootprintVariant::General, expected);
        const CapturedOutput output;
        ASSERT_EQ(measure(frame, settings, result), status) << "run " << run;
        ASSERT_EQ(output.text(), plainOutput.text()) << "run " << run;
        ASSERT_TRUE(sameResult(result, expected)) << "run " << run;
        ASSERT_TRUE(sameBits(frame.depthSmall, plainFrame.depthSmall)) << "small depth, run " << run;
        ASSERT_TRUE(sameBits(frame.cloud, plainFrame.cloud)) << "full cloud, run " << run;
        ++outcomes[status == 1 ? 0U : (expected.inView ? 2U : 1U)];
    }
    EXPECT_GT(outcomes[0], 120) << "scenes without object";
    EXPECT_GT(outcomes[1], 120) << "scenes with an object that is not in view or has no box";
    EXPECT_GT(outcomes[2], 400) << "scenes with an object in view";
}

struct Fit {
    cv::Mat depthSmall = cv::Mat::zeros(12, 16, CV_16UC1);
    cv::Mat cloudSmall = cv::Mat::zeros(12, 16, CV_32FC3);
    cv::Mat cloud = cv::Mat::zeros(48, 64, CV_32FC3);
    cv::Size fullSize{64, 48};

    bool fits() { return internal::imagesFit({depthSmall, cloudSmall, cloud}, fullSize); }
};

TEST(ImagesFit, AcceptsWhatBelongsTogether) {
    EXPECT_TRUE(Fit{}.fits());
}

TEST(ImagesFit, RefusesEmptyImages) {
    Fit noDepth;
    noDepth.depthSmall = cv::Mat();
    EXPECT_FALSE(noDepth.fits());
    Fit noCloudSmall;
    noCloudSmall.cloudSmall = cv::Mat();
    EXPECT_FALSE(noCloudSmall.fits());
    Fit noCloud;
    noCloud.cloud = cv::Mat();
    EXPECT_FALSE(noCloud.fits());
    Fit nothing;
    nothing.depthSmall = nothing.cloudSmall = nothing.cloud = cv::Mat();
    nothing.fullSize = {0, 0};
    EXPECT_FALSE(nothing.fits());
}

TEST(ImagesFit, RefusesImagesWithoutPixels) {
    Fit noDepth;
    noDepth.depthSmall.data = nullptr;
    EXPECT_FALSE(noDepth.fits());
    Fit noCloudSmall;
    noCloudSmall.cloudSmall.data = nullptr;
    EXPECT_FALSE(noCloudSmall.fits());
    Fit noCloud;
    noCloud.cloud.data = nullptr;
    EXPECT_FALSE(noCloud.fits());
}

TEST(ImagesFit, RefusesSizesThatNoFrameHas) {
    Fit wide;
    wide.cloud = cv::Mat::zeros(1, 32769, CV_32FC3);
    wide.fullSize = wide.cloud.size();
    EXPECT_FALSE(wide.fits());
    Fit wideSmall;
    wideSmall.depthSmall = cv::Mat::zeros(1, 32769, CV_16UC1);
    wideSmall.cloudSmall = cv::Mat::zeros(1, 32769, CV_32FC3);
    EXPECT_FALSE(wideSmall.fits());
    Fit widest;
    widest.cloud = cv::Mat::zeros(1, 32768, CV_32FC3);
    widest.fullSize = widest.cloud.size();
    EXPECT_TRUE(widest.fits());
}

TEST(ImagesFit, RefusesOtherTypes) {
    Fit depth;
    depth.depthSmall = cv::Mat::zeros(12, 16, CV_8UC1);
    EXPECT_FALSE(depth.fits());
    Fit cloudSmall;
    cloudSmall.cloudSmall = cv::Mat::zeros(12, 16, CV_32FC1);
    EXPECT_FALSE(cloudSmall.fits());
    Fit cloud;
    cloud.cloud = cv::Mat::zeros(48, 64, CV_64FC3);
    EXPECT_FALSE(cloud.fits());
}

TEST(ImagesFit, RefusesOtherSizes) {
    Fit small;
    small.cloudSmall = cv::Mat::zeros(16, 12, CV_32FC3);
    EXPECT_FALSE(small.fits());
    Fit full;
    full.fullSize = {48, 64};
    EXPECT_FALSE(full.fits());
}

TEST(ImagesFit, RefusesMatricesOfThreeDimensions) {
    const std::array<int, 3> sizes{2, 12, 16};
    Fit depth;
    depth.depthSmall = cv::Mat(3, sizes.data(), CV_16UC1, cv::Scalar(0));
    EXPECT_FALSE(depth.fits());
    Fit cloudSmall;
    cloudSmall.cloudSmall = cv::Mat(3, sizes.data(), CV_32FC3, cv::Scalar::all(0));
    EXPECT_FALSE(cloudSmall.fits());
    Fit cloud;
    cloud.cloud = cv::Mat(3, sizes.data(), CV_32FC3, cv::Scalar::all(0));
    EXPECT_FALSE(cloud.fits());
}

}  // namespace

}  // namespace quorvel::test
