// SPDX-License-Identifier: Apache-2.0
// The whole measurement against its plain form, bit for bit, over hundreds of random scenes: cluttered, noisy, tilted,
// of odd picture sizes, with and without side band, in all modes.
#include <cstdlib>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/plain/object_chain.h"
#include "library/same_result.h"
#include "sim/render.h"
#include "support/captured_output.h"
#include "support/same_bits.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

class Dice {
public:
    explicit Dice(unsigned seed) : generator_(seed) {}
    double between(double low, double high) {
        return low + (high - low) * (static_cast<double>(generator_()) / 4294967296.0);
    }
    int upTo(int count) { return static_cast<int>(generator_() % static_cast<unsigned>(count + 1)); }

private:
    std::mt19937 generator_;
};

sim::Scene randomScene(Dice& dice, unsigned seed, ProductType mode) {
    sim::Scene scene;
    scene.name = "seed " + std::to_string(seed);
    scene.seed = seed;
    // The fit on every frame needs more than 4000 small-image pixels of one orientation.
    const int smallest = mode == GROUND_TRACKING ? 420 : 200;
    const int width = smallest + dice.upTo(240);
    const int height = smallest * 3 / 4 + dice.upTo(160);
    const double focal = dice.between(0.8, 1.2) * width;
    scene.camera = {focal, focal, dice.between(0.45, 0.55) * width, dice.between(0.45, 0.55) * height, width, height};
    const double t = dice.between(500.0, 1600.0);
    scene.surface = {t, dice.between(-6.0, 6.0), dice.between(-6.0, 6.0), 0.0};
    const int boxes = dice.upTo(4);
    for (int i = 0; i < boxes; ++i) {
        const double reach = i == 0 ? 0.1 : 0.5;
        sim::Box box;
        box.length = dice.between(0.08, 0.35) * t;
        box.width = dice.between(0.05, 0.3) * t;
        box.height = dice.between(0.01, 0.4) * t;
        box.yawDeg = dice.between(0.0, 180.0);
        box.x = dice.between(-reach, reach) * t;
        box.y = dice.between(-reach, reach) * t;
        scene.boxes.push_back(box);
    }
    if (dice.upTo(3) == 0) {
        sim::Cylinder cylinder;
        cylinder.x = dice.between(-0.3, 0.3) * t;
        cylinder.y = dice.between(-0.3, 0.3) * t;
        cylinder.diameter = dice.between(0.05, 0.2) * t;
        cylinder.height = dice.between(0.05, 0.3) * t;
        scene.cylinders = {cylinder};
    }
    scene.effects.axialNoise = dice.between(0.0, 3.0);
    scene.effects.flyingPixels = dice.between(0.0, 0.6);
    scene.effects.dropout = dice.between(0.0, 0.02);
    scene.effects.holeCount = dice.upTo(4);
    scene.effects.holeRadius = dice.between(0.0, 6.0);
    return scene;
}

Quorvel calibratedRuler(Dice& dice, const sim::Scene& scene, const cv::Mat& emptyDepth, ProductType mode) {
    const sim::Camera& camera = scene.camera;
    Quorvel ruler(static_cast<float>(camera.fx), static_cast<float>(camera.fy), static_cast<float>(camera.cx),
                  static_cast<float>(camera.cy), camera.width, camera.height, false, "");
    cv::Rect region;
    ruler.setProductType(mode);
    ruler.setCalibrationRoI(0.7F, region);
    ruler.setEffectiveRegionInArea(static_cast<float>(dice.between(0.1, 1.2)), region);
    ruler.setFilterWeight(static_cast<float>(dice.upTo(1) == 0 ? -1.0 : dice.between(-0.05, 0.02)));
    if (dice.upTo(2) == 0) {
        ruler.setCameraType(true, dice.upTo(200));
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
    Dice dice(seed * 3 + static_cast<unsigned>(mode));
    const sim::Scene scene = randomScene(dice, seed, mode);
    sim::Scene emptyScene = scene;
    emptyScene.boxes.clear();
    emptyScene.cylinders.clear();
    Quorvel fast = calibratedRuler(dice, scene, sim::renderDepth(emptyScene, 1), mode);
    const cv::Mat depth = sim::renderDepth(scene, 0);
    const cv::Mat color(depth.size(), CV_8UC3, cv::Scalar::all(90.0));
    ASSERT_TRUE(fast.getCameraFrame(color, depth)) << scene.name;
    Quorvel plain = fast;
    plain.depthSmall = fast.depthSmall.clone();
    plain.pointCloud = fast.pointCloud.clone();

    const CapturedOutput silence;
    const int status = fast.measureOnce();
    ASSERT_EQ(plain::measureOnce(plain), status) << scene.name;
    EXPECT_TRUE(sameResult(fast.result, plain.result)) << scene.name;
    EXPECT_TRUE(sameBits(fast.depthSmall, plain.depthSmall)) << scene.name;
    EXPECT_TRUE(sameBits(fast.pointCloud, plain.pointCloud)) << scene.name;
    EXPECT_TRUE(sameBits(fast.minObjectHeight, plain.minObjectHeight)) << scene.name;
    ++(status != 0 ? outcomes.failed : fast.result.corners.empty() ? outcomes.empty : outcomes.measured);
}

class WholeRoadBits : public ::testing::TestWithParam<ProductType> {};

TEST_P(WholeRoadBits, MeasurementEqualsItsPlainForm) {
    const WorkingDirectory directory;
    Outcomes outcomes;
    for (unsigned seed = 1; seed <= 150; ++seed) {
        compareForms(seed, GetParam(), outcomes);
        if (HasFatalFailure()) {
            return;
        }
    }
    // The scenes are only worth comparing when they take every way out.
    EXPECT_GE(outcomes.measured, 60);
    EXPECT_GE(outcomes.empty, 3);
    EXPECT_GE(outcomes.failed, 8);
}

INSTANTIATE_TEST_SUITE_P(Modes, WholeRoadBits, ::testing::Values(KIOSK, GROUND_TRACKING, GROUND_GROWING),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

}  // namespace

}  // namespace quorvel::test
