// SPDX-License-Identifier: Apache-2.0
// Every reason for which nothing is measured, provoked with a frame that has it, and the numbers that go with it.

#include <cmath>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "simulated_folder.h"

namespace quorvel::command {
namespace {

using Json = nlohmann::json;

/// Runs, expects exit code 1 and the code, and returns the reason.
Json reasonOf(const CommandRun& run, const std::string& code) {
    EXPECT_EQ(run.exitCode, 1) << run.text();
    const Json report = run.json();
    if (!report.is_object() || !report["reason"].is_object()) {
        ADD_FAILURE() << "no reason in\n" << run.text();
        return {};
    }
    EXPECT_EQ(report["reason"]["code"], code) << run.text();
    return report["reason"];
}

void expectWords(const Json& reason, const std::vector<std::string>& words) {
    ASSERT_TRUE(reason.is_object());
    for (const std::string& word : words) {
        EXPECT_NE(reason["message"].get<std::string>().find(word), std::string::npos)
            << "expected \"" << word << "\" in " << reason["message"];
    }
}

cv::Mat readDepth(const TemporaryFolder& folder, const std::string& name) {
    return cv::imread(folder.file(name), cv::IMREAD_UNCHANGED);
}

void writeDepth(const TemporaryFolder& folder, const std::string& name, const cv::Mat& depth) {
    ASSERT_TRUE(cv::imwrite(folder.file(name), depth));
}

TEST(MeasureReasons, NoStoredPlane) {
    const SimulatedFolder folder(boxScene(0, 0, 200, 150, 100));
    for (const char* mode : {"kiosk", "ground-growing"}) {
        const Json reason = reasonOf(folder.measure(std::string("--json --mode ") + mode), "no_plane");
        expectWords(reason, {"cal.txt does not exist", "quorvel calibrate", "--empty-depth"});
    }
}

TEST(MeasureReasons, DamagedStoredPlane) {
    const SimulatedFolder folder(boxScene(0, 0, 200, 150, 100));
    std::filesystem::create_directory(folder.path() / "param");
    for (const char* text : {"", "0.000000 0.000000 0.000000 0.000000\n", "0 0 1", "words"}) {
        folder.write("param/cal.txt", text);
        const Json reason = reasonOf(folder.measure("--json --mode kiosk"), "no_plane");
        expectWords(reason, {"holds no usable plane", "quorvel calibrate"});
    }
}

TEST(MeasureReasons, CalibrationFirstFailed) {
    const SimulatedFolder folder(boxScene(0, 0, 200, 150, 100));
    writeDepth(folder, "empty_depth.png", cv::Mat::zeros(480, 640, CV_16UC1));
    const Json reason = reasonOf(folder.calibrateAndMeasure("--json --mode kiosk"), "no_plane");
    expectWords(reason, {"0 pixels with depth out of 10000", "No calibration was left"});
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "param"));
}

TEST(MeasureReasons, NoPlaneInTheFrame) {
    const SimulatedFolder folder(boxScene(0, 0, 200, 150, 100));
    cv::Mat depth = readDepth(folder, "depth.png");
    depth.rowRange(100, 480).setTo(0);
    writeDepth(folder, "depth.png", depth);
    const Json reason = reasonOf(folder.measure("--json --mode ground-tracking"), "no_plane");
    expectWords(reason, {"4000 pixels of the small picture", "more than 4000"});
    EXPECT_EQ(reason["numbers"]["measured_pixels"], 4000.0);
}

TEST(MeasureReasons, NothingHighEnough) {
    const SimulatedFolder folder(boxScene(0, 0, 200, 150, 4));
    const Json reason = reasonOf(folder.calibrateAndMeasure("--json --mode kiosk"), "nothing_high_enough");
    expectWords(reason, {"no pixel stands 5.0 mm or more", "the highest"});
    EXPECT_NEAR(reason["numbers"]["highest_mm"].get<double>(), 4.0, 0.6);
}

TEST(MeasureReasons, FrameWithoutDepth) {
    const SimulatedFolder folder(boxScene(0, 0, 200, 150, 100));
    writeDepth(folder, "depth.png", cv::Mat::zeros(480, 640, CV_16UC1));
    const Json reason = reasonOf(folder.calibrateAndMeasure("--json --mode kiosk"), "nothing_high_enough");
    expectWords(reason, {"no depth at all"});
}

TEST(MeasureReasons, RemovedAsGround) {
    sim::Scene scene = boxScene(0, -260, 150, 100, 40);
    scene.surface.tiltXDeg = -25.0;  // the upper part of the picture lies farther away
    const SimulatedFolder folder(scene);
    const Json reason = reasonOf(folder.calibrateAndMeasure("--json --mode ground-growing"), "removed_as_ground");
    expectWords(reason, {"were dropped as ground", "--filter-weight -1"});
    EXPECT_GT(reason["numbers"]["raised_but_removed_pixels"].get<double>(), 56.0);
    const CommandRun kept = folder.calibrateAndMeasure("--json --mode ground-growing --filter-weight -1 --area 1");
    EXPECT_EQ(kept.exitCode, 0) << "the advice must help\n" << kept.text();
}

TEST(MeasureReasons, RegionTooSmall) {
    const SimulatedFolder folder(boxScene(0, 0, 30, 30, 40));
    const Json reason = reasonOf(folder.calibrateAndMeasure("--json --mode kiosk"), "region_too_small");
    const double largest = reason["numbers"]["largest_region_pixels"].get<double>();
    const double needed = reason["numbers"]["min_object_pixels"].get<double>();
    // 30 mm at 960 mm, with fx 150 in the small picture, are 4.7 pixels.
    EXPECT_GE(largest, 16.0);
    EXPECT_LE(largest, 25.0);
    EXPECT_LE(largest, needed);
    expectWords(reason, {"has " + std::to_string(static_cast<int>(largest)) + " pixels",
                         "more than " + std::to_string(static_cast<int>(needed)) + " are needed"});
}

TEST(MeasureReasons, TooFewSurfacePoints) {
    const SimulatedFolder folder(boxScene(0, 0, 200, 150, 100));
    cv::Mat depth = readDepth(folder, "depth.png");
    // The small picture takes every fourth pixel; with all others gone no point has a neighbour.
    for (int row = 0; row < depth.rows; ++row) {
        for (int col = 0; col < depth.cols; ++col) {
            if (row % 4 != 0 || col % 4 != 0) {
                depth.at<std::uint16_t>(row, col) = 0;
            }
        }
    }
    writeDepth(folder, "depth.png", depth);
    const Json reason = reasonOf(folder.calibrateAndMeasure("--json --mode kiosk"), "too_few_surface_points");
    expectWords(reason, {"left 0 points", "4 are needed"});
}

class MissesArea : public ::testing::TestWithParam<const char*> {};

TEST_P(MissesArea, TellsWhereTheBoxIs) {
    const SimulatedFolder folder(boxScene(250, 0, 120, 100, 100));
    const std::string mode = GetParam();
    const std::string options = "--json --mode " + mode;
    const bool tracking = mode == "ground-tracking";
    const Json reason =
        reasonOf(tracking ? folder.measure(options) : folder.calibrateAndMeasure(options), "misses_area");
    expectWords(reason, {"misses the detection area", "--area"});
    // The top face, 900 mm away, spans 190 to 310 mm from the axis.
    EXPECT_NEAR(reason["numbers"]["top_x_min"].get<double>(), 320.0 + 190.0 * 600.0 / 900.0, 5.0);
    EXPECT_NEAR(reason["numbers"]["top_x_max"].get<double>(), 320.0 + 310.0 * 600.0 / 900.0, 5.0);
    EXPECT_GT(reason["numbers"]["top_x_min"].get<double>(), reason["numbers"]["area_x_max"].get<double>());
    const std::string wider = options + " --area 1";
    const CommandRun hit = tracking ? folder.measure(wider) : folder.calibrateAndMeasure(wider);
    EXPECT_EQ(hit.exitCode, 0) << "the advice must help\n" << hit.text();
}

INSTANTIATE_TEST_SUITE_P(Modes, MissesArea, ::testing::Values("kiosk", "ground-growing", "ground-tracking"),
                         [](const auto& instance) {
                             const std::string name = instance.param;
                             return name == "kiosk" ? "kiosk" : "ground_" + name.substr(7);
                         });

TEST(MeasureReasons, CornerOutOfView) {
    const SimulatedFolder folder("partly-out-of-view");
    const CommandRun run = folder.calibrateAndMeasure("--json --mode kiosk");
    const Json reason = reasonOf(run, "out_of_view");
    EXPECT_EQ(run.json()["status"], "out_of_view");
    EXPECT_EQ(run.json()["corners"].size(), 8U);
    EXPECT_EQ(run.json()["in_view"], false);
    expectWords(reason, {"leaves the usable picture x 0 to 640, y 0 to 480"});
    EXPECT_LT(reason["numbers"]["corner_x"].get<double>(), 0.0);
}

TEST(MeasureReasons, SideBandOutOfView) {
    const SimulatedFolder folder(boxScene(-200, 0, 250, 100, 100));
    const std::string options = "--json --mode kiosk --area 1";
    EXPECT_EQ(folder.calibrateAndMeasure(options).exitCode, 0);
    const Json reason = reasonOf(folder.calibrateAndMeasure(options + " --side-band 150"), "out_of_view");
    expectWords(reason, {"--side-band"});
    EXPECT_NEAR(reason["numbers"]["usable_x_min"].get<double>(), 150.0 * 600.0 / 900.0 * 1.3, 2.0);
}

TEST(MeasureReasons, TableAndOverlaySayItToo) {
    const SimulatedFolder folder(boxScene(250, 0, 120, 100, 100));
    const CommandRun run = folder.calibrateAndMeasure("--mode kiosk --overlay overlay.png");
    EXPECT_EQ(run.exitCode, 1) << run.text();
    EXPECT_NE(run.output.find("Nothing measured (kiosk)"), std::string::npos) << run.text();
    EXPECT_NE(run.output.find("Reason: the box's top face at x 4"), std::string::npos) << run.text();
    EXPECT_EQ(run.errors, "") << "a measurement without a result is no error";
}

}  // namespace
}  // namespace quorvel::command
