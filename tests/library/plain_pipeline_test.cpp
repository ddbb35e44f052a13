// SPDX-License-Identifier: Apache-2.0
// The public operations against their plain forms, every member bit for bit: what the benchmarks compare must do the
// same work.
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/frame_draws.h"
#include "library/plain/batch.h"
#include "library/plain/calibration.h"
#include "library/plain/frame_intake.h"
#include "library/plain/object_chain.h"
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/file_bytes.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

constexpr unsigned kScenes = 20;
/// The fit on every frame finds no plane in a third of the noisy scenes. All are compared, until kScenes have a plane.
constexpr unsigned kMostScenes = 2 * kScenes;

/// Two rulers in one state: the one is driven by the library, the other by the plain forms.
struct Pair {
    Quorvel fast;
    Quorvel plain;

    Pair(const DepthScene& scene, ProductType mode) : fast(scene.ruler()), plain(scene.ruler()) {
        cv::Rect region;
        for (Quorvel* ruler : {&fast, &plain}) {
            ruler->productType = mode;
            ruler->setCalibrationRoI(0.8F, region);
            ruler->setEffectiveRegionInArea(0.6F, region);
            ruler->setFilterWeight(-1.0F);
        }
    }

    /// Both fits draw the same random numbers.
    template <typename Fast, typename Plain>
    void inStep(unsigned seed, Fast driveFast, Plain drivePlain) {
        std::srand(seed);
        driveFast(fast);
        std::srand(seed);
        drivePlain(plain);
    }

    void take(unsigned seed, const cv::Mat& color, const cv::Mat& depth) {
        inStep(
            seed, [&](Quorvel& ruler) { ASSERT_TRUE(ruler.getCameraFrame(color, depth)); },
            [&](Quorvel& ruler) { plain::takeFrame(ruler, color, depth); });
    }

    /// \return the distance that both calibrations handed out
    float calibrate(unsigned seed, float offset) {
        float fastDistance = 0.0F;
        float plainDistance = 0.0F;
        inStep(
            seed, [&](Quorvel& ruler) { ruler.calibRef(fastDistance, offset); },
            [&](Quorvel& ruler) { plain::calibRef(ruler, plainDistance, offset); });
        EXPECT_TRUE(sameBits(fastDistance, plainDistance)) << fastDistance << " and " << plainDistance;
        return fastDistance;
    }
};

/// A scene and two rulers that were calibrated on its bare surface.
struct Calibrated {
    Draws draws;
    DepthScene scene;
    Pair rulers;
};

Calibrated calibrated(unsigned seed, ProductType mode) {
    Draws draws(seed);
    const DepthScene empty = largeScene(draws);
    const DepthScene scene = withBlock(empty, draws);
    Pair rulers(scene, mode);
    rulers.take(seed, empty.color(), empty.depth(draws));
    rulers.calibrate(seed, 0.0F);
    return {draws, scene, rulers};
}

std::string fileBytes(const std::string& path) {
    EXPECT_TRUE(std::filesystem::is_regular_file(path)) << path << " is missing";
    return test::bytesOf(path);
}

class PlainPipeline : public ::testing::TestWithParam<ProductType> {
protected:
    WorkingDirectory here_;
};

TEST_P(PlainPipeline, IntakeFillsTheSameMembers) {
    const bool tracking = GetParam() == GROUND_TRACKING;
    unsigned useful = 0;
    for (unsigned seed = 1; useful < kScenes && seed <= kMostScenes; ++seed) {
        Draws draws(seed);
        const DepthScene scene = largeScene(draws);
        Pair rulers(scene, GetParam());
        const cv::Mat color = drawColor(draws, scene.size);
        rulers.take(seed, color, scene.depth(draws));
        ASSERT_TRUE(sameRuler(rulers.fast, rulers.plain)) << "seed " << seed;
        const bool fitted = rulers.fast.refPlaneOffset > 0.0F;
        EXPECT_TRUE(tracking || !fitted) << "seed " << seed;
        useful += fitted || !tracking ? 1U : 0U;
    }
    EXPECT_EQ(useful, kScenes);
}

TEST_P(PlainPipeline, AFrameOfNoiseLeavesTheSameMembers) {
    for (unsigned seed = 1; seed <= kScenes; ++seed) {
        Draws draws(seed);
        const DepthScene scene = largeScene(draws);
        Pair rulers(scene, GetParam());
        const cv::Mat color = drawColor(draws, scene.size);
        rulers.take(seed, color, drawDepth(draws, scene.size));
        ASSERT_TRUE(sameRuler(rulers.fast, rulers.plain)) << "seed " << seed;
    }
}

TEST_P(PlainPipeline, CalibrationLeavesTheSameMembersAndFiles) {
    const bool tracking = GetParam() == GROUND_TRACKING;
    unsigned useful = 0;
    for (unsigned seed = 1; useful < kScenes && seed <= kMostScenes; ++seed) {
        Draws draws(seed);
        const DepthScene scene = largeScene(draws);
        Pair rulers(scene, GetParam());
        rulers.plain.paramDir = "plain";
        rulers.plain.calFilePath = "plain/cal.txt";
        const cv::Mat color = drawColor(draws, scene.size);
        rulers.take(seed, color, scene.depth(draws));
        const float distance = rulers.calibrate(seed, draws.real(-5, 5));
        EXPECT_TRUE(tracking || distance > 0.0F) << "seed " << seed;
        useful += distance > 0.0F ? 1U : 0U;
        for (const std::string name : {"cal.txt", "depth.tif"}) {
            EXPECT_EQ(fileBytes("param/" + name), fileBytes("plain/" + name)) << name << ", seed " << seed;
        }
        rulers.plain.paramDir = rulers.fast.paramDir;
        rulers.plain.calFilePath = rulers.fast.calFilePath;
        ASSERT_TRUE(sameRuler(rulers.fast, rulers.plain)) << "seed " << seed;
        std::filesystem::remove_all("param");
        std::filesystem::remove_all("plain");
    }
    EXPECT_EQ(useful, kScenes);
}

TEST_P(PlainPipeline, FramesAfterACalibrationMeasureTheSame) {
    const CapturedOutput silence;
    int measured = 0;
    for (unsigned seed = 1; seed <= kScenes; ++seed) {
        auto [draws, scene, rulers] = calibrated(seed, GetParam());
        for (unsigned frame = 1; frame <= 3; ++frame) {
            const cv::Mat color = drawColor(draws, scene.size);
            rulers.take(seed + frame, color, scene.depth(draws));
            ASSERT_EQ(rulers.fast.measureOnce(), plain::measureOnce(rulers.plain)) << "seed " << seed;
            ASSERT_TRUE(sameRuler(rulers.fast, rulers.plain)) << "seed " << seed << ", frame " << frame;
            measured += rulers.fast.result.corners.empty() ? 0 : 1;
        }
    }
    EXPECT_GE(measured, 40) << "frames without a box compare little";
}

INSTANTIATE_TEST_SUITE_P(Modes, PlainPipeline, ::testing::Values(KIOSK, GROUND_TRACKING, GROUND_GROWING),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

class PlainPipelineOfBatches : public ::testing::TestWithParam<ProductType> {
protected:
    WorkingDirectory here_;
};

TEST_P(PlainPipelineOfBatches, IntakeAndMeasurementLeaveTheSameMembers) {
    const CapturedOutput silence;
    int agreed = 0;
    for (unsigned seed = 1; seed <= kScenes; ++seed) {
        auto [draws, scene, rulers] = calibrated(seed, GetParam());
        const Batch batch = sceneBatch(scene, draws, 4);
        rulers.inStep(
            seed, [&](Quorvel& ruler) { ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths)); },
            [&](Quorvel& ruler) { plain::takeBatch(ruler, batch.colors, batch.depths); });
        ASSERT_TRUE(sameRuler(rulers.fast, rulers.plain)) << "seed " << seed;
        const int status = rulers.fast.measureMultiple(10.0F, 10.0F, 10.0F);
        ASSERT_EQ(plain::measureMultiple(rulers.plain, 10.0F, 10.0F, 10.0F), status) << "seed " << seed;
        ASSERT_TRUE(sameRuler(rulers.fast, rulers.plain)) << "seed " << seed;
        agreed += status == 0 ? 1 : 0;
    }
    EXPECT_GE(agreed, 10) << "refused batches compare little";
}

INSTANTIATE_TEST_SUITE_P(Modes, PlainPipelineOfBatches, ::testing::Values(KIOSK, GROUND_TRACKING),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

}  // namespace

}  // namespace quorvel::test
