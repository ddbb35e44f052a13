// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "capture_folder.h"
#include "replay_tree.h"
#include "simulated_folder.h"

namespace quorvel::command {
namespace {

namespace fs = std::filesystem;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

class ReplayCommand : public ReplayTree {};

TEST_F(ReplayCommand, ReplaysATreeAndCountsWhatItFinds) {
    const CommandRun run = replay("log --area 0.5");
    EXPECT_EQ(run.exitCode, 0) << run.text();
    EXPECT_THAT(run.output, HasSubstr("5 captures: 3 measured, 1 empty, 1 unreadable; 0 changed")) << run.text();
    EXPECT_THAT(run.output, HasSubstr("2026-11-01-10-00-04 (")) << run.text();
    EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 7) << run.text();
    EXPECT_THAT(run.errors, EndsWith("captures/s\n"));
    EXPECT_EQ(run.errorLines(), 1) << run.text();
}

TEST_F(ReplayCommand, AChangeGivesOne) {
    const CommandRun run = replay("log --area 0,0,5,5");
    EXPECT_EQ(run.exitCode, 1) << run.text();
    EXPECT_THAT(run.output, HasSubstr("3 changed")) << run.text();
    EXPECT_THAT(run.output, HasSubstr("nothing is measured now")) << run.text();
}

TEST_F(ReplayCommand, AChangeWithoutAnyDescriptionGetsAHint) {
    // Outside the default area, the centred fifth of the picture.
    const std::string capture = folder_->file("hint");
    captureScene(boxScene(150.0, 80.0, 100.0, 80.0, 60.0), {}, capture);
    const CommandRun bare = replay("hint");
    EXPECT_EQ(bare.exitCode, 1) << bare.text();
    EXPECT_THAT(bare.errors, HasSubstr("note: a capture keeps no mode, area")) << bare.text();
    const CommandRun described = replay("hint --area 0,0,5,5");
    EXPECT_EQ(described.exitCode, 1) << described.text();
    EXPECT_THAT(described.errors, Not(HasSubstr("note:"))) << described.text();
    fs::remove_all(capture);
}

TEST_F(ReplayCommand, OnlyUnreadableOnesGiveTwo) {
    EXPECT_EQ(replay("nowhere").exitCode, 2);
    EXPECT_EQ(replay("log/2026-11/2026-11-01-10-00-04 nowhere").exitCode, 2);
    EXPECT_EQ(replay("nowhere log/2026-11/2026-11-01-10-00-00 --area 0.5").exitCode, 0);
}

TEST_F(ReplayCommand, JsonLinesAreOneObjectACapture) {
    const CommandRun run = replay("log --area 0.5 --jsonl");
    const std::vector<Json> rows = lines(run.output);
    ASSERT_EQ(rows.size(), 5U) << run.text();
    const std::vector<std::string> expected{"same", "same", "same", "empty", "unreadable"};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        ASSERT_TRUE(rows[i].is_object()) << run.text();
        EXPECT_EQ(rows[i]["status"], expected[i]) << rows[i];
    }
    EXPECT_GT(rows[0]["recorded"]["length_mm"].get<double>(), 190.0);
    EXPECT_EQ(rows[0]["recorded"]["length_mm"], rows[0]["replayed"]["length_mm"]);
    EXPECT_THAT(run.errors, HasSubstr("5 captures: 3 measured")) << "the summary goes to standard error";
}

TEST_F(ReplayCommand, CsvHasAHeadAndARowACapture) {
    const CommandRun run = replay("log --area 0.5 --csv");
    std::istringstream stream(run.output);
    std::vector<std::string> rows;
    for (std::string row; std::getline(stream, row);) {
        rows.push_back(row);
    }
    ASSERT_EQ(rows.size(), 6U) << run.text();
    EXPECT_THAT(rows[0], HasSubstr("capture,status,"));
    for (std::size_t i = 1; i < rows.size() - 1; ++i) {
        EXPECT_EQ(std::count(rows[i].begin(), rows[i].end(), ','), 10) << rows[i];
    }
}

TEST_F(ReplayCommand, JobsChangeNothingInTheOutput) {
    std::string paths;
    for (int i = 0; i < 8; ++i) {
        paths += "log ";
    }
    const CommandRun one = replay(paths + "--area 0.5 --jsonl");
    const CommandRun four = replay(paths + "--area 0.5 --jsonl --jobs 4");
    EXPECT_EQ(one.exitCode, 0) << one.text();
    EXPECT_EQ(lines(one.output).size(), 40U);
    EXPECT_EQ(one.output, four.output);
    EXPECT_EQ(four.exitCode, 0) << four.text();
}

TEST_F(ReplayCommand, TakesAreaAndWeightFromAParameterFile) {
    folder_->write("wide.yml",
                   "%YAML:1.0\n---\nCalibration_Area: [ 0, 0, 9, 9 ]\nDetect_Area: [ 160, 120, 320, 240 ]\n"
                   "Ground_Weight: 0.0\n");
    folder_->write("corner.json",
                   "{\"Calibration_Area\": [0, 0, 9, 9], \"Detect_Area\": [0, 0, 5, 5], \"Ground_Weight\": 0.0}\n");
    EXPECT_EQ(replay("log --params wide.yml").exitCode, 0);
    EXPECT_EQ(replay("log --params corner.json").exitCode, 1);
    EXPECT_EQ(replay("log --params corner.json --area 0.5").exitCode, 0) << "an option stands above the file";
    EXPECT_EQ(replay("log --params wide.yml --filter-weight 0.9").exitCode, 1) << "all depth counts as ground";
}

TEST_F(ReplayCommand, AnotherModeMeasuresOtherwise) {
    const CommandRun run = replay("log/2026-11/2026-11-01-10-00-00 --area 0.5 --mode ground-tracking --jsonl");
    EXPECT_EQ(run.exitCode, 1) << run.text();
    const Json row = lines(run.output).at(0);
    // The lowering at 1000 mm.
    EXPECT_NEAR(row["recorded"]["height_mm"].get<double>() - row["replayed"]["height_mm"].get<double>(), 7.0, 1e-3);
}

TEST_F(ReplayCommand, AsHostSeesWhatTheOfflineStartSees) {
    const CommandRun run = replay("log/2026-11/2026-11-01-10-00-00 --as-host --jsonl");
    EXPECT_EQ(run.exitCode, 1) << run.text();
    EXPECT_EQ(lines(run.output).at(0)["note"], "nothing is measured now");
    for (const char* option : {"--mode kiosk", "--params x.yml", "--area 0.5", "--filter-weight 0", "--side-band 3"}) {
        const CommandRun refused = replay(std::string("log --as-host ") + option);
        EXPECT_EQ(refused.exitCode, 2) << refused.text();
        EXPECT_THAT(refused.errors, HasSubstr("--as-host")) << refused.text();
    }
}

TEST_F(ReplayCommand, AbsolutePathsReplayAsHostToo) {
    const std::string capture = folder_->file("log/2026-11/2026-11-01-10-00-03");
    const CommandRun run = replay("--as-host --jsonl \"" + capture + "\"");
    EXPECT_EQ(lines(run.output).at(0)["status"], "empty") << run.text();
}

TEST_F(ReplayCommand, WrongOptionsGiveOneLineAndTwo) {
    for (const char* options : {"", "log --tolerance -1", "log --tolerance nan", "log --jobs 0", "log --jobs 100000",
                                "log --csv --jsonl", "log --mode sideways", "log --params nowhere.yml", "log --area 2",
                                "log --filter-weight inf", "log --side-band -1"}) {
        const CommandRun run = replay(options);
        EXPECT_EQ(run.exitCode, 2) << run.text();
        EXPECT_EQ(run.errorLines(), 1) << run.text();
        EXPECT_EQ(run.output, "") << run.text();
    }
}

TEST_F(ReplayCommand, LeavesNoFileBehind) {
    std::set<fs::path> before;
    for (const auto& entry : fs::recursive_directory_iterator(folder_->path() / "log")) {
        before.insert(entry.path());
    }
    ASSERT_EQ(replay("log --area 0.5 --jobs 2").exitCode, 0);
    ASSERT_EQ(replay("log --as-host").exitCode, 1);
    std::set<fs::path> after;
    for (const auto& entry : fs::recursive_directory_iterator(folder_->path() / "log")) {
        after.insert(entry.path());
    }
    EXPECT_EQ(after, before);
    EXPECT_FALSE(fs::exists(folder_->path() / "param"));
}

}  // namespace
}  // namespace quorvel::command
