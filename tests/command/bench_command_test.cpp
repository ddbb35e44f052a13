// SPDX-License-Identifier: Apache-2.0
// Times are never compared with anything but 0.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/version.h>

#include "command_run.h"

namespace quorvel::command {
namespace {

const char* const kShort = " --seconds 0.01";

TEST(BenchCommand, TableHasARowForEverySizeInItsOrder) {
    const CommandRun run = runCommand(std::string("bench --size 320x240 --size 160x120") + kShort);
    EXPECT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.errors, "") << run.text();
    EXPECT_NE(run.output.find("(kiosk)"), std::string::npos) << run.text();
    for (const char* title : {"picture", "frames", "intake ms", "measure ms", "both ms", "frames/s"}) {
        EXPECT_NE(run.output.find(title), std::string::npos) << title << "\n" << run.text();
    }
    const std::size_t first = run.output.find("\n  320 x 240 ");
    const std::size_t second = run.output.find("\n  160 x 120 ");
    ASSERT_NE(first, std::string::npos) << run.text();
    ASSERT_NE(second, std::string::npos) << run.text();
    EXPECT_LT(first, second) << run.text();
}

using Sizes = std::vector<std::pair<int, int>>;

Sizes sizesMeasured(const std::string& options) {
    const CommandRun run = runCommand("bench --json" + options + kShort);
    EXPECT_EQ(run.exitCode, 0) << run.text();
    const nlohmann::json document = run.json();
    Sizes sizes;
    for (const auto& row : document["rows"]) {
        sizes.emplace_back(row["width"], row["height"]);
    }
    return sizes;
}

TEST(BenchCommand, WithoutSizesTheUsualOnesAreMeasured) {
    const Sizes usual{{320, 240}, {640, 480}, {1280, 720}, {1920, 1080}};
    EXPECT_EQ(sizesMeasured(""), usual);
    EXPECT_EQ(sizesMeasured(" --mode ground-growing"), usual);
    EXPECT_EQ(sizesMeasured(" --mode ground-tracking"), (Sizes{{640, 480}, {1280, 720}, {1920, 1080}}));
}

class BenchModes : public ::testing::TestWithParam<const char*> {};

TEST_P(BenchModes, JsonHoldsPositiveTimes) {
    const std::string mode = GetParam();
    const CommandRun run = runCommand("bench --size 480x360 --json --mode " + mode + kShort);
    EXPECT_EQ(run.exitCode, 0) << run.text();
    const nlohmann::json document = run.json();
    ASSERT_TRUE(document.is_object()) << run.text();
    EXPECT_EQ(document["version"], QUORVEL_VERSION);
    EXPECT_EQ(document["mode"], mode);
    EXPECT_EQ(document["seconds"], 0.01);
    EXPECT_GT(document["opencv_threads"], 0);
    ASSERT_EQ(document["rows"].size(), 1U);
    const nlohmann::json& row = document["rows"][0];
    EXPECT_GE(row["frames"], 3);
    for (const char* key : {"intake_ms", "measure_ms", "both_ms", "frames_per_second"}) {
        EXPECT_GT(row[key], 0.0) << key << "\n" << run.text();
    }
}

INSTANTIATE_TEST_SUITE_P(BenchCommand, BenchModes, ::testing::Values("kiosk", "ground-growing", "ground-tracking"));

TEST(BenchCommand, LeavesNothingInTheWorkingFolderAndUsesNoPlaneOfIt) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "param");
    folder.write("param/cal.txt", "0 0 1 17\n");
    const CommandRun run = folder.run(std::string("bench --size 160x120") + kShort);
    EXPECT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(folder.read("param/cal.txt"), "0 0 1 17\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "param" / "depth.tif"));
}

void expectRefusal(const std::string& options, const std::vector<std::string>& words) {
    expectRefusal(runCommand("bench " + options), words);
}

TEST(BenchCommand, RefusesWrongSizes) {
    for (const char* size : {"640", "x480", "640x", "640x480x2", "axb", "640,480", "640X480"}) {
        expectRefusal(std::string("--size ") + size, {"--size", size, "WxH"});
    }
    expectRefusal("--size 0x480", {"--size", "0 x 480", "between 16 and 16384"});
    expectRefusal("--size 640x20000", {"--size", "640 x 20000", "between 16 and 16384"});
    expectRefusal("--size 160x120 --size 640", {"\"640\"", "WxH"});
}

TEST(BenchCommand, RefusesSizesTooSmallToMeasureIn) {
    expectRefusal("--size 16x16", {"--size 16x16", "nothing is measured", "kiosk"});
    // The small picture has fewer than the 4000 pixels that the fit on every frame needs.
    expectRefusal("--size 160x120 --mode ground-tracking", {"--size 160x120", "ground-tracking"});
}

TEST(BenchCommand, RefusesOtherWrongOptions) {
    for (const char* seconds : {"0", "-1", "nan", "inf", "3601", "long"}) {
        expectRefusal(std::string("--seconds ") + seconds, {"--seconds"});
    }
    expectRefusal("--mode shop", {"no mode \"shop\""});
    expectRefusal("--fast", {"--fast"});
}

}  // namespace
}  // namespace quorvel::command
