// SPDX-License-Identifier: Apache-2.0
#include "replay_tree.h"

#include <filesystem>
#include <sstream>

#include "capture_folder.h"
#include "sim/presets.h"
#include "simulated_folder.h"

namespace quorvel::command {

std::unique_ptr<TemporaryFolder> ReplayTree::folder_;

void ReplayTree::SetUpTestSuite() {
    folder_ = std::make_unique<TemporaryFolder>();
    const std::filesystem::path month = folder_->path() / "log" / "2026-11";
    captureScene(boxScene(20.0, -10.0, 200.0, 120.0, 90.0), {}, month / "2026-11-01-10-00-00");
    captureScene(boxScene(-20.0, 10.0, 150.0, 100.0, 60.0), {}, month / "2026-11-01-10-00-01");
    captureScene(sim::preset("parcel"), {}, month / "2026-11-01-10-00-02");
    captureScene(sim::Scene(), {}, month / "2026-11-01-10-00-03");
    std::filesystem::create_directories(month / "2026-11-01-10-00-04");
}

void ReplayTree::TearDownTestSuite() {
    folder_.reset();
}

CommandRun ReplayTree::replay(const std::string& arguments) {
    return folder_->run("replay " + arguments);
}

std::vector<nlohmann::json> ReplayTree::lines(const std::string& text) {
    std::vector<Json> parsed;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        parsed.push_back(Json::parse(line, nullptr, false));
    }
    return parsed;
}

}  // namespace quorvel::command
