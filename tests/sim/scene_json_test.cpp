// SPDX-License-Identifier: Apache-2.0
#include "sim/scene_json.h"

#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "sim/presets.h"
#include "sim/render.h"
#include "sim/test_scenes.h"

namespace quorvel::sim {
namespace {

std::string messageFor(const std::string& text) {
    return messageOf([&] { sceneFromJson(text); });
}

const std::string kEverything = R"({
        "name": "all", "seed": 4294967295,
        "camera": {"fx": 1.5, "fy": 2.5, "cx": 3.5, "cy": -4.5, "width": 5, "height": 6},
        "surface": {"distance": 700.25, "tiltXDeg": 1, "tiltYDeg": -2, "halfExtent": 300},
        "boxes": [{"x": 1, "y": 2, "yawDeg": 3, "length": 4, "width": 5, "height": 6, "color": "#010AfF"}],
        "cylinders": [{"x": 7, "y": 8, "diameter": 9, "height": 10, "color": "#fffefd"}],
        "effects": {"flyingPixels": 0.1, "edgeThreshold": 11, "axialNoise": 12, "jitter": 13, "quantisationStep": 14,
                    "dropout": 0.2, "holeCount": 15, "holeRadius": 16}})";

/// Every member of a scene against kEverything.
void expectEverything(const Scene& scene) {
    EXPECT_EQ(scene.name, "all");
    EXPECT_EQ(scene.seed, 4294967295U);
    EXPECT_EQ(scene.camera.fx, 1.5);
    EXPECT_EQ(scene.camera.fy, 2.5);
    EXPECT_EQ(scene.camera.cx, 3.5);
    EXPECT_EQ(scene.camera.cy, -4.5);
    EXPECT_EQ(scene.camera.width, 5);
    EXPECT_EQ(scene.camera.height, 6);
    EXPECT_EQ(scene.surface.distance, 700.25);
    EXPECT_EQ(scene.surface.tiltXDeg, 1.0);
    EXPECT_EQ(scene.surface.tiltYDeg, -2.0);
    EXPECT_EQ(scene.surface.halfExtent, 300.0);
    ASSERT_EQ(scene.boxes.size(), 1U);
    EXPECT_EQ(scene.boxes[0].x, 1.0);
    EXPECT_EQ(scene.boxes[0].y, 2.0);
    EXPECT_EQ(scene.boxes[0].yawDeg, 3.0);
    EXPECT_EQ(scene.boxes[0].length, 4.0);
    EXPECT_EQ(scene.boxes[0].width, 5.0);
    EXPECT_EQ(scene.boxes[0].height, 6.0);
    EXPECT_EQ(scene.boxes[0].color, cv::Vec3b(255, 10, 1)) << "blue, green, red of #010AfF";
    ASSERT_EQ(scene.cylinders.size(), 1U);
    EXPECT_EQ(scene.cylinders[0].x, 7.0);
    EXPECT_EQ(scene.cylinders[0].y, 8.0);
    EXPECT_EQ(scene.cylinders[0].diameter, 9.0);
    EXPECT_EQ(scene.cylinders[0].height, 10.0);
    EXPECT_EQ(scene.cylinders[0].color, cv::Vec3b(253, 254, 255));
    EXPECT_EQ(scene.effects.flyingPixels, 0.1);
    EXPECT_EQ(scene.effects.edgeThreshold, 11.0);
    EXPECT_EQ(scene.effects.axialNoise, 12.0);
    EXPECT_EQ(scene.effects.jitter, 13.0);
    EXPECT_EQ(scene.effects.quantisationStep, 14.0);
    EXPECT_EQ(scene.effects.dropout, 0.2);
    EXPECT_EQ(scene.effects.holeCount, 15);
    EXPECT_EQ(scene.effects.holeRadius, 16.0);
}

TEST(SceneJson, EmptyObjectIsTheDefaultScene) {
    EXPECT_EQ(sceneToJson(sceneFromJson("{}")), sceneToJson(Scene()));
}

TEST(SceneJson, EveryMemberIsReadAndWritten) {
    const Scene scene = sceneFromJson(kEverything);
    {
        const ::testing::ScopedTrace trace(__FILE__, __LINE__, "as read");
        expectEverything(scene);
    }
    const ::testing::ScopedTrace trace(__FILE__, __LINE__, "written and read again");
    expectEverything(sceneFromJson(sceneToJson(scene)));
}

TEST(SceneJson, RoundTripKeepsEveryBit) {
    for (std::uint32_t seed = 0; seed < 50; ++seed) {
        Scene scene = randomScene(seed);
        scene.name = "Karton \"\xC3\xBC\"\n";
        scene.seed = seed * 85899345U;
        scene.camera.fx = 1.0 / 3.0 + seed;
        scene.effects.axialNoise = 0.1 * seed;
        scene.effects.holeCount = static_cast<int>(seed);
        const Scene back = sceneFromJson(sceneToJson(scene));
        EXPECT_EQ(back.name, scene.name);
        EXPECT_EQ(back.seed, scene.seed);
        EXPECT_EQ(back.camera.fx, scene.camera.fx);
        EXPECT_EQ(sceneToJson(back), sceneToJson(scene)) << "seed " << seed;
        EXPECT_EQ(countDifferent(renderDepthExact(back), renderDepthExact(scene)), 0) << "seed " << seed;
    }
}

TEST(SceneJson, PresetsSurviveTheRoundTrip) {
    for (const std::string& name : presetNames()) {
        const Scene scene = preset(name);
        const Scene back = sceneFromJson(sceneToJson(scene));
        EXPECT_EQ(countDifferent(render(back, 2).depth, render(scene, 2).depth), 0) << name;
        EXPECT_EQ(countDifferent(render(back, 2).color, render(scene, 2).color), 0) << name;
    }
}

TEST(SceneJson, BadTextIsRefusedWithPlaceReasonAndRemedy) {
    struct Case {
        std::string text;
        std::string message;
    };
    const std::vector<Case> cases{
        {"", "line 1, column 1: not valid JSON; look for a missing comma, quote or bracket"},
        {"{\n  \"seed\": 1\n  \"name\": \"x\"\n}",
         "line 3, column 8: not valid JSON; look for a missing comma, quote or bracket"},
        {R"({"surface": {"distance": 1e999}})", "scene: a number is too large to be read; give sizes in mm"},
        {"[1, 2]", "scene: expected an object { ... }, found [1,2]"},
        {R"({"sead": 1})",
         "sead: unknown member; known here are name, seed, camera, surface, boxes, cylinders, effects"},
        {R"({"camera": {"f": 1}})", "camera.f: unknown member; known here are fx, fy, cx, cy, width, height"},
        {R"({"camera": 600})", "camera: expected an object { ... }, found 600"},
        {R"({"camera": {"fx": "600"}})", "camera.fx: expected a number, found \"600\""},
        {R"({"camera": {"width": 640.5}})", "camera.width: expected a whole number of at most 32 bits, found 640.5"},
        {R"({"camera": {"height": 5000000000}})",
         "camera.height: expected a whole number of at most 32 bits, found 5000000000"},
        {R"({"seed": -1})", "seed: expected a whole number of at most 32 bits, found -1"},
        {R"({"seed": 4294967296})", "seed: expected a whole number of at most 32 bits, found 4294967296"},
        {R"({"name": 3})", "name: expected a text in quotes, found 3"},
        {R"({"boxes": {}})", "boxes: expected a list [ ... ], found {}"},
        {R"({"camera": [")" + std::string(100, 'a') + R"("]})",
         "camera: expected an object { ... }, found [\"" + std::string(58, 'a') + "..."},
        {R"({"boxes": [7]})", "boxes[0]: expected an object { ... }, found 7"},
        {R"({"boxes": [{"length": 1, "width": 2}]})", "boxes[0].height: missing; give a size in mm"},
        {R"({"boxes": [{"length": 1, "width": 2, "height": 3, "diameter": 4}]})",
         "boxes[0].diameter: unknown member; known here are x, y, yawDeg, length, width, height, color"},
        {R"({"boxes": [{"length": 1, "width": 2, "height": 3, "color": "brown"}]})",
         "boxes[0].color: expected a colour written \"#rrggbb\", found \"brown\""},
        {R"({"boxes": [{"length": 1, "width": 2, "height": 3, "color": "#12345g"}]})",
         "boxes[0].color: expected a colour written \"#rrggbb\", found \"#12345g\""},
        {R"({"boxes": [{"length": 1, "width": 2, "height": 3, "color": [1, 2, 3]}]})",
         "boxes[0].color: expected a text in quotes, found [1,2,3]"},
        {R"({"boxes": [{"length": -1, "width": 2, "height": 3}]})",
         "boxes[0].length: expected a number above 0 and at most 1e+06, found -1"},
        {R"({"cylinders": [{"diameter": 5, "height": 3}, {"height": 3}]})",
         "cylinders[1].diameter: missing; give a size in mm"},
        {R"({"effects": {"dropout": 2}})", "effects.dropout: expected a number from 0 to 1, found 2"},
        {R"({"effects": {"noise": 2}})",
         "effects.noise: unknown member; known here are flyingPixels, edgeThreshold, axialNoise, jitter, "
         "quantisationStep, dropout, holeCount, holeRadius"},
        {R"({"surface": {"tilt": 2}})",
         "surface.tilt: unknown member; known here are distance, tiltXDeg, tiltYDeg, halfExtent"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(messageFor(one.text), one.message) << "for " << one.text;
    }
}

TEST(SceneJson, SceneThatCouldNotBeReadIsNotWritten) {
    Scene scene;
    scene.surface.distance = -5.0;
    EXPECT_THROW(sceneToJson(scene), std::invalid_argument);
    scene = Scene();
    scene.name = "\xFF";
    EXPECT_THROW(sceneToJson(scene), std::invalid_argument) << "no UTF-8";
}

}  // namespace
}  // namespace quorvel::sim
