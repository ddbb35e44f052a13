// SPDX-License-Identifier: Apache-2.0
#include "simulated_folder.h"

#include <filesystem>
#include <map>

#include <gtest/gtest.h>

#include "sim/scene_json.h"

namespace quorvel::command {

sim::Scene boxScene(double x, double y, double length, double width, double height) {
    sim::Scene scene;
    sim::Box box;
    box.x = x;
    box.y = y;
    box.length = length;
    box.width = width;
    box.height = height;
    scene.boxes.push_back(box);
    return scene;
}

SimulatedFolder::SimulatedFolder(const std::string& preset) {
    fill("--preset " + preset, nullptr);
}

SimulatedFolder::SimulatedFolder(const sim::Scene& scene) {
    fill("--scene given.json", &scene);
}

/// A scene is simulated by the first test that wants it and copied by the others: half of the time of many tests was
/// simulating the same parcel again.
void SimulatedFolder::fill(const std::string& options, const sim::Scene* scene) {
    static std::map<std::string, TemporaryFolder> simulated;
    const std::string key = options + (scene == nullptr ? "" : sim::sceneToJson(*scene));
    const auto [entry, isNew] = simulated.try_emplace(key);
    const TemporaryFolder& original = entry->second;
    if (isNew) {
        if (scene != nullptr) {
            sim::writeScene(original.file("given.json"), *scene);
        }
        const CommandRun run = original.run("simulate --out . " + options);
        EXPECT_EQ(run.exitCode, 0) << run.text();
    }
    std::filesystem::copy(original.path(), path());
}

CommandRun SimulatedFolder::measure(const std::string& options) const {
    return run("measure --camera camera.json --color color.png --depth depth.png " + options);
}

CommandRun SimulatedFolder::calibrateAndMeasure(const std::string& options) const {
    return measure("--empty-color empty_color.png --empty-depth empty_depth.png " + options);
}

CommandRun SimulatedFolder::calibrate(const std::string& options) const {
    return run("calibrate --camera camera.json --color empty_color.png --depth empty_depth.png " + options);
}

}  // namespace quorvel::command
