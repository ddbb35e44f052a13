// SPDX-License-Identifier: Apache-2.0
#include <sstream>

#include <gtest/gtest.h>

#include <quorvel/version.h>

#include "simulated_folder.h"

namespace quorvel::command {
namespace {

/// The lines of a help text that show a call, without the program's name.
std::vector<std::string> examples(const std::string& help) {
    const std::string start = "  quorvel ";
    std::vector<std::string> calls;
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(start, 0) == 0) {
            calls.push_back(line.substr(start.size()));
        }
    }
    return calls;
}

TEST(Help, ProgramNamesItsSubcommands) {
    const CommandRun run = runCommand("--help");
    EXPECT_EQ(run.exitCode, 0) << run.text();
    for (const char* word :
         {"simulate", "calibrate", "measure", "capture", "param", "bench", "--version", "-C", "Example:"}) {
        EXPECT_NE(run.output.find(word), std::string::npos) << word << "\n" << run.text();
    }
}

TEST(Help, ExamplesOfEverySubcommandWorkOneAfterTheOther) {
    const TemporaryFolder folder;
    for (const char* subcommand : {"simulate", "calibrate", "measure", "capture", "param", "bench"}) {
        const CommandRun help = runCommand(std::string(subcommand) + " --help");
        EXPECT_EQ(help.exitCode, 0) << help.text();
        const auto calls = examples(help.output);
        ASSERT_FALSE(calls.empty()) << help.text();
        for (const std::string& call : calls) {
            EXPECT_EQ(call.rfind(subcommand, 0), 0U) << call;
            const CommandRun run = folder.run(call);
            EXPECT_EQ(run.exitCode, 0) << run.text();
        }
    }
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "overlay.png"));
}

TEST(Help, MeasureNamesEveryOption) {
    const std::string help = runCommand("measure --help").output;
    for (const char* option : {"--camera",           "--intrinsics", "--color",       "--depth",
                               "--depth-scale",      "--mode",       "--empty-color", "--empty-depth",
                               "--calibration-area", "--offset",     "--area",        "--filter-weight",
                               "--side-band",        "--min-height", "--json",        "--overlay",
                               "--stages",           "--debug",      "--batch",       "--tolerance",
                               "--params",           "--timing"}) {
        EXPECT_NE(help.find(std::string("  ") + option + " "), std::string::npos) << option << "\n" << help;
    }
    EXPECT_NE(help.find("0.1 for tenths of a millimetre, 1000 for metres"), std::string::npos) << help;
}

TEST(Help, Version) {
    const CommandRun run = runCommand("--version");
    EXPECT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.output, "quorvel " QUORVEL_VERSION "\n");
}

TEST(ChangeFolder, FilesAreWrittenWhereItPoints) {
    const TemporaryFolder folder;
    std::filesystem::create_directories(folder.path() / "one" / "two");
    const CommandRun run = folder.run("-C one -C two simulate --preset parcel --out scene");
    EXPECT_EQ(run.exitCode, 0) << run.text();
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "one" / "two" / "scene" / "depth.png"))
        << "each -C is relative to the one before it";
    const CommandRun calibrated =
        folder.run("-C one calibrate --camera two/scene/camera.json --depth two/scene/empty_depth.png --mode kiosk");
    EXPECT_EQ(calibrated.exitCode, 0) << calibrated.text();
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "one" / "param" / "cal.txt"));
}

}  // namespace
}  // namespace quorvel::command
