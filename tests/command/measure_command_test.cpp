// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <quorvel/version.h>

#include "simulated_folder.h"

namespace quorvel::command {
namespace {

using Json = nlohmann::json;

void expectKeys(const Json& object, const std::vector<std::string>& keys, const std::string& name) {
    std::vector<std::string> found;
    for (const auto& entry : object.items()) {
        found.push_back(entry.key());
    }
    std::vector<std::string> sorted = keys;
    std::sort(sorted.begin(), sorted.end());
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, sorted) << "keys of " << name;
}

void expectRectangle(const Json& rect, const std::string& name) {
    expectKeys(rect, {"x", "y", "width", "height"}, name);
    for (const auto& entry : rect.items()) {
        EXPECT_TRUE(entry.value().is_number_integer()) << name << "." << entry.key();
    }
}

/// The keys and types that every report has, for every outcome.
void expectSchema(const Json& report) {
    expectKeys(report, {"version",        "status",      "reason",         "notes",         "mode",
                        "length_mm",      "width_mm",    "height_mm",      "in_view",       "on_target",
                        "side_margin_px", "corners",     "surface_points", "plane",         "camera",
                        "areas",          "calibration", "filter_weight",  "min_height_mm", "min_object_pixels",
                        "timings_ms",     "timing"},
               "the report");
    EXPECT_TRUE(report["version"].is_string());
    EXPECT_TRUE(report["status"].is_string());
    EXPECT_TRUE(report["mode"].is_string());
    EXPECT_TRUE(report["notes"].is_array());
    const bool measured = report["status"] == "measured";
    EXPECT_EQ(report["reason"].is_null(), measured);
    for (const char* size : {"length_mm", "width_mm", "height_mm"}) {
        EXPECT_EQ(report[size].is_number(), measured) << size;
        EXPECT_EQ(report[size].is_null(), !measured) << size;
    }
    EXPECT_TRUE(report["in_view"].is_boolean());
    EXPECT_TRUE(report["on_target"].is_boolean() || report["on_target"].is_null());
    EXPECT_EQ(report["on_target"].is_null(), report["mode"] == "ground-growing");
    EXPECT_TRUE(report["side_margin_px"].is_number());
    EXPECT_TRUE(report["corners"].is_array());
    EXPECT_TRUE(report["surface_points"].is_number_integer());
    for (const auto& corner : report["corners"]) {
        expectKeys(corner, {"x", "y"}, "a corner");
        EXPECT_TRUE(corner["x"].is_number() && corner["y"].is_number()) << corner;
    }
    expectKeys(report["camera"], {"fx", "fy", "cx", "cy", "width", "height", "source"}, "camera");
    expectKeys(report["areas"], {"detection", "calibration"}, "areas");
    expectRectangle(report["areas"]["detection"], "areas.detection");
    EXPECT_TRUE(report["filter_weight"].is_number());
    EXPECT_TRUE(report["min_height_mm"].is_number());
    EXPECT_TRUE(report["min_object_pixels"].is_number_integer());
    expectKeys(report["timings_ms"], {"read", "calibrate", "frame", "measure"}, "timings_ms");
    EXPECT_TRUE(report["timings_ms"]["read"].is_number());
    EXPECT_TRUE(report["timings_ms"]["frame"].is_number());
    EXPECT_TRUE(report["timings_ms"]["measure"].is_number());
}

TEST(MeasureCommand, JsonOfAMeasuredBox) {
    const SimulatedFolder folder("parcel");
    const CommandRun run = folder.calibrateAndMeasure("--mode kiosk --json");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    const Json report = run.json();
    ASSERT_TRUE(report.is_object()) << run.text();
    expectSchema(report);
    EXPECT_EQ(report["version"], QUORVEL_VERSION);
    EXPECT_EQ(report["status"], "measured");
    EXPECT_EQ(report["in_view"], true);
    EXPECT_EQ(report["on_target"], true);
    EXPECT_EQ(report["corners"].size(), 8U);
    ASSERT_TRUE(report["plane"].is_object());
    expectKeys(report["plane"], {"normal", "offset_mm", "tilt_deg"}, "plane");
    EXPECT_EQ(report["plane"]["normal"].size(), 3U);
    EXPECT_EQ(report["areas"]["detection"], (Json{{"x", 256}, {"y", 192}, {"width", 128}, {"height", 96}}));
    expectRectangle(report["areas"]["calibration"], "areas.calibration");
    expectKeys(report["calibration"], {"measured_pixels", "pixels_near_plane", "plane_file", "depth_file"},
               "calibration");
    EXPECT_TRUE(report["timings_ms"]["calibrate"].is_number());
    EXPECT_EQ(report["camera"]["source"], "camera.json");
    EXPECT_GE(report["length_mm"].get<double>(), report["width_mm"].get<double>());
}

TEST(MeasureCommand, JsonOfNothing) {
    const SimulatedFolder folder("partly-out-of-view");
    const CommandRun run = folder.calibrateAndMeasure("--mode ground-growing --json");
    EXPECT_EQ(run.exitCode, 1) << run.text();
    const Json report = run.json();
    ASSERT_TRUE(report.is_object()) << run.text();
    expectSchema(report);
    EXPECT_EQ(report["status"], "out_of_view");
    expectKeys(report["reason"], {"code", "message", "numbers"}, "reason");
    EXPECT_TRUE(report["reason"]["code"].is_string());
    EXPECT_TRUE(report["reason"]["message"].is_string());
    for (const auto& number : report["reason"]["numbers"].items()) {
        EXPECT_TRUE(number.value().is_number()) << number.key();
    }
}

TEST(MeasureCommand, JsonWithoutAPlane) {
    const SimulatedFolder folder("parcel");
    const CommandRun run = folder.measure("--mode kiosk --json");
    EXPECT_EQ(run.exitCode, 1) << run.text();
    const Json report = run.json();
    ASSERT_TRUE(report.is_object()) << run.text();
    expectSchema(report);
    EXPECT_EQ(report["status"], "no_plane");
    EXPECT_TRUE(report["plane"].is_null());
    EXPECT_TRUE(report["calibration"].is_null());
    EXPECT_TRUE(report["areas"]["calibration"].is_null());
}

TEST(MeasureCommand, JsonStaysAloneOnStandardOutputWithDebugLines) {
    const SimulatedFolder folder("parcel");
    const CommandRun run = folder.calibrateAndMeasure("--mode kiosk --json --debug");
    EXPECT_EQ(run.exitCode, 0) << run.text();
    EXPECT_TRUE(run.json().is_object()) << run.text();
    EXPECT_NE(run.errors.find("KIOSK mode"), std::string::npos) << run.text();
}

TEST(MeasureCommand, JsonFloatsAreTheShortestThatReadBack) {
    const SimulatedFolder folder("parcel");
    const Json report = folder.calibrateAndMeasure("--mode kiosk --json --filter-weight 0.005").json();
    EXPECT_EQ(report["filter_weight"].dump(), "0.005");
}

TEST(MeasureCommand, TableHasSizesFlagsAndPlaneWithUnits) {
    const SimulatedFolder folder("parcel");
    const CommandRun run = folder.calibrateAndMeasure("--mode kiosk");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.errors, "");
    const Json report = folder.calibrateAndMeasure("--mode kiosk --json").json();
    for (const auto& [label, key] :
         {std::pair("length", "length_mm"), std::pair("width", "width_mm"), std::pair("height", "height_mm")}) {
        char expected[80];
        std::snprintf(expected, sizeof expected, "  %-14s   %7.1f mm\n", label, report[key].get<double>());
        EXPECT_NE(run.output.find(expected), std::string::npos) << "expected\n" << expected << "in\n" << run.text();
    }
    for (const char* words :
         {"Measured (kiosk)", "in view          yes", "on target        yes", "side margin", "plane normal",
          "plane distance", " mm", "tilt", " deg", "128 x 96 from (256, 192)  (default of the mode)"}) {
        EXPECT_NE(run.output.find(words), std::string::npos) << words << "\n" << run.text();
    }
}

TEST(MeasureCommand, StoredPlaneServesKioskAndGroundGrowing) {
    const SimulatedFolder folder("parcel");
    ASSERT_EQ(folder.calibrate("--mode kiosk").exitCode, 0);
    for (const auto& [mode, area] :
         {std::pair("kiosk", Json{{"x", 256}, {"y", 192}, {"width", 128}, {"height", 96}}),
          std::pair("ground-growing", Json{{"x", 270}, {"y", 190}, {"width", 100}, {"height", 100}})}) {
        const CommandRun run = folder.measure(std::string("--json --mode ") + mode);
        ASSERT_EQ(run.exitCode, 0) << run.text();
        EXPECT_EQ(run.json()["areas"]["detection"], area) << mode << " keeps its own default area";
        EXPECT_NEAR(run.json()["plane"]["offset_mm"].get<double>(), 1000.0, 2.0);
    }
}

TEST(MeasureCommand, CalibratingFirstIgnoresAStoredPlane) {
    const SimulatedFolder folder("parcel");
    std::filesystem::create_directory(folder.path() / "param");
    folder.write("param/cal.txt", "0.000000 0.000000 1.000000 500.000000\n");
    const CommandRun run = folder.calibrateAndMeasure("--mode kiosk --json");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_NEAR(run.json()["plane"]["offset_mm"].get<double>(), 1000.0, 2.0);
}

TEST(MeasureCommand, SettingsReachTheLibrary) {
    const SimulatedFolder folder("parcel");
    const Json report = folder
                            .calibrateAndMeasure(
                                "--mode ground-growing --json --area 0.5 --filter-weight -0.25 "
                                "--min-height 12.5 --calibration-area 100,100,200,150 --offset 3")
                            .json();
    EXPECT_EQ(report["areas"]["detection"], (Json{{"x", 160}, {"y", 120}, {"width", 320}, {"height", 240}}));
    EXPECT_EQ(report["areas"]["calibration"], (Json{{"x", 100}, {"y", 100}, {"width", 200}, {"height", 150}}));
    EXPECT_EQ(report["filter_weight"], -0.25);
    EXPECT_EQ(report["min_height_mm"], 12.5);
    EXPECT_NEAR(report["plane"]["offset_mm"].get<double>(), 1003.0, 4.0);
}

TEST(MeasureCommand, SideBandGivesAMargin) {
    const SimulatedFolder folder("parcel");
    const Json report = folder.calibrateAndMeasure("--mode kiosk --json --side-band 30").json();
    // 30 mm at the height of the top, 850 mm from a camera with fx 600, and 1.3 times that.
    EXPECT_NEAR(report["side_margin_px"].get<double>(), 30.0 * 600.0 / 850.0 * 1.3, 0.5);
}

TEST(MeasureCommand, DepthInOtherUnitsMeasuresTheSame) {
    const SimulatedFolder folder("parcel");
    for (const char* name : {"empty_depth", "depth"}) {
        cv::Mat metres;
        cv::imread(folder.file(std::string(name) + ".png"), cv::IMREAD_UNCHANGED).convertTo(metres, CV_32F, 0.001);
        ASSERT_TRUE(cv::imwrite(folder.file(std::string(name) + ".tif"), metres));
    }
    const CommandRun inMetres = folder.run(
        "measure --camera camera.json --depth depth.tif --empty-depth empty_depth.tif --depth-scale 1000 "
        "--mode kiosk --json");
    ASSERT_EQ(inMetres.exitCode, 0) << inMetres.text();
    const Json expected = folder.calibrateAndMeasure("--mode kiosk --json").json();
    for (const char* key : {"length_mm", "width_mm", "height_mm", "corners", "plane"}) {
        EXPECT_EQ(inMetres.json()[key], expected[key]) << key;
    }
}

TEST(MeasureCommand, IntrinsicsMayReplaceTheCameraFile) {
    const SimulatedFolder folder("parcel");
    const CommandRun run = folder.run(
        "measure --intrinsics 600,600,320,240 --depth depth.png --empty-depth empty_depth.png --mode kiosk --json");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.json()["camera"]["width"], 640);
    EXPECT_EQ(run.json()["camera"]["source"], "--intrinsics 600,600,320,240");
}

TEST(MeasureCommand, DistortionInTheCameraFileIsNoted) {
    const SimulatedFolder folder("parcel");
    folder.write("info.yaml", "width: 640\nheight: 480\nK: [600, 0, 320, 0, 600, 240, 0, 0, 1]\nD: [0.1]\n");
    const CommandRun run =
        folder.run("measure --camera info.yaml --depth depth.png --empty-depth empty_depth.png --mode kiosk --json");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    ASSERT_EQ(run.json()["notes"].size(), 1U) << run.text();
    EXPECT_NE(run.json()["notes"][0].get<std::string>().find("distortion"), std::string::npos);
}

TEST(MeasureCommand, OverlayHasTheSizeOfTheFrame) {
    const SimulatedFolder folder("parcel");
    const CommandRun run = folder.calibrateAndMeasure("--mode kiosk --overlay overlay.png");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_NE(run.output.find("overlay          overlay.png"), std::string::npos) << run.text();
    const cv::Mat overlay = cv::imread(folder.file("overlay.png"));
    EXPECT_EQ(overlay.size(), cv::Size(640, 480));
    EXPECT_GT(cv::norm(overlay, cv::imread(folder.file("color.png")), cv::NORM_L1), 0.0);
}

TEST(MeasureCommand, OverlayIsWrittenWhenNothingIsMeasured) {
    const SimulatedFolder folder("parcel");
    EXPECT_EQ(folder.measure("--mode kiosk --overlay overlay.png").exitCode, 1);
    EXPECT_EQ(cv::imread(folder.file("overlay.png")).size(), cv::Size(640, 480));
}

TEST(MeasureCommand, StagesAreDrawnAsFarAsTheMeasurementCame) {
    const SimulatedFolder folder("parcel");
    const auto stages = [&folder] {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path() / "stages")) {
            names.push_back(entry.path().filename().string());
            EXPECT_GE(cv::imread(entry.path().string()).cols, 640) << names.back();
        }
        std::sort(names.begin(), names.end());
        return names;
    };
    ASSERT_EQ(folder.calibrateAndMeasure("--mode kiosk --stages stages").exitCode, 0);
    EXPECT_EQ(stages(), (std::vector<std::string>{"01_color.png", "02_depth.png", "03_height_above_plane.png",
                                                  "04_candidates.png", "05_surface_points.png", "06_footprint.png",
                                                  "07_overlay.png"}));
    const CommandRun empty =
        folder.run("measure --camera camera.json --depth empty_depth.png --mode kiosk --stages stages");
    ASSERT_EQ(empty.exitCode, 1) << empty.text();
    EXPECT_EQ(stages(), (std::vector<std::string>{"01_color.png", "02_depth.png", "03_height_above_plane.png",
                                                  "04_candidates.png", "07_overlay.png"}))
        << "no picture of an earlier measurement may stay";
}

}  // namespace
}  // namespace quorvel::command
