// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "command_run.h"
#include "sim/scene.h"

namespace quorvel::command {

/// A noise-free camera at 640 x 480 that looks straight down from 1000 mm at one box.
sim::Scene boxScene(double x, double y, double length, double width, double height);

/// A folder with the frames of one simulated scene, as `quorvel simulate` writes them.
class SimulatedFolder : public TemporaryFolder {
public:
    explicit SimulatedFolder(const std::string& preset);
    explicit SimulatedFolder(const sim::Scene& scene);

    /// Runs `quorvel measure` on the occupied frame.
    CommandRun measure(const std::string& options) const;
    /// The same, calibrating on the empty frame first.
    CommandRun calibrateAndMeasure(const std::string& options) const;
    /// Runs `quorvel calibrate` on the empty frame.
    CommandRun calibrate(const std::string& options) const;
    /// The scene's truth.json.
    nlohmann::json truth() const { return nlohmann::json::parse(read("truth.json")); }

private:
    void fill(const std::string& options, const sim::Scene* scene);
};

}  // namespace quorvel::command
