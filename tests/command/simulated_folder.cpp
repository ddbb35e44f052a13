// SPDX-License-Identifier: Apache-2.0
#include "simulated_folder.h"

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
    const CommandRun run = this->run("simulate --out . --preset " + preset);
    EXPECT_EQ(run.exitCode, 0) << run.text();
}

SimulatedFolder::SimulatedFolder(const sim::Scene& scene) {
    sim::writeScene(file("given.json"), scene);
    const CommandRun run = this->run("simulate --out . --scene given.json");
    EXPECT_EQ(run.exitCode, 0) << run.text();
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
