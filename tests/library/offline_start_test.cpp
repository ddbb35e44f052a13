// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/plain/object_chain.h"
#include "library/same_result.h"
#include "support/captured_output.h"
#include "support/same_bits.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

/// Writes captures into a fresh working directory and starts rulers on them.
class OfflineStart : public ::testing::Test {
protected:
    /// The values of a para.txt, line by line.
    static std::vector<std::string> parameters() {
        return {"4",        "7.250000", "32.000000", "24.000000", "60.000000",   "61.000000", "0.016667",
                "0.016393", "0.000000", "0.000000",  "1.000000",  "1000.000000", "64",        "48"};
    }

    void writeParameters(const std::vector<std::string>& lines) const {
        std::ofstream file(folder_ + "/para.txt");
        for (const std::string& line : lines) {
            file << line << "\n";
        }
    }

    void writeImages() const {
        cv::imwrite(folder_ + "/color.png", color_);
        cv::imwrite(folder_ + "/depth.tif", depth_);
    }

    void writeCapture() const {
        writeParameters(parameters());
        writeImages();
    }

    /// Camera arguments that differ from the capture's in every value.
    Quorvel start() const { return {1, 2, 3, 4, 640, 480, true, folder_}; }

    /// Checks a normal start with the arguments of start(), in offline mode.
    static void expectNormalStart(Quorvel& ruler) {
        EXPECT_TRUE(ruler.offlineMode);
        EXPECT_EQ(ruler.fx, 1.0F);
        EXPECT_EQ(ruler.fy, 2.0F);
        EXPECT_EQ(ruler.cx, 3.0F);
        EXPECT_EQ(ruler.cy, 4.0F);
        EXPECT_EQ(ruler.invFy, 0.5F);
        EXPECT_EQ(ruler.fySmall, 0.5F);
        EXPECT_EQ(ruler.imageWidth, 640);
        EXPECT_EQ(ruler.imageHeight, 480);
        EXPECT_EQ(ruler.downScale, 4);
        EXPECT_EQ(ruler.minObjectHeight, 10.0F);
        EXPECT_EQ(ruler.reservedValue, 50);
        EXPECT_EQ(ruler.effectiveRegion, cv::Rect(270, 190, 100, 100));
        EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0, 0, 0));
        EXPECT_EQ(ruler.refPlaneOffset, 0.0F);
        EXPECT_EQ(ruler.minObjectPixels, 0);
        EXPECT_FALSE(ruler.calibStatus);
        EXPECT_TRUE(ruler.colorImage.empty());
        EXPECT_TRUE(ruler.depthImage.empty());
        EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(480, 640, CV_8UC3, cv::Scalar::all(1)),
                                          cv::Mat(480, 640, CV_16UC1, cv::Scalar(1))))
            << "the host must see the failure";
        EXPECT_EQ(ruler.measureOnce(), 1);
    }

    const std::string folder_ = "capture";
    const cv::Mat color_ = cv::Mat(48, 64, CV_8UC3, cv::Scalar(10, 20, 30));
    cv::Mat depth_;

private:
    void SetUp() override {
        std::filesystem::create_directory(folder_);
        Draws draws(1);
        depth_ = blockScene(200).depth(draws);
    }

    const WorkingDirectory directory_;
};

TEST_F(OfflineStart, TakesEveryValueFromTheCapture) {
    writeCapture();
    const CapturedOutput output;
    const Quorvel ruler = start();
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(ruler.downScale, 4);
    EXPECT_EQ(ruler.cx, 32.0F);
    EXPECT_EQ(ruler.cy, 24.0F);
    EXPECT_EQ(ruler.fx, 60.0F);
    EXPECT_EQ(ruler.fy, 61.0F);
    EXPECT_EQ(ruler.invFx, 0.016667F) << "as printed, not 1 / 60";
    EXPECT_EQ(ruler.invFy, 0.016393F);
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0, 0, 1));
    EXPECT_EQ(ruler.refPlaneOffset, 1000.0F);
    EXPECT_EQ(ruler.imageWidth, 64);
    EXPECT_EQ(ruler.imageHeight, 48);
    EXPECT_EQ(ruler.minObjectHeight, 5.0F) << "chosen by the measurement at the start: t = 1000 in KIOSK";
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_TRUE(ruler.offlineMode);
    EXPECT_EQ(ruler.offlineDir, folder_);
}

TEST_F(OfflineStart, LeavesTheRestAtZero) {
    writeCapture();
    const Quorvel ruler = start();
    for (const float value : {ruler.fxSmall, ruler.fySmall, ruler.cxSmall, ruler.cySmall, ruler.invFxSmall,
                              ruler.invFySmall, ruler.cameraHeight, ruler.filterWeight, ruler.cameraType}) {
        EXPECT_EQ(value, 0.0F);
    }
    EXPECT_EQ(ruler.calibrationRoI, cv::Rect());
    EXPECT_EQ(ruler.effectiveRegion, cv::Rect());
    EXPECT_EQ(ruler.reservedValue, 0);
    EXPECT_EQ(ruler.productType, KIOSK);
    EXPECT_EQ(ruler.minObjectPixels, 0) << "(50 / t * 0)^2";
    EXPECT_FALSE(ruler.cameraTypeSet);
    EXPECT_TRUE(ruler.auxImage.empty());
}

TEST_F(OfflineStart, LoadsAndDerivesTheImages) {
    writeCapture();
    const Quorvel ruler = start();
    EXPECT_TRUE(sameBits(ruler.colorImage, color_));
    EXPECT_TRUE(sameBits(ruler.depthImage, depth_));
    EXPECT_EQ(ruler.colorSmall.size(), cv::Size(16, 12));
    EXPECT_EQ(ruler.depthSmall.size(), cv::Size(16, 12));
    EXPECT_EQ(ruler.pointCloud.size(), cv::Size(64, 48));
    ASSERT_EQ(ruler.pointCloudSmall.size(), cv::Size(16, 12));
    // Without small intrinsics the small points lie on the optical axis.
    EXPECT_EQ(ruler.pointCloudSmall.at<cv::Vec3f>(11, 15), cv::Vec3f(0, 0, 1000));
    EXPECT_EQ(ruler.pointCloudSmall.at<cv::Vec3f>(6, 8), cv::Vec3f(0, 0, 800));
    EXPECT_TRUE(sameBits(ruler.pointCloudSmallCopy, ruler.pointCloudSmall));
}

TEST_F(OfflineStart, MeasuresOnceAsADriverByHandDoes) {
    writeCapture();
    const Quorvel ruler = start();
    Quorvel byHand(1, 2, 3, 4, 5, 6, true, "missing");
    byHand.colorImage = color_;
    byHand.depthImage = depth_;
    byHand.downScale = 4;
    byHand.cx = 32;
    byHand.cy = 24;
    byHand.fx = 60;
    byHand.fy = 61;
    byHand.invFx = 0.016667F;
    byHand.invFy = 0.016393F;
    byHand.imageWidth = 64;
    byHand.imageHeight = 48;
    setPlane(byHand, {0, 0, 1}, 1000, 0);
    ASSERT_TRUE(byHand.getCameraFrame(cv::Mat(), cv::Mat()));
    EXPECT_EQ(plain::measureOnce(byHand), 0);
    EXPECT_TRUE(sameResult(ruler.result, byHand.result));
    EXPECT_TRUE(isEmptyResult(ruler.result)) << "no box meets an empty detection area";
    EXPECT_TRUE(sameBits(ruler.depthSmall, byHand.depthSmall));
    EXPECT_TRUE(sameBits(ruler.pointCloud, byHand.pointCloud));
    EXPECT_EQ(cv::countNonZero(ruler.depthSmall), 24) << "only the block's 6 x 4 small pixels are left";
}

TEST_F(OfflineStart, MeasuresAgainOnceItHasADetectionArea) {
    writeCapture();
    Quorvel ruler = start();
    ruler.setEffectiveRegionInArea(cv::Rect(0, 0, 64, 48));
    EXPECT_TRUE(ruler.getCameraFrame(cv::Mat(), cv::Mat())) << "the object's own images count";
    EXPECT_EQ(ruler.measureOnce(), 0);
    EXPECT_TRUE(ruler.result.inView);
    EXPECT_TRUE(ruler.result.onTarget);
    EXPECT_NEAR(ruler.result.height, 194.4, 1e-3);
    EXPECT_TRUE(ruler.getCameraFrame(cv::Mat(), cv::Mat(), cv::Mat()));
}

TEST_F(OfflineStart, FindsACaptureInANestedFolder) {
    writeCapture();
    std::filesystem::create_directories("log/2026-11");
    std::filesystem::rename(folder_, "log/2026-11/2026-11-16-02-31-32");
    const Quorvel ruler(1, 2, 3, 4, 5, 6, true, "log/2026-11/2026-11-16-02-31-32");
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_EQ(ruler.fx, 60.0F);
}

TEST_F(OfflineStart, LooksForTheFilesBelowTheWorkingDirectory) {
    // The folder's existence is asked for as given, the files are opened below "./": an absolute name is a folder
    // without files.
    writeCapture();
    const std::string absolute = std::filesystem::absolute(folder_).string();
    Quorvel ruler(1, 2, 3, 4, 640, 480, true, absolute);
    expectNormalStart(ruler);
}

TEST_F(OfflineStart, StartsNormallyWithoutParameters) {
    writeImages();
    Quorvel ruler = start();
    expectNormalStart(ruler);
}

TEST_F(OfflineStart, StartsNormallyInAnEmptyFolderAndSaysSoOnTheFirstFrame) {
    Quorvel ruler = start();
    ruler.setDebugMode(true);
    const CapturedOutput output;
    EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(480, 640, CV_8UC3), cv::Mat(480, 640, CV_16UC1)));
    EXPECT_EQ(output.text(), "Image data size is empty.\n");
}

TEST_F(OfflineStart, StartsNormallyWithShortParameters) {
    writeImages();
    for (const std::size_t count : {0U, 1U, 7U, 8U, 11U, 13U}) {
        std::vector<std::string> lines = parameters();
        lines.resize(count);
        writeParameters(lines);
        Quorvel ruler = start();
        expectNormalStart(ruler);
        EXPECT_FALSE(HasFailure()) << count << " of 14 values";
    }
}

TEST_F(OfflineStart, StartsNormallyWithGarbledParameters) {
    writeImages();
    for (const std::size_t line : {0U, 1U, 5U, 11U, 13U}) {
        std::vector<std::string> lines = parameters();
        lines[line] = "x7";
        writeParameters(lines);
        Quorvel ruler = start();
        expectNormalStart(ruler);
        EXPECT_FALSE(HasFailure()) << "line " << line + 1;
    }
}

TEST_F(OfflineStart, StartsNormallyWhenTheParametersAreAFolder) {
    std::filesystem::create_directory(folder_ + "/para.txt");
    Quorvel ruler = start();
    expectNormalStart(ruler);
}

TEST_F(OfflineStart, RefusesFramesWithAnUnusableDownScale) {
    for (const std::string downScale : {"0", "-4", "49"}) {
        std::vector<std::string> lines = parameters();
        lines[0] = downScale;
        writeParameters(lines);
        writeImages();
        const CapturedOutput output;
        Quorvel ruler = start();
        EXPECT_EQ(output.text(), "") << downScale;
        EXPECT_EQ(ruler.downScale, std::stoi(downScale));
        EXPECT_TRUE(ruler.calibStatus) << "the capture itself was read";
        EXPECT_TRUE(ruler.pointCloud.empty()) << downScale;
        EXPECT_TRUE(sameBits(ruler.depthSmall, depth_)) << "the full-size clone stays";
        EXPECT_TRUE(isEmptyResult(ruler.result)) << downScale;
        ruler.setDebugMode(true);
        EXPECT_FALSE(ruler.getCameraFrame(color_, depth_)) << downScale;
        EXPECT_EQ(output.text().rfind("Frame refused: ", 0), 0U) << output.text();
        EXPECT_EQ(ruler.measureOnce(), 1) << downScale;
    }
}

TEST_F(OfflineStart, TakesOtherDownScales) {
    std::vector<std::string> lines = parameters();
    lines[0] = "2";
    writeParameters(lines);
    writeImages();
    const Quorvel ruler = start();
    EXPECT_EQ(ruler.depthSmall.size(), cv::Size(32, 24));
    EXPECT_EQ(ruler.fxSmall, 0.0F);
}

TEST_F(OfflineStart, EndsWithoutAMeasurementWhenAnImageIsMissing) {
    for (const std::string missing : {"color.png", "depth.tif"}) {
        writeCapture();
        std::filesystem::remove(folder_ + "/" + missing);
        Quorvel ruler = start();
        EXPECT_TRUE(ruler.calibStatus) << missing;
        EXPECT_EQ(ruler.fx, 60.0F) << missing;
        EXPECT_EQ(ruler.colorImage.empty(), missing == "color.png");
        EXPECT_EQ(ruler.depthImage.empty(), missing == "depth.tif");
        EXPECT_TRUE(ruler.pointCloud.empty()) << missing;
        EXPECT_TRUE(isEmptyResult(ruler.result)) << missing;
        EXPECT_FALSE(ruler.getCameraFrame(color_, depth_)) << missing;
        EXPECT_EQ(ruler.measureOnce(), 1) << missing;
    }
}

TEST_F(OfflineStart, RefusesADepthImageOfEightBits) {
    writeCapture();
    cv::Mat coarse;
    depth_.convertTo(coarse, CV_8U);
    cv::imwrite(folder_ + "/depth.tif", coarse);
    Quorvel ruler = start();
    EXPECT_EQ(ruler.depthImage.type(), CV_8UC1) << "read unchanged";
    EXPECT_TRUE(ruler.pointCloud.empty());
    EXPECT_TRUE(isEmptyResult(ruler.result));
    EXPECT_FALSE(ruler.getCameraFrame(color_, depth_));
    EXPECT_EQ(ruler.measureOnce(), 1);
}

TEST_F(OfflineStart, RefusesADepthImageOfThreeChannels) {
    writeCapture();
    cv::imwrite(folder_ + "/depth.tif", cv::Mat(48, 64, CV_16UC3, cv::Scalar::all(900)));
    Quorvel ruler = start();
    EXPECT_EQ(ruler.depthImage.type(), CV_16UC3) << "read unchanged";
    EXPECT_TRUE(ruler.pointCloud.empty());
    EXPECT_EQ(ruler.measureOnce(), 1);
}

TEST_F(OfflineStart, RefusesImagesOfAnotherSizeThanTheParameters) {
    writeCapture();
    cv::imwrite(folder_ + "/color.png", color_.colRange(0, 60));
    const Quorvel ruler = start();
    EXPECT_TRUE(ruler.pointCloud.empty());
    EXPECT_TRUE(isEmptyResult(ruler.result));
}

TEST_F(OfflineStart, ReadsAGreyPictureAsColour) {
    writeCapture();
    cv::imwrite(folder_ + "/color.png", cv::Mat(48, 64, CV_8UC1, cv::Scalar(77)));
    const Quorvel ruler = start();
    EXPECT_TRUE(sameBits(ruler.colorImage, cv::Mat(48, 64, CV_8UC3, cv::Scalar::all(77))));
    EXPECT_FALSE(ruler.pointCloud.empty());
}

TEST_F(OfflineStart, SurvivesFilesThatAreNoImages) {
    writeParameters(parameters());
    std::ofstream(folder_ + "/color.png") << "no picture";
    std::ofstream(folder_ + "/depth.tif") << "no picture";
    const Quorvel ruler = start();
    EXPECT_TRUE(ruler.colorImage.empty());
    EXPECT_TRUE(ruler.depthImage.empty());
    EXPECT_TRUE(ruler.calibStatus);
}

TEST_F(OfflineStart, HasNoObjectMinimumWithoutADistance) {
    // 50 / 0 * 0 is NaN.
    std::vector<std::string> lines = parameters();
    lines[11] = "0.000000";
    writeParameters(lines);
    writeImages();
    const CapturedOutput output;
    const Quorvel ruler = start();
    EXPECT_EQ(ruler.minObjectPixels, std::numeric_limits<int>::min());
    EXPECT_EQ(output.text(), "No object found.\n") << "every depth lies beyond a plane at 0";
    EXPECT_TRUE(isEmptyResult(ruler.result));
}

}  // namespace

}  // namespace quorvel::test
