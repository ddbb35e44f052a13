// SPDX-License-Identifier: Apache-2.0
// The whole measurement against its plain form, bit for bit, over hundreds of random scenes: cluttered, noisy, tilted,
// of odd picture sizes, with and without side band, in all modes.
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/plain/object_chain.h"
#include "library/same_result.h"
#include "sim/render.h"
#include "support/camera_ruler.h"
#include "support/captured_output.h"
#include "support/loop_variants.h"
#include "support/random.h"
#include "support/same_bits.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

sim::Scene randomScene(Draws& draws, unsigned seed, ProductType mode) {
    sim::Scene scene;
    scene.name = "seed " + std::to_string(seed);
    scene.seed = seed;
    // The fit on every frame needs more than 4000 small-image pixels of one orientation.
    const int smallest = mode == GROUND_TRACKING ? 420 : 200;
    const int width = smallest + draws.between(0, 240);
    const int height = smallest * 3 / 4 + draws.between(0, 160);
    const double focal = draws.uniform(0.8, 1.2) * width;
    scene.camera = {focal, focal, draws.uniform(0.45, 0.55) * width, draws.uniform(0.45, 0.55) * height, width, height};
    const double t = draws.uniform(500.0, 1600.0);
    scene.surface = {t, draws.uniform(-6.0, 6.0), draws.uniform(-6.0, 6.0), 0.0};
    const int boxes = draws.between(0, 4);
    for (int i = 0; i < boxes; ++i) {
        const double reach = i == 0 ? 0.1 : 0.5;
        sim::Box box;
        box.length = draws.uniform(0.08, 0.35) * t;
        box.width = draws.uniform(0.05, 0.3) * t;
        box.height = draws.uniform(0.01, 0.4) * t;
        box.yawDeg = draws.uniform(0.0, 180.0);
        box.x = draws.uniform(-reach, reach) * t;
        box.y = draws.uniform(-reach, reach) * t;
        scene.boxes.push_back(box);
    }
    if (draws.between(0, 3) == 0) {
        sim::Cylinder cylinder;
        cylinder.x = draws.uniform(-0.3, 0.3) * t;
        cylinder.y = draws.uniform(-0.3, 0.3) * t;
        cylinder.diameter = draws.uniform(0.05, 0.2) * t;
        cylinder.height = draws.uniform(0.05, 0.3) * t;
        scene.cylinders = {cylinder};
    }
    scene.effects.axialNoise = draws.uniform(0.0, 3.0);
    scene.effects.flyingPixels = draws.uniform(0.0, 0.6);
    scene.effects.dropout = draws.uniform(0.0, 0.02);
    scene.effects.holeCount = draws.between(0, 4);
    scene.effects.holeRadius = draws.uniform(0.0, 6.0);
    return scene;
}

Quorvel calibratedRuler(Draws& draws, const sim::Scene& scene, const cv::Mat& emptyDepth, ProductType mode) {
    const sim::Camera& camera = scene.camera;
    Quorvel ruler = rulerOf(camera);
    cv::Rect region;
    ruler.setProductType(mode);
    ruler.setCalibrationRoI(0.7F, region);
    // A small area that most objects miss, in some scenes.
    const double area = draws.chance(20) ? draws.uniform(0.005, 0.05) : draws.uniform(0.1, 1.2);
    ruler.setEffectiveRegionInArea(static_cast<float>(area), region);
    ruler.setFilterWeight(static_cast<float>(draws.between(0, 1) == 0 ? -1.0 : draws.uniform(-0.05, 0.02)));
    if (draws.between(0, 2) == 0) {
        ruler.setCameraType(true, draws.between(0, 200));
    }
    std::srand(scene.seed);
    const cv::Mat color(camera.height, camera.width, CV_8UC3, cv::Scalar::all(90.0));
    EXPECT_TRUE(ruler.getCameraFrame(color, emptyDepth)) << scene.name;
    float t = 0.0F;
    ruler.calibRef(t, 0.0F);
    return ruler;
}

struct Outcomes {
    int measured = 0;
    int empty = 0;
    int failed = 0;
};

/// Measures one scene in both forms and compares everything that a measurement writes.
void compareForms(unsigned seed, ProductType mode, Outcomes& outcomes) {
    Draws draws(seed * 5 + static_cast<unsigned>(mode));
    const sim::Scene scene = randomScene(draws, seed, mode);
    sim::Scene emptyScene = scene;
    emptyScene.boxes.clear();
    emptyScene.cylinders.clear();
    Quorvel fast = calibratedRuler(draws, scene, sim::renderDepth(emptyScene, 1), mode);
    const cv::Mat depth = sim::renderDepth(scene, 0);
    const cv::Mat color(depth.size(), CV_8UC3, cv::Scalar::all(90.0));
    ASSERT_TRUE(fast.getCameraFrame(color, depth)) << scene.name;
    Quorvel plain = fast;
    plain.depthSmall = fast.depthSmall.clone();
    plain.pointCloud = fast.pointCloud.clone();

    const CapturedOutput silence;
    const int status = plain::measureOnce(plain);
    for (const internal::LoopVariant variant : internal::runnableLoopVariants()) {
        const LoopVariantInUse inUse(variant);
        Quorvel ruler = fast;
        ruler.depthSmall = fast.depthSmall.clone();
        ruler.pointCloud = fast.pointCloud.clone();
        ASSERT_EQ(ruler.measureOnce(), status) << scene.name << ", " << nameOf(variant);
        EXPECT_TRUE(sameResult(ruler.result, plain.result)) << scene.name << ", " << nameOf(variant);
        EXPECT_TRUE(sameBits(ruler.depthSmall, plain.depthSmall)) << scene.name << ", " << nameOf(variant);
        EXPECT_TRUE(sameBits(ruler.pointCloud, plain.pointCloud)) << scene.name << ", " << nameOf(variant);
        EXPECT_TRUE(sameBits(ruler.minObjectHeight, plain.minObjectHeight)) << scene.name << ", " << nameOf(variant);
    }
    ++(status != 0 ? outcomes.failed : plain.result.corners.empty() ? outcomes.empty : outcomes.measured);
}

class WholePipelineBits : public ::testing::TestWithParam<ProductType> {};

TEST_P(WholePipelineBits, MeasurementEqualsItsPlainForm) {
    const WorkingDirectory directory;
    Outcomes outcomes;
    for (unsigned seed = 1; seed <= 150; ++seed) {
        compareForms(seed, GetParam(), outcomes);
        if (HasFatalFailure()) {
            return;
        }
    }
    // The comparison is only useful when the scenes reach every possible outcome.
    EXPECT_GE(outcomes.measured, 60);
    EXPECT_GE(outcomes.empty, 3);
    EXPECT_GE(outcomes.failed, 8);
}

INSTANTIATE_TEST_SUITE_P(Modes, WholePipelineBits, ::testing::Values(KIOSK, GROUND_TRACKING, GROUND_GROWING),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

}  // namespace

}  // namespace quorvel::test
