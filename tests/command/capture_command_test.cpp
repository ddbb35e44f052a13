// SPDX-License-Identifier: Apache-2.0
#include <ctime>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "simulated_folder.h"

namespace quorvel::command {
namespace {

namespace fs = std::filesystem;

/// Every digit as a "d".
std::string withoutDigits(std::string text) {
    for (char& c : text) {
        c = c >= '0' && c <= '9' ? 'd' : c;
    }
    return text;
}

const char* const kStoredPlane = "0.000000 0.000000 1.000000 1000.000000\n";

void expectSamePicture(const cv::Mat& picture, const std::string& file) {
    const cv::Mat expected = cv::imread(file, cv::IMREAD_UNCHANGED);
    ASSERT_EQ(picture.size(), expected.size()) << file;
    ASSERT_EQ(picture.type(), expected.type()) << file;
    EXPECT_EQ(cv::norm(picture, expected, cv::NORM_INF), 0.0) << file;
}

/// A box of 200 x 120 x 100 mm under a camera at 1000 mm, measured with a plane of known numbers.
class CaptureScene : public SimulatedFolder {
public:
    CaptureScene() : SimulatedFolder(boxScene(0, 0, 200, 120, 100)) {}

    void storePlane() const {
        fs::create_directory(path() / "param");
        write("param/cal.txt", kStoredPlane);
    }
    CommandRun capture(const std::string& options) const {
        return run("capture --camera camera.json --color color.png --depth depth.png " + options);
    }
    /// The folder that a run with --json names.
    static std::string captureOf(const CommandRun& run) {
        const nlohmann::json report = run.json();
        EXPECT_TRUE(report.is_object() && report.contains("capture")) << run.text();
        return report.is_object() ? report.value("capture", std::string()) : std::string();
    }
    void expectPictures(const std::string& capture) const {
        for (const auto& [kept, given] : {std::pair("color.png", "color.png"), std::pair("depth.tif", "depth.png")}) {
            expectSamePicture(cv::imread(file(capture + "/" + kept), cv::IMREAD_UNCHANGED), file(given));
        }
    }
};

TEST(CaptureCommand, KeepsTheStateTheReadingAndTheFrame) {
    const CaptureScene folder;
    folder.storePlane();
    const CommandRun run = folder.capture("--mode ground-growing --min-height 12.5 --json");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.errors, "");
    const std::string capture = CaptureScene::captureOf(run);
    EXPECT_EQ(withoutDigits(capture), "log/dddd-dd/dddd-dd-dd-dd-dd-dd") << capture;
    EXPECT_EQ(capture.substr(4, 7), capture.substr(12, 7)) << "the month's folder holds its captures: " << capture;
    EXPECT_EQ(folder.readText(capture + "/para.txt"),
              "4\n12.500000\n320.000000\n240.000000\n600.000000\n600.000000\n0.001667\n0.001667\n"
              "0.000000\n0.000000\n1.000000\n1000.000000\n640\n480\n");
    folder.expectPictures(capture);

    const nlohmann::json report = run.json();
    ASSERT_EQ(report["status"], "measured") << run.text();
    const nlohmann::json measured = folder.measure("--mode ground-growing --min-height 12.5 --json").json();
    for (const char* key : {"length_mm", "width_mm", "height_mm", "corners", "plane", "areas", "min_height_mm"}) {
        EXPECT_EQ(report[key], measured[key]) << key << " differs from quorvel measure";
    }
    std::istringstream recorded(folder.readText(capture + "/res.txt"));
    double width = 0.0;
    double length = 0.0;
    double height = 0.0;
    recorded >> width >> length >> height;
    EXPECT_NEAR(width, report["width_mm"].get<double>(), 1e-4);
    EXPECT_NEAR(length, report["length_mm"].get<double>(), 1e-4);
    EXPECT_NEAR(height, report["height_mm"].get<double>(), 1e-4);
}

TEST(CaptureCommand, TableNamesTheFolderAndTheReading) {
    const CaptureScene folder;
    folder.storePlane();
    const CommandRun run = folder.capture("--mode ground-growing");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    const std::string start = "Captured in log/dddd-dd/dddd-dd-dd-dd-dd-dd\n\n";
    const std::size_t named = std::string("Captured in ").size();
    ASSERT_EQ(withoutDigits(run.output.substr(0, start.size())), start) << run.text();
    EXPECT_TRUE(fs::is_directory(folder.path() / run.output.substr(named, start.size() - named - 2))) << run.text();
    EXPECT_NE(run.output.find("Measured (ground-growing)"), std::string::npos) << run.text();
}

TEST(CaptureCommand, LibraryStartsOfflineFromTheFolder) {
    const CaptureScene folder;
    const CommandRun run = folder.capture("--mode kiosk --empty-depth empty_depth.png --json");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    // The offline start takes a path relative to the working folder.
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    const Quorvel replayed(0.0F, 0.0F, 0.0F, 0.0F, 0, 0, true, CaptureScene::captureOf(run));
    fs::current_path(before);
    EXPECT_EQ(replayed.imageWidth, 640);
    EXPECT_EQ(replayed.imageHeight, 480);
    EXPECT_EQ(replayed.fx, 600.0F);
    EXPECT_EQ(replayed.cy, 240.0F);
    EXPECT_NEAR(replayed.refPlaneOffset, run.json()["plane"]["offset_mm"].get<double>(), 1e-3);
    expectSamePicture(replayed.colorImage, folder.file("color.png"));
    expectSamePicture(replayed.depthImage, folder.file("depth.png"));
}

TEST(CaptureCommand, ReplayGivesTheReadingAgain) {
    const CaptureScene folder;
    folder.storePlane();
    ASSERT_EQ(folder.capture("--mode kiosk").exitCode, 0);
    const CommandRun replay = folder.run("replay log --tolerance 0.001");
    EXPECT_EQ(replay.exitCode, 0) << replay.text();
    EXPECT_NE(replay.output.find("1 capture: 1 measured"), std::string::npos) << replay.text();
}

TEST(CaptureCommand, QuickCapturesGetFoldersOfTheirOwn) {
    const CaptureScene folder;
    folder.storePlane();
    std::string previous;
    for (int i = 0; i < 2; ++i) {
        const CommandRun run = folder.capture("--mode kiosk --json");
        ASSERT_EQ(run.exitCode, 0) << run.text();
        const std::string capture = CaptureScene::captureOf(run);
        EXPECT_LT(previous, capture) << "each capture has a later folder";
        previous = capture;
        folder.expectPictures(capture);
    }
}

TEST(CaptureCommand, FolderOfTheSecondIsLeftAloneAndALaterOneMade) {
    const CaptureScene folder;
    folder.storePlane();
    std::vector<fs::path> taken;
    const std::time_t now = std::time(nullptr);
    for (const std::time_t second : {now, now + 1}) {
        std::ostringstream name;
        name << std::put_time(std::localtime(&second), "%Y-%m/%Y-%m-%d-%H-%M-%S");
        taken.push_back(folder.path() / "log" / name.str());
        fs::create_directories(taken.back());
    }
    const CommandRun run = folder.capture("--mode kiosk --json");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    folder.expectPictures(CaptureScene::captureOf(run));
    for (const fs::path& other : taken) {
        EXPECT_TRUE(fs::is_empty(other)) << other;
    }
}

TEST(CaptureCommand, EmptySurfaceIsKeptWithTheReason) {
    const CaptureScene folder;
    folder.storePlane();
    const CommandRun run = folder.run("capture --camera camera.json --depth empty_depth.png --mode kiosk --json");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.json()["reason"]["code"], "nothing_high_enough") << run.text();
    const std::string capture = CaptureScene::captureOf(run);
    EXPECT_EQ(folder.readText(capture + "/res.txt"), "0.000000\n0.000000\n0.000000\n");
    EXPECT_TRUE(fs::exists(folder.path() / capture / "depth.tif"));
}

TEST(CaptureCommand, FrameWithoutAPlaneIsKept) {
    const CaptureScene folder;
    const CommandRun run = folder.capture("--mode ground-growing --min-height 20 --json");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.json()["status"], "no_plane") << run.text();
    const std::string capture = CaptureScene::captureOf(run);
    EXPECT_EQ(folder.readText(capture + "/para.txt"),
              "4\n20.000000\n320.000000\n240.000000\n600.000000\n600.000000\n0.001667\n0.001667\n"
              "0.000000\n0.000000\n0.000000\n0.000000\n640\n480\n");
    folder.expectPictures(capture);
}

TEST(CaptureCommand, FailedCalibrationKeepsTheFrameAndNotTheEmptyOne) {
    const CaptureScene folder;
    ASSERT_TRUE(cv::imwrite(folder.file("nothing.png"), cv::Mat::zeros(480, 640, CV_16UC1)));
    const CommandRun run = folder.capture("--mode kiosk --empty-depth nothing.png --json");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.json()["status"], "no_plane") << run.text();
    folder.expectPictures(CaptureScene::captureOf(run));
}

TEST(CaptureCommand, GroundTrackingWithoutAPlaneKeepsTheFrame) {
    const CaptureScene folder;
    ASSERT_TRUE(cv::imwrite(folder.file("depth.png"), cv::Mat::zeros(480, 640, CV_16UC1)));
    const CommandRun run = folder.capture("--mode ground-tracking --json");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.json()["status"], "no_plane") << run.text();
    folder.expectPictures(CaptureScene::captureOf(run));
}

TEST(CaptureCommand, KeepsOneFrame) {
    const SimulatedFolder folder("parcel");
    for (const char* batch : {"--depth depth.png depth.png", "--depth depth.png --depth depth.png",
                              "--depth depth.png --batch .", "--depth depth.png --tolerance 1,1,1"}) {
        const CommandRun run = folder.run(std::string("capture --camera camera.json --mode kiosk ") + batch);
        EXPECT_EQ(run.exitCode, 2) << run.text();
        EXPECT_EQ(run.errorLines(), 1) << run.text();
        EXPECT_FALSE(std::filesystem::exists(folder.path() / "log")) << run.text();
    }
}

TEST(CaptureCommand, LogThatIsAFileIsAnError) {
    const CaptureScene folder;
    folder.storePlane();
    folder.write("log", "a file where the folder belongs");
    const CommandRun run = folder.capture("--mode kiosk");
    EXPECT_EQ(run.exitCode, 2) << run.text();
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errorLines(), 1) << run.text();
    EXPECT_NE(run.errors.find("log: no capture folder can be made in it"), std::string::npos) << run.text();
    EXPECT_EQ(folder.read("log"), "a file where the folder belongs");
}

TEST(CaptureCommand, WrongInputLeavesNoFolder) {
    const CaptureScene folder;
    folder.storePlane();
    for (const char* options :
         {"--mode shop", "--mode kiosk --min-height 5", "--mode kiosk --overlay box.png",
          "--mode kiosk --stages pictures", "--mode kiosk --timing", "--mode kiosk --area 600,0,100,100"}) {
        const CommandRun run = folder.capture(options);
        EXPECT_EQ(run.exitCode, 2) << run.text();
        EXPECT_EQ(run.errorLines(), 1) << run.text();
    }
    EXPECT_FALSE(fs::exists(folder.path() / "log"));
}

}  // namespace
}  // namespace quorvel::command
