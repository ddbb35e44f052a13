// SPDX-License-Identifier: Apache-2.0
// Wrong input: exit code 2, nothing on standard output, and one line on standard error that says what and where.

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "simulated_folder.h"

namespace quorvel::command {
namespace {

class WrongInput : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<SimulatedFolder>("parcel");
        const std::string depth = folder_->read("depth.png");
        folder_->write("cut.png", depth.substr(0, depth.size() / 2));
        std::string broken = depth;
        broken[depth.size() / 2] = static_cast<char>(broken[depth.size() / 2] ^ 0x55);
        folder_->write("broken.png", broken);
        folder_->write("words.png", "words");
        folder_->write("words.json", "words");
        folder_->write("unknown.json", R"({"fx":600,"fy":600,"cx":320,"cy":240,"width":640,"height":480,"foo":1})");
        folder_->write("other.json", R"({"fx":600,"fy":600,"cx":160,"cy":120,"width":320,"height":240})");
        folder_->write("scene.bad.json", R"({"boxes": [{"length": -3, "width": 1, "height": 1}]})");
        cv::imwrite(folder_->file("eight.png"), cv::Mat(480, 640, CV_8UC1, cv::Scalar(90)));
        cv::imwrite(folder_->file("small.png"), cv::Mat(240, 320, CV_16UC1, cv::Scalar(900)));
        cv::imwrite(folder_->file("small_color.png"), cv::Mat(240, 320, CV_8UC3, cv::Scalar(90, 80, 70)));
    }
    static void TearDownTestSuite() { folder_.reset(); }

    static void expectRefusal(const std::string& arguments, const std::vector<std::string>& words) {
        quorvel::command::expectRefusal(folder_->run(arguments), words);
    }

    static void expectMeasureRefusal(const std::string& options, const std::vector<std::string>& words) {
        expectRefusal("measure --camera camera.json --depth depth.png " + options, words);
    }

    static std::unique_ptr<SimulatedFolder> folder_;
};

std::unique_ptr<SimulatedFolder> WrongInput::folder_;

TEST_F(WrongInput, CommandLine) {
    expectRefusal("", {"subcommand is required", "--help"});
    expectRefusal("weigh", {"--help"});
    expectRefusal("measure --camera camera.json --mode kiosk", {"--depth is required", "quorvel measure --help"});
    expectRefusal("measure --camera camera.json --depth depth.png", {"--mode is required"});
    expectMeasureRefusal("--mode kiosk --colour x", {"--colour"});
    expectMeasureRefusal("--mode kiosk --filter-weight much", {"--filter-weight", "much"});
    expectMeasureRefusal("--mode kiosk --side-band 1.5", {"--side-band", "1.5"});
    expectMeasureRefusal("--mode", {"--mode"});
    expectMeasureRefusal("--mode kiosk simulate", {"simulate"});
}

TEST_F(WrongInput, Folder) {
    const CommandRun run = runCommand("-C no-such-folder simulate --list");
    EXPECT_EQ(run.exitCode, 2) << run.text();
    EXPECT_EQ(run.errors, "quorvel: -C no-such-folder: there is no such folder; check the path\n");
}

TEST_F(WrongInput, Mode) {
    expectMeasureRefusal("--mode shop", {"no mode \"shop\"", "kiosk, ground-tracking or ground-growing"});
    expectMeasureRefusal("--mode kiosk-low-object", {"no mode"});
    expectRefusal("calibrate --camera camera.json --depth empty_depth.png --mode ground-tracking",
                  {"needs no calibration"});
}

TEST_F(WrongInput, Camera) {
    const std::string rest = " --depth depth.png --mode kiosk";
    expectRefusal("measure" + rest, {"no camera is given", "--camera FILE", "--intrinsics"});
    expectRefusal("measure --camera camera.json --intrinsics 1,1,1,1" + rest, {"both give the camera"});
    expectRefusal("measure --camera nothing.json" + rest, {"nothing.json", "no such readable file"});
    expectRefusal("measure --camera words.json" + rest, {"words.json", "is not a camera file"});
    expectRefusal("measure --camera unknown.json" + rest, {"unknown.json", "unknown key \"foo\""});
    expectRefusal("measure --camera other.json" + rest, {"depth.png", "640 x 480", "320 x 240"});
    expectRefusal("measure --intrinsics 600,600,320" + rest, {"--intrinsics", "has 3 numbers"});
    expectRefusal("measure --intrinsics 600,x,320,240" + rest, {"--intrinsics", "\"x\" is not a number"});
    expectRefusal("measure --intrinsics 0,600,320,240" + rest, {"--intrinsics", "focal lengths"});
}

TEST_F(WrongInput, Images) {
    const std::string start = "measure --camera camera.json --mode kiosk ";
    expectRefusal(start + "--depth nothing.png", {"nothing.png", "no such readable file"});
    expectRefusal(start + "--depth .", {"is a folder"});
    expectRefusal(start + "--depth words.png", {"words.png", "cannot be read as a picture"});
    expectRefusal(start + "--depth cut.png", {"cut.png", "PNG is damaged", "ends early"});
    expectRefusal(start + "--depth broken.png", {"broken.png", "PNG is damaged", "fails its checksum"});
    expectRefusal(start + "--depth eight.png", {"eight.png", "8-bit values in 1 channel"});
    expectRefusal(start + "--depth color.png", {"color.png", "8-bit values in 3 channels"});
    expectRefusal(start + "--depth small.png", {"small.png", "320 x 240", "640 x 480"});
    expectRefusal(start + "--depth depth.png --color nothing.png", {"nothing.png", "no such readable file"});
    expectRefusal(start + "--depth depth.png --color small_color.png", {"small_color.png", "320 x 240", "640 x 480"});
    expectRefusal(start + "--depth depth.png --empty-depth small.png", {"small.png", "320 x 240"});
    expectRefusal(start + "--depth depth.png --empty-depth nothing.png", {"nothing.png"});
}

TEST_F(WrongInput, DepthScale) {
    for (const char* scale : {"0", "-1", "nan", "inf"}) {
        expectMeasureRefusal(std::string("--mode kiosk --depth-scale ") + scale, {"--depth-scale"});
    }
    expectMeasureRefusal("--mode kiosk --depth-scale 0.001", {"depth.png", "--depth-scale", "nearer than any"});
}

TEST_F(WrongInput, Areas) {
    expectMeasureRefusal("--mode kiosk --area 0", {"--area", "above 0 and at most 1"});
    expectMeasureRefusal("--mode kiosk --area 1,2,3", {"--area", "has 3 numbers"});
    expectMeasureRefusal("--mode kiosk --area 600,0,100,100", {"--area", "leaves the picture of 640 x 480"});
    expectMeasureRefusal("--mode kiosk --empty-depth empty_depth.png --calibration-area 2",
                         {"--calibration-area", "at most 1"});
}

TEST_F(WrongInput, OptionsWithoutEffect) {
    expectMeasureRefusal("--mode kiosk --min-height 5", {"--min-height", "by the camera distance"});
    expectMeasureRefusal("--mode ground-growing --side-band 20", {"--side-band", "no side band"});
    expectMeasureRefusal("--mode ground-tracking --empty-depth empty_depth.png", {"--empty-depth", "every frame"});
    expectMeasureRefusal("--mode kiosk --empty-color empty_color.png", {"--empty-color", "--empty-depth"});
    expectMeasureRefusal("--mode kiosk --offset 3", {"--offset", "--empty-depth"});
    expectMeasureRefusal("--mode kiosk --calibration-area 0.5", {"--calibration-area", "--empty-depth"});
    expectMeasureRefusal("--mode ground-tracking --min-height 0", {"--min-height", "above 0"});
    expectMeasureRefusal("--mode ground-tracking --filter-weight nan", {"--filter-weight", "finite"});
    expectMeasureRefusal("--mode kiosk --side-band -1", {"--side-band", "0 mm or more"});
    expectMeasureRefusal("--mode kiosk --empty-depth empty_depth.png --offset inf", {"--offset", "finite"});
}

TEST_F(WrongInput, Outputs) {
    const std::string measured = "--mode kiosk --empty-depth empty_depth.png ";
    expectMeasureRefusal(measured + "--overlay no/such/folder/o.png", {"no/such/folder/o.png", "cannot be written"});
    expectMeasureRefusal(measured + "--overlay overlay.docx", {"overlay.docx", ".png"});
    expectMeasureRefusal(measured + "--overlay overlay", {"overlay", ".png"});
    expectMeasureRefusal(measured + "--stages depth.png", {"depth.png", "folder cannot be made"});
    expectRefusal("simulate --preset parcel --out depth.png", {"depth.png", "folder cannot be made"});
}

TEST_F(WrongInput, Simulate) {
    expectRefusal("simulate --out x", {"no scene is given", "--preset", "--scene"});
    expectRefusal("simulate --preset parcel", {"--out DIR"});
    expectRefusal("simulate --preset parcel --scene scene.json --out x", {"both give a scene"});
    expectRefusal("simulate --preset castle --out x", {"castle", "parcel", "clutter"});
    expectRefusal("simulate --scene nothing.json --out x", {"nothing.json"});
    expectRefusal("simulate --scene scene.bad.json --out x", {"scene.bad.json", "length"});
    expectRefusal("simulate --preset parcel --out x --seed -1", {"--seed"});
    expectRefusal("simulate --preset parcel --out x --seed many", {"--seed", "many"});
    expectRefusal("simulate --preset parcel --out x --frames 0", {"--frames", "1 frame or more"});
    expectRefusal("simulate --preset parcel --out x --frames -1", {"--frames"});
    expectRefusal("simulate --preset parcel --out x --frame 4294967290 --frames 7", {"--frames", "4294967295"});
    EXPECT_FALSE(std::filesystem::exists(folder_->path() / "x")) << "a refused run leaves nothing";
}

}  // namespace
}  // namespace quorvel::command
