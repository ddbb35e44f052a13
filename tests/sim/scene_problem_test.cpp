// SPDX-License-Identifier: Apache-2.0
#include <functional>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "sim/scene.h"
#include "sim/test_scenes.h"

namespace quorvel::sim {
namespace {

Scene goodScene() {
    Scene scene = flatScene();
    scene.boxes.resize(2);
    scene.cylinders.resize(1);
    return scene;
}

TEST(SceneProblem, GoodScenesHaveNone) {
    EXPECT_EQ(sceneProblem(Scene()), "");
    EXPECT_EQ(sceneProblem(goodScene()), "");
    for (std::uint32_t seed = 0; seed < 100; ++seed) {
        EXPECT_EQ(sceneProblem(randomScene(seed)), "") << "seed " << seed;
    }
}

TEST(SceneProblem, NamesTheMemberTheRangeAndTheValue) {
    struct Case {
        std::function<void(Scene&)> spoil;
        std::string problem;
    };
    const std::vector<Case> cases{
        {[](Scene& s) { s.camera.fx = 0.0; }, "camera.fx: expected a number above 0 and at most 1e+06, found 0"},
        {[](Scene& s) { s.camera.fy = -2.5; }, "camera.fy: expected a number above 0 and at most 1e+06, found -2.5"},
        {[](Scene& s) { s.camera.cx = 2e6; }, "camera.cx: expected a number from -1e+06 to 1e+06, found 2e+06"},
        {[](Scene& s) { s.camera.cy = std::numeric_limits<double>::quiet_NaN(); },
         "camera.cy: expected a number from -1e+06 to 1e+06, found nan"},
        {[](Scene& s) { s.camera.width = 0; }, "camera.width: expected a number from 1 to 16384, found 0"},
        {[](Scene& s) { s.camera.height = 16385; }, "camera.height: expected a number from 1 to 16384, found 16385"},
        {[](Scene& s) { s.surface.distance = 0.0; },
         "surface.distance: expected a number above 0 and at most 1e+06, found 0"},
        {[](Scene& s) { s.surface.tiltXDeg = 80.5; }, "surface.tiltXDeg: expected a number from -80 to 80, found 80.5"},
        {[](Scene& s) { s.surface.tiltYDeg = -90.0; }, "surface.tiltYDeg: expected a number from -80 to 80, found -90"},
        {[](Scene& s) { s.surface.halfExtent = -1.0; },
         "surface.halfExtent: expected a number from 0 to 1e+06, found -1"},
        {[](Scene& s) { s.boxes[1].x = -3e6; }, "boxes[1].x: expected a number from -1e+06 to 1e+06, found -3e+06"},
        {[](Scene& s) { s.boxes[0].y = 3e6; }, "boxes[0].y: expected a number from -1e+06 to 1e+06, found 3e+06"},
        {[](Scene& s) { s.boxes[0].yawDeg = 361.0; }, "boxes[0].yawDeg: expected a number from -360 to 360, found 361"},
        {[](Scene& s) { s.boxes[1].length = -3.0; },
         "boxes[1].length: expected a number above 0 and at most 1e+06, found -3"},
        {[](Scene& s) { s.boxes[0].width = 0.0; },
         "boxes[0].width: expected a number above 0 and at most 1e+06, found 0"},
        {[](Scene& s) { s.boxes[0].height = 0.0; },
         "boxes[0].height: expected a number above 0 and below the surface's distance, 1000, found 0"},
        {[](Scene& s) { s.cylinders[0].height = 1000.0; },
         "cylinders[0].height: expected a number above 0 and below the surface's distance, 1000, found 1000"},
        {[](Scene& s) { s.cylinders[0].diameter = 0.0; },
         "cylinders[0].diameter: expected a number above 0 and at most 1e+06, found 0"},
        {[](Scene& s) { s.effects.flyingPixels = 1.5; },
         "effects.flyingPixels: expected a number from 0 to 1, found 1.5"},
        {[](Scene& s) { s.effects.edgeThreshold = -1.0; },
         "effects.edgeThreshold: expected a number from 0 to 1e+06, found -1"},
        {[](Scene& s) { s.effects.axialNoise = -0.1; },
         "effects.axialNoise: expected a number from 0 to 1e+06, found -0.1"},
        {[](Scene& s) { s.effects.jitter = -1.0; }, "effects.jitter: expected a number from 0 to 1e+06, found -1"},
        {[](Scene& s) { s.effects.quantisationStep = -1.0; },
         "effects.quantisationStep: expected a number from 0 to 1e+06, found -1"},
        {[](Scene& s) { s.effects.dropout = -0.5; }, "effects.dropout: expected a number from 0 to 1, found -0.5"},
        {[](Scene& s) { s.effects.holeCount = -1; }, "effects.holeCount: expected a number from 0 to 10000, found -1"},
        {[](Scene& s) { s.effects.holeRadius = -1.0; },
         "effects.holeRadius: expected a number from 0 to 16384, found -1"},
    };
    for (const Case& one : cases) {
        Scene scene = goodScene();
        one.spoil(scene);
        EXPECT_EQ(sceneProblem(scene), one.problem);
    }
}

TEST(SceneProblem, ReportsTheFirstOfSeveral) {
    Scene scene = goodScene();
    scene.effects.dropout = 7.0;
    scene.boxes[1].width = -1.0;
    EXPECT_EQ(sceneProblem(scene), "boxes[1].width: expected a number above 0 and at most 1e+06, found -1");
}

}  // namespace
}  // namespace quorvel::sim
