// SPDX-License-Identifier: Apache-2.0
#include "kit/input/capture_files.h"

#include <fstream>
#include <functional>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "capture_folder.h"
#include "command_run.h"
#include "kit/input/input_error.h"
#include "simulated_folder.h"
#include "support/same_bits.h"

namespace quorvel::command {

using namespace kit;
namespace {

namespace fs = std::filesystem;

class CaptureFiles : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<TemporaryFolder>();
        ruler_ = std::make_unique<Quorvel>(
            captureScene(boxScene(20.0, -10.0, 200.0, 120.0, 90.0), {}, folder_->path() / "good"));
    }
    static void TearDownTestSuite() {
        ruler_.reset();
        folder_.reset();
    }

    /// A copy of the good capture that a test may spoil.
    static fs::path copyOfGood(const std::string& name) {
        const fs::path copy = folder_->path() / name;
        fs::remove_all(copy);
        fs::copy(folder_->path() / "good", copy, fs::copy_options::recursive);
        return copy;
    }

    /// What reading a spoiled copy says.
    static std::string problem(const std::function<void(const fs::path&)>& spoil) {
        const fs::path copy = copyOfGood("spoiled");
        spoil(copy);
        try {
            readCapture(copy);
        } catch (const InputError& error) {
            return error.what();
        }
        return "nothing was refused";
    }

    static void put(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }

    static std::string parameters(const std::string& line, int number) {
        std::string text;
        std::ifstream file(folder_->path() / "good" / "para.txt");
        int at = 0;
        for (std::string kept; std::getline(file, kept);) {
            text += (++at == number ? line : kept) + "\n";
        }
        return text;
    }

    static std::unique_ptr<TemporaryFolder> folder_;
    static std::unique_ptr<Quorvel> ruler_;
};

std::unique_ptr<TemporaryFolder> CaptureFiles::folder_;
std::unique_ptr<Quorvel> CaptureFiles::ruler_;

TEST_F(CaptureFiles, GivesBackWhatTheRulerHad) {
    const Capture capture = readCapture(folder_->path() / "good");
    const Quorvel& ruler = *ruler_;
    EXPECT_EQ(capture.parameters.downScale, 4);
    EXPECT_EQ(capture.parameters.minObjectHeight, ruler.minObjectHeight);
    EXPECT_EQ(capture.parameters.fx, ruler.fx);
    EXPECT_EQ(capture.parameters.fy, ruler.fy);
    EXPECT_EQ(capture.parameters.cx, ruler.cx);
    EXPECT_EQ(capture.parameters.cy, ruler.cy);
    EXPECT_NEAR(capture.parameters.invFx, ruler.invFx, 0.5e-6);
    EXPECT_NEAR(capture.parameters.invFy, ruler.invFy, 0.5e-6);
    EXPECT_EQ(capture.parameters.plane.normal, ruler.refPlaneNormal);
    EXPECT_EQ(capture.parameters.plane.offset, ruler.refPlaneOffset);
    EXPECT_EQ(capture.parameters.imageWidth, ruler.imageWidth);
    EXPECT_EQ(capture.parameters.imageHeight, ruler.imageHeight);
    EXPECT_EQ(capture.recorded.length, ruler.result.length);
    EXPECT_EQ(capture.recorded.width, ruler.result.width);
    EXPECT_EQ(capture.recorded.height, ruler.result.height);
    ASSERT_EQ(capture.recorded.corners.size(), 8U);
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_NEAR(capture.recorded.corners[i].x, ruler.result.corners[i].x, 1e-4) << "corner " << i;
        EXPECT_NEAR(capture.recorded.corners[i].y, ruler.result.corners[i].y, 1e-4) << "corner " << i;
    }
    ASSERT_TRUE(capture.frame.has_value());
    EXPECT_TRUE(test::sameBits(capture.frame->color, ruler.colorImage));
    EXPECT_TRUE(test::sameBits(capture.frame->depth, ruler.depthImage));
}

TEST_F(CaptureFiles, ACaptureBeforeAnyFrameHasNoFrame) {
    Quorvel ruler(600.0F, 600.0F, 320.0F, 240.0F, 640, 480, false, "");
    captureTo(ruler, folder_->path() / "fresh");
    const Capture capture = readCapture(folder_->path() / "fresh");
    EXPECT_FALSE(capture.frame.has_value());
    EXPECT_TRUE(capture.recorded.corners.empty());
}

TEST_F(CaptureFiles, NotANumberIsReadAsIt) {
    const fs::path copy = copyOfGood("nan");
    put(copy / "para.txt", parameters("nan", 12));
    EXPECT_TRUE(std::isnan(readCapture(copy).parameters.plane.offset));
}

TEST_F(CaptureFiles, LinesMayEndAsOnTheOtherPlatform) {
    const fs::path copy = copyOfGood("crlf");
    put(copy / "res.txt", "10.5\r\n20.5\r\n30.5\r\n");
    EXPECT_EQ(readCapture(copy).recorded.length, 20.5F);
}

TEST_F(CaptureFiles, EveryMissingFileIsNamed) {
    for (const char* name : {"para.txt", "res.txt", "color.png", "depth.tif"}) {
        const std::string text = problem([&](const fs::path& copy) { fs::remove(copy / name); });
        EXPECT_NE(text.find(name), std::string::npos) << text;
        EXPECT_NE(text.find("no such readable file"), std::string::npos) << text;
    }
}

TEST_F(CaptureFiles, AFolderInAFilesPlaceIsNoFile) {
    for (const char* name : {"para.txt", "res.txt", "color.png", "depth.tif"}) {
        const std::string text = problem([&](const fs::path& copy) {
            fs::remove(copy / name);
            fs::create_directory(copy / name);
        });
        EXPECT_NE(text.find(name), std::string::npos) << text;
    }
}

TEST_F(CaptureFiles, AShortParaTxtNamesWhatIsMissing) {
    const std::string text = problem([](const fs::path& copy) { put(copy / "para.txt", "4\n10.0\n"); });
    EXPECT_NE(text.find("para.txt: the principal point's column is missing"), std::string::npos) << text;
}

TEST_F(CaptureFiles, AWordAmongTheNumbersIsNamed) {
    std::string text = problem([](const fs::path& copy) { put(copy / "para.txt", parameters("wide", 13)); });
    EXPECT_NE(text.find("para.txt: the frame width is \"wide\""), std::string::npos) << text;
    text = problem([](const fs::path& copy) { put(copy / "para.txt", parameters("610,5", 5)); });
    EXPECT_NE(text.find("para.txt: the focal length along x is \"610,5\""), std::string::npos) << text;
}

TEST_F(CaptureFiles, AFrameThatCannotBeScaledDownIsRefused) {
    for (const auto& [line, number] :
         {std::pair("0", 1), std::pair("-4", 1), std::pair("0", 13), std::pair("3", 14), std::pair("-640", 13)}) {
        const std::string text = problem(
            [&, text = line, at = number](const fs::path& copy) { put(copy / "para.txt", parameters(text, at)); });
        EXPECT_NE(text.find("cannot be scaled down"), std::string::npos) << text;
    }
}

TEST_F(CaptureFiles, ABoxHasEightCornersOrNone) {
    const std::string sizes = "1.0\n2.0\n3.0\n";
    std::string seven;
    for (int i = 0; i < 7; ++i) {
        seven += "4.0 5.0\n";
    }
    const std::string nine = seven + "4.0 5.0\n4.0 5.0\n";
    for (const std::string& corners : {seven, nine}) {
        const std::string text =
            problem([&](const fs::path& copy) { put(copy / "res.txt", std::string(sizes).append(corners)); });
        EXPECT_NE(text.find("eight corners or none"), std::string::npos) << text;
    }
    const std::string half = problem([&](const fs::path& copy) { put(copy / "res.txt", sizes + seven + "4.0\n"); });
    EXPECT_NE(half.find("corner's row is missing"), std::string::npos) << half;
    const std::string empty = problem([](const fs::path& copy) { put(copy / "res.txt", ""); });
    EXPECT_NE(empty.find("the width is missing"), std::string::npos) << empty;
}

TEST_F(CaptureFiles, ImagesOfAnotherSizeBelongToAnotherCapture) {
    const std::string text = problem(
        [](const fs::path& copy) { cv::imwrite((copy / "depth.tif").string(), cv::Mat::zeros(240, 320, CV_16UC1)); });
    EXPECT_NE(text.find("depth.tif 320 x 240"), std::string::npos) << text;
    EXPECT_NE(text.find("different captures"), std::string::npos) << text;
}

TEST_F(CaptureFiles, DepthOfEightBitsIsNoDepth) {
    const std::string text = problem(
        [](const fs::path& copy) { cv::imwrite((copy / "depth.tif").string(), cv::Mat::zeros(480, 640, CV_8UC1)); });
    EXPECT_NE(text.find("depth.tif: holds 8-bit values"), std::string::npos) << text;
}

TEST_F(CaptureFiles, ACutImageIsRefused) {
    for (const char* name : {"color.png", "depth.tif"}) {
        const std::string text = problem([&](const fs::path& copy) { fs::resize_file(copy / name, 100); });
        EXPECT_NE(text.find(name), std::string::npos) << text;
    }
}

}  // namespace
}  // namespace quorvel::command
