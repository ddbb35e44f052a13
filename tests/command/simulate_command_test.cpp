// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "kit/input/camera_file.h"
#include "sim/presets.h"
#include "sim/scene_json.h"
#include "simulated_folder.h"

namespace quorvel::command {

using namespace kit;
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

/// Names of the numbered pictures in the folder's "out", sorted.
std::vector<std::string> numberedPictures(const TemporaryFolder& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path() / "out")) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("color_", 0) == 0 || name.rfind("depth_", 0) == 0) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

class SimulateFrames : public ::testing::Test {
protected:
    void SetUp() override {
        // Small, since a hundred of them are rendered.
        sim::Scene scene = boxScene(0, 0, 200, 150, 100);
        scene.camera = {30.0, 30.0, 16.0, 12.0, 32, 24};
        scene.effects.axialNoise = 3.0;
        sim::writeScene(folder_.file("small.json"), scene);
    }

    void simulate(const std::string& options) const {
        const CommandRun run = folder_.run("simulate --scene small.json --out out " + options);
        EXPECT_EQ(run.exitCode, 0) << run.text();
    }

    TemporaryFolder folder_;
};

TEST_F(SimulateFrames, BatchStartsAtTheFrameAndEachHasItsOwnNoise) {
    simulate("--frame 4");
    EXPECT_TRUE(numberedPictures(folder_).empty()) << "without --frames there is no batch";
    const std::string fourth = folder_.read("out/depth.png");
    simulate("--frame 3 --frames 2");
    EXPECT_EQ(numberedPictures(folder_),
              (std::vector<std::string>{"color_00.png", "color_01.png", "depth_00.png", "depth_01.png"}));
    EXPECT_EQ(folder_.read("out/depth_00.png"), folder_.read("out/depth.png"));
    EXPECT_EQ(folder_.read("out/color_00.png"), folder_.read("out/color.png"));
    EXPECT_EQ(folder_.read("out/depth_01.png"), fourth);
    EXPECT_NE(folder_.read("out/depth_00.png"), fourth);
    EXPECT_EQ(nlohmann::json::parse(folder_.read("out/truth.json"))["frame"], 3);
}

TEST_F(SimulateFrames, NumbersHaveAsManyDigitsAsTheBatchNeeds) {
    simulate("--frames 100");
    EXPECT_EQ(numberedPictures(folder_).size(), 200U);
    EXPECT_EQ(numberedPictures(folder_)[99], "color_99.png");
    simulate("--frames 101");
    EXPECT_EQ(numberedPictures(folder_).size(), 202U) << "frames of an earlier run must not stay";
    EXPECT_EQ(numberedPictures(folder_)[100], "color_100.png");
    EXPECT_EQ(numberedPictures(folder_)[0], "color_000.png");
}

TEST_F(SimulateFrames, ShorterBatchLeavesNoOldFramesAndOtherFilesStay) {
    simulate("--frames 3");
    folder_.write("out/color_plan.png", "mine");
    folder_.write("out/color_00.txt", "mine");
    simulate("--frames 1");
    EXPECT_EQ(numberedPictures(folder_),
              (std::vector<std::string>{"color_00.png", "color_00.txt", "color_plan.png", "depth_00.png"}));
}

}  // namespace
}  // namespace quorvel::command
