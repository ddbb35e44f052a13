// SPDX-License-Identifier: Apache-2.0
// Text files are written with the platform's line ends, and read with either: a calibration, a capture or a parameter
// file may come from a machine of the other kind.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "support/captured_output.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

#ifdef _WIN32
const char* const kLineEnd = "\r\n";
#else
const char* const kLineEnd = "\n";
#endif

std::string withLineEnds(const std::string& text, const std::string& lineEnd) {
    std::string result;
    for (const char c : text) {
        result += c == '\n' ? lineEnd : std::string(1, c);
    }
    return result;
}

std::string bytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path << " cannot be opened";
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Quorvel makeRuler() {
    return {600.0F, 600.0F, 320.0F, 240.0F, 640, 480, false, ""};
}

/// The folder of the one capture below ./log.
std::filesystem::path onlyCapture() {
    for (const auto& entry : std::filesystem::recursive_directory_iterator("log")) {
        if (entry.path().filename() == "para.txt") {
            return entry.path().parent_path();
        }
    }
    return {};
}

class LineEnds : public ::testing::TestWithParam<const char*> {
protected:
    void put(const std::string& path, const std::string& text) const {
        std::ofstream(path, std::ios::binary) << withLineEnds(text, GetParam());
    }

    WorkingDirectory directory_;
};

INSTANTIATE_TEST_SUITE_P(Both, LineEnds, ::testing::Values("\n", "\r\n"), [](const auto& instance) {
    return std::string(instance.param) == "\n" ? "Linux" : "Windows";
});

TEST_P(LineEnds, OfACalibrationFileMayBeEither) {
    std::filesystem::create_directory("param");
    put("param/cal.txt", "0.010000 -0.020000 0.999750 712.345673\n");
    Quorvel ruler = makeRuler();
    ruler.setProductType(KIOSK);
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.01F, -0.02F, 0.99975F));
    EXPECT_EQ(ruler.refPlaneOffset, 712.345673F);
}

TEST_P(LineEnds, OfACaptureMayBeEither) {
    std::filesystem::create_directory("capture");
    put("capture/para.txt",
        "4\n10.500000\n319.250000\n239.750000\n610.500000\n611.500000\n0.001638\n0.001635\n"
        "0.010000\n-0.020000\n0.999750\n712.345673\n64\n48\n");
    put("capture/res.txt", "0.000000\n0.000000\n0.000000\n");
    cv::imwrite("capture/color.png", cv::Mat::zeros(48, 64, CV_8UC3));
    cv::imwrite("capture/depth.tif", cv::Mat(48, 64, CV_16UC1, cv::Scalar(700)));
    const CapturedOutput silence;
    const Quorvel ruler(0.0F, 0.0F, 0.0F, 0.0F, 0, 0, true, "capture");
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_EQ(ruler.refPlaneOffset, 712.345673F);
    EXPECT_EQ(ruler.imageWidth, 64);
    EXPECT_EQ(ruler.imageHeight, 48);
    EXPECT_EQ(ruler.depthImage.at<ushort>(47, 63), 700);
}

TEST_P(LineEnds, OfAParameterFileMayBeEither) {
    put("a.yml",
        "%YAML:1.0\n---\nCalibration_Area: [ 1, 2, 30, 40 ]\nDetect_Area: [ 5, 6, 70, 80 ]\nGround_Weight: 0.25\n");
    put("a.json",
        "{\n    \"Calibration_Area\": [ 1, 2, 30, 40 ],\n    \"Detect_Area\": [ 5, 6, 70, 80 ],\n"
        "    \"Ground_Weight\": 0.25\n}\n");
    put("a.xml",
        "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Calibration_Area>\n  1 2 30 40</Calibration_Area>\n"
        "<Detect_Area>\n  5 6 70 80</Detect_Area>\n<Ground_Weight>0.25</Ground_Weight>\n</opencv_storage>\n");
    for (const char* path : {"a.yml", "a.json", "a.xml"}) {
        Quorvel ruler = makeRuler();
        cv::Rect calibration;
        cv::Rect detection;
        ASSERT_TRUE(ruler.loadRulerParam(path, calibration, detection)) << path;
        EXPECT_EQ(calibration, cv::Rect(1, 2, 30, 40)) << path;
        EXPECT_EQ(detection, cv::Rect(5, 6, 70, 80)) << path;
        EXPECT_EQ(ruler.filterWeight, 0.25F) << path;
    }
}

TEST(PlatformLineEnds, AreWrittenIntoEveryTextFile) {
    const WorkingDirectory directory;
    Quorvel ruler = makeRuler();
    ruler.productType = GROUND_TRACKING;
    ASSERT_TRUE(ruler.getCameraFrame(cv::Mat::zeros(480, 640, CV_8UC3), cv::Mat(480, 640, CV_16UC1, cv::Scalar(1000))));
    ruler.refPlaneNormal = cv::Vec3f(0.0F, 0.0F, 1.0F);
    ruler.refPlaneOffset = 1000.0F;
    float t = 0.0F;
    ruler.calibRef(t, 0.0F);
    ruler.saveOfflineData();
    EXPECT_EQ(bytesOf("param/cal.txt"), withLineEnds("0.000000 0.000000 1.000000 1000.000000\n", kLineEnd));
    EXPECT_EQ(bytesOf(onlyCapture() / "res.txt"), withLineEnds("0.000000\n0.000000\n0.000000\n", kLineEnd));
    EXPECT_EQ(bytesOf(onlyCapture() / "para.txt"),
              withLineEnds("4\n10.000000\n320.000000\n240.000000\n600.000000\n600.000000\n0.001667\n0.001667\n"
                           "0.000000\n0.000000\n1.000000\n1000.000000\n640\n480\n",
                           kLineEnd));
}

}  // namespace

}  // namespace quorvel::test
