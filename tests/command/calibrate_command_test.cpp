// SPDX-License-Identifier: Apache-2.0
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "simulated_folder.h"

namespace quorvel::command {
namespace {

/// The four numbers of the calibration file.
std::vector<double> storedPlane(const TemporaryFolder& folder) {
    std::istringstream text(folder.read("param/cal.txt"));
    std::vector<double> numbers;
    for (double value = 0.0; text >> value;) {
        numbers.push_back(value);
    }
    return numbers;
}

void expectText(const CommandRun& run, const std::string& words) {
    EXPECT_NE(run.output.find(words), std::string::npos) << "expected \"" << words << "\" in\n" << run.text();
}

void writeDepth(const TemporaryFolder& folder, const std::string& name, const cv::Mat& depth) {
    ASSERT_TRUE(cv::imwrite(folder.file(name), depth));
}

class CalibrateMode : public ::testing::TestWithParam<const char*> {};

TEST_P(CalibrateMode, PrintsPlaneAndLeavesTheFiles) {
    const SimulatedFolder folder("tilted-camera");
    const CommandRun run = folder.calibrate(std::string("--mode ") + GetParam());
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.errors, "");
    expectText(run, "Calibrated (" + std::string(GetParam()) + ")");
    expectText(run, "plane normal");
    expectText(run, "camera height");
    expectText(run, "calibration area    100 x 100 from (270, 190)");
    expectText(run, "within 5 mm of it");
    expectText(run, "cal.txt");
    expectText(run, "depth.tif");

    const auto plane = storedPlane(folder);
    const auto truth = folder.truth()["plane"];
    ASSERT_EQ(plane.size(), 4U) << folder.read("param/cal.txt");
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_NEAR(plane[k], truth["normal"][k].get<double>(), 0.01) << "component " << k;
    }
    EXPECT_NEAR(plane[3], truth["offset_mm"].get<double>(), 5.0);
    const cv::Mat kept = cv::imread(folder.file("param/depth.tif"), cv::IMREAD_UNCHANGED);
    EXPECT_EQ(cv::norm(kept, cv::imread(folder.file("empty_depth.png"), cv::IMREAD_UNCHANGED), cv::NORM_INF), 0.0);
}

INSTANTIATE_TEST_SUITE_P(Both, CalibrateMode, ::testing::Values("kiosk", "ground-growing"),
                         [](const auto& instance) { return std::string(instance.param).substr(0, 5); });

TEST(CalibrateCommand, TellsTheTiltAndTheShareNearThePlane) {
    const SimulatedFolder folder(boxScene(0, 0, 100, 100, 100));
    const CommandRun run = folder.calibrate("--mode kiosk --calibration-area 0.5");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    expectText(run, "tilt                0.0 deg");
    expectText(run, "320 x 240 from (160, 120)");
    expectText(run, "76800 of 76800");
    expectText(run, "100.0 % of them (76800)");
}

TEST(CalibrateCommand, OffsetMovesTheStoredPlaneButNotTheShare) {
    const SimulatedFolder folder(boxScene(0, 0, 100, 100, 100));
    const CommandRun run = folder.calibrate("--mode kiosk --offset 12.5");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    expectText(run, "offset 12.5 mm included");
    expectText(run, "100.0 % of them");
    EXPECT_NEAR(storedPlane(folder)[3], 1012.5, 0.6);
}

TEST(CalibrateCommand, RectangleIsUsedAsCalibrationArea) {
    const SimulatedFolder folder(boxScene(0, 0, 100, 100, 100));
    expectText(folder.calibrate("--mode kiosk --calibration-area 10,20,90,80"), "90 x 80 from (10, 20)");
}

TEST(CalibrateCommand, FailedFitSaysWhyAndLeavesNothing) {
    const SimulatedFolder folder(boxScene(0, 0, 100, 100, 100));
    writeDepth(folder, "empty_depth.png", cv::Mat::zeros(480, 640, CV_16UC1));
    for (const auto& [mode, needed] : {std::pair("kiosk", "more than 4000"), std::pair("ground-growing", "5000")}) {
        const CommandRun run = folder.calibrate(std::string("--mode ") + mode);
        EXPECT_EQ(run.exitCode, 1) << run.text();
        expectText(run, "Calibration failed");
        expectText(run, "0 pixels with depth out of 10000");
        expectText(run, needed);
        expectText(run, "No calibration was left");
        EXPECT_FALSE(std::filesystem::exists(folder.path() / "param")) << mode;
    }
}

TEST(CalibrateCommand, TooSmallAreaIsNamed) {
    const SimulatedFolder folder(boxScene(0, 0, 100, 100, 100));
    const CommandRun run = folder.calibrate("--mode kiosk --calibration-area 300,200,50,50");
    EXPECT_EQ(run.exitCode, 1) << run.text();
    expectText(run, "2500 pixels with depth out of 2500");
    expectText(run, "larger --calibration-area");
}

TEST(CalibrateCommand, FailedFitPutsThePreviousFilesBack) {
    const SimulatedFolder folder(boxScene(0, 0, 100, 100, 100));
    ASSERT_EQ(folder.calibrate("--mode kiosk").exitCode, 0);
    const std::string plane = folder.read("param/cal.txt");
    const std::string depth = folder.read("param/depth.tif");
    writeDepth(folder, "empty_depth.png", cv::Mat::zeros(480, 640, CV_16UC1));
    const CommandRun run = folder.calibrate("--mode kiosk");
    EXPECT_EQ(run.exitCode, 1) << run.text();
    expectText(run, "previous calibration");
    EXPECT_EQ(folder.read("param/cal.txt"), plane);
    EXPECT_EQ(folder.read("param/depth.tif"), depth);
}

TEST(CalibrateCommand, FilesThatCannotBeWrittenAreAnError) {
    const auto expectRefusal = [](const SimulatedFolder& folder, const std::string& file) {
        const CommandRun run = folder.calibrate("--mode kiosk");
        EXPECT_EQ(run.exitCode, 2) << run.text();
        EXPECT_NE(run.errors.find(file + ": cannot be written"), std::string::npos) << run.text();
        EXPECT_EQ(run.errorLines(), 1) << run.text();
    };
    const SimulatedFolder fileForFolder(boxScene(0, 0, 100, 100, 100));
    fileForFolder.write("param", "a file where the folder belongs");
    expectRefusal(fileForFolder, "cal.txt");
    const SimulatedFolder folderForFile(boxScene(0, 0, 100, 100, 100));
    std::filesystem::create_directories(folderForFile.path() / "param" / "depth.tif");
    expectRefusal(folderForFile, "depth.tif");
    EXPECT_FALSE(std::filesystem::exists(folderForFile.path() / "param" / "cal.txt")) << "no half calibration";
}

TEST(CalibrateCommand, ColorMayBeMissing) {
    const SimulatedFolder folder(boxScene(0, 0, 100, 100, 100));
    const CommandRun run = folder.run("calibrate --camera camera.json --depth empty_depth.png --mode kiosk");
    EXPECT_EQ(run.exitCode, 0) << run.text();
}

TEST(CalibrateCommand, DebugShowsTheLibrarysLinesOnStandardError) {
    const SimulatedFolder folder(boxScene(0, 0, 100, 100, 100));
    const CommandRun run = folder.calibrate("--mode kiosk --debug");
    EXPECT_EQ(run.exitCode, 0) << run.text();
    EXPECT_NE(run.errors.find("Calib Ref Plane Start"), std::string::npos) << run.text();
    EXPECT_EQ(run.output.find("Calib Ref Plane Start"), std::string::npos) << run.text();
}

}  // namespace
}  // namespace quorvel::command
