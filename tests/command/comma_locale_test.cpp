// SPDX-License-Identifier: Apache-2.0
// The command in the shell of a user whose language has a decimal comma.
#include "library/comma_locale.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "simulated_folder.h"

namespace quorvel::command {
namespace {

/// While this object lives, started programs run in a German locale.
class GermanShell {
public:
    GermanShell() { setenv("LC_ALL", "de_DE.UTF-8", 1); }
    ~GermanShell() { unsetenv("LC_ALL"); }
    GermanShell(const GermanShell&) = delete;
    GermanShell& operator=(const GermanShell&) = delete;
};

/// Removes the times, which differ from run to run: in a table a number with a point before " ms", in JSON a group.
std::string withoutTimes(std::string text) {
    const std::string unit = " ms";
    for (std::size_t end = text.find(unit, 1); end != std::string::npos; end = text.find(unit, end + unit.size())) {
        const std::size_t start = text.find_last_not_of("0123456789.", end - 1) + 1;
        text.replace(start, end - start, "0.0");
        end = start + 3;
    }
    const std::size_t group = text.find("\"timings_ms\"");
    if (group != std::string::npos) {
        const std::size_t start = text.find('{', group);
        text.erase(start, text.find('}', start) - start);
    }
    return text;
}

class CommaLocale : public ::testing::Test {
protected:
    void SetUp() override {
        if (!test::CommaCLocale().available()) {
            GTEST_SKIP() << "no locale with a decimal comma is installed";
        }
        folder_.write("camera.yml", R"(%YAML:1.0
---
image_width: 640
image_height: 480
camera_matrix: !!opencv-matrix
   rows: 3
   cols: 3
   dt: d
   data: [ 600.5, 0., 319.5, 0., 600.25, 239.75, 0., 0., 1. ]
)");
        folder_.write("info.yaml", R"(image_width: 640
image_height: 480
camera_matrix: {rows: 3, cols: 3, data: [600.5, 0.0, 319.5, 0.0, 600.25, 239.75, 0.0, 0.0, 1.0]}
)");
    }

    /// In both shells the same command has to print the same output and write the same file.
    void expectSame(const std::string& arguments, const std::string& file = {}) const {
        const CommandRun expected = folder_.run(arguments);
        EXPECT_EQ(expected.exitCode, 0) << expected.text();
        const std::string written = file.empty() ? std::string() : folder_.read(file);
        EXPECT_EQ(file.empty(), written.empty()) << file;
        if (!file.empty()) {
            std::filesystem::remove(folder_.path() / file);
        }
        const GermanShell german;
        const CommandRun run = folder_.run(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.text();
        EXPECT_EQ(withoutTimes(run.output), withoutTimes(expected.output));
        EXPECT_EQ(run.errors, expected.errors);
        if (!file.empty()) {
            EXPECT_EQ(folder_.read(file), written) << file;
        }
    }

    SimulatedFolder folder_{boxScene(0.0, 0.0, 200.5, 100.25, 80.0)};
};

const std::string kEmpty = " --color empty_color.png --depth empty_depth.png ";
const std::string kOccupied = " --color color.png --depth depth.png ";

TEST_F(CommaLocale, SimulatesAlike) {
    expectSame("simulate --scene given.json --out again", "again/truth.json");
    expectSame("simulate --scene given.json --out again", "again/camera.json");
}

TEST_F(CommaLocale, CalibratesAlikeWithEveryKindOfCamera) {
    for (const std::string camera : {"--camera camera.json", "--camera camera.yml", "--camera info.yaml",
                                     "--intrinsics 600.5,600.25,319.5,239.75"}) {
        expectSame("calibrate --mode ground-growing --offset 0.75 --calibration-area 0.55 " + camera + kEmpty,
                   "param/cal.txt");
    }
}

TEST_F(CommaLocale, MeasuresAlike) {
    folder_.run("calibrate --mode ground-growing --camera camera.json" + kEmpty);
    const std::string line =
        "measure --mode ground-growing --camera camera.json --filter-weight -0.125 --area 0.75 "
        "--min-height 12.5" +
        kOccupied;
    expectSame(line);
    expectSame(line + "--json");
}

TEST_F(CommaLocale, WritesAndShowsRulerParametersAlike) {
    for (const std::string file : {"ruler.yml", "ruler.xml", "ruler.json"}) {
        expectSame(
            "param set " + file + " --size 640x480 --calibration-area 0.55 --detect-area 0.75 --ground-weight -0.0625",
            file);
        expectSame("param show --size 640x480 " + file);
    }
}

}  // namespace
}  // namespace quorvel::command
