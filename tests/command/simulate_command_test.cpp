// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "camera_file.h"
#include "sim/presets.h"
#include "sim/scene_json.h"
#include "simulated_folder.h"

namespace quorvel::command {
namespace {

TEST(SimulateCommand, ListNamesEveryPresetWithItsDescription) {
    const CommandRun run = runCommand("simulate --list");
    EXPECT_EQ(run.exitCode, 0) << run.text();
    for (const std::string& name : sim::presetNames()) {
        EXPECT_NE(run.output.find("  " + name + " "), std::string::npos) << run.text();
        EXPECT_NE(run.output.find(sim::presetDescription(name)), std::string::npos) << run.text();
    }
}

TEST(SimulateCommand, WritesFramesCameraSceneAndTruth) {
    const SimulatedFolder folder("parcel");
    const Camera camera = readCameraFile(folder.file("camera.json"));
    for (const char* name : {"empty_color.png", "color.png"}) {
        const cv::Mat image = cv::imread(folder.file(name), cv::IMREAD_UNCHANGED);
        EXPECT_EQ(image.type(), CV_8UC3) << name;
        EXPECT_EQ(image.size(), camera.size()) << name;
    }
    for (const char* name : {"empty_depth.png", "depth.png"}) {
        const cv::Mat image = cv::imread(folder.file(name), cv::IMREAD_UNCHANGED);
        EXPECT_EQ(image.type(), CV_16UC1) << name;
        EXPECT_EQ(image.size(), camera.size()) << name;
    }
    EXPECT_EQ(sim::sceneToJson(sim::readScene(folder.file("scene.json"))), sim::sceneToJson(sim::preset("parcel")));
}

TEST(SimulateCommand, TruthHasPlaneObjectsAndTheNearestOne) {
    const SimulatedFolder folder("clutter");
    const nlohmann::json truth = folder.truth();
    EXPECT_EQ(truth["scene"], "clutter");
    EXPECT_TRUE(truth["seed"].is_number_unsigned());
    EXPECT_EQ(truth["frame"], 0);
    ASSERT_EQ(truth["plane"]["normal"].size(), 3U);
    EXPECT_NEAR(truth["plane"]["tilt_deg"].get<double>(), 0.0, 1e-6);
    EXPECT_GT(truth["plane"]["offset_mm"].get<double>(), 0.0);
    ASSERT_EQ(truth["objects"].size(), 6U);
    EXPECT_LT(truth["nearest_middle"].get<std::size_t>(), 6U);
    for (const auto& object : truth["objects"]) {
        EXPECT_TRUE(object["shape"] == "box" || object["shape"] == "cylinder") << object;
        for (const char* key : {"x_mm", "y_mm", "yaw_deg", "length_mm", "width_mm", "height_mm"}) {
            EXPECT_TRUE(object[key].is_number()) << key << " in " << object;
        }
        EXPECT_TRUE(object["in_view"].is_boolean());
        EXPECT_EQ(object["corners"].size(), 8U);
    }
}

TEST(SimulateCommand, SceneWithoutObjectsHasNoNearest) {
    const SimulatedFolder folder{sim::Scene()};
    EXPECT_TRUE(folder.truth()["nearest_middle"].is_null());
    EXPECT_TRUE(folder.truth()["objects"].empty());
}

TEST(SimulateCommand, SameSeedAndFrameGiveTheSameBytes) {
    const TemporaryFolder folder;
    const auto depth = [&folder](const std::string& options) {
        const CommandRun run = folder.run("simulate --preset parcel --out out " + options);
        EXPECT_EQ(run.exitCode, 0) << run.text();
        return folder.read("out/depth.png");
    };
    const std::string first = depth("--seed 7 --frame 3");
    EXPECT_EQ(first, depth("--seed 7 --frame 3"));
    EXPECT_NE(first, depth("--seed 8 --frame 3"));
    EXPECT_NE(first, depth("--seed 7 --frame 4"));
    EXPECT_EQ(folder.run("simulate --preset parcel --out out --seed 7").exitCode, 0);
    EXPECT_EQ(nlohmann::json::parse(folder.read("out/truth.json"))["seed"], 7);
}

}  // namespace
}  // namespace quorvel::command
