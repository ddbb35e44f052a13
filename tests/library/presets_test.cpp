// SPDX-License-Identifier: Apache-2.0
#include <climits>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/comma_locale.h"
#include "support/captured_output.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

const cv::Rect kKioskRegion(256, 192, 128, 96);
const cv::Rect kDefaultRegion(270, 190, 100, 100);

Quorvel makeRuler() {
    return {600.0F, 600.0F, 320.0F, 240.0F, 640, 480, false, ""};
}

void writeCalibration(const std::string& text) {
    std::filesystem::create_directory("param");
    std::ofstream("param/cal.txt", std::ios::binary) << text;
}

/// The two modes that load a plane.
class LoadingModes : public ::testing::TestWithParam<ProductType> {
protected:
    WorkingDirectory here_;
};
INSTANTIATE_TEST_SUITE_P(SetProductType, LoadingModes, ::testing::Values(KIOSK, KIOSK_LOW_OBJECT));

TEST_P(LoadingModes, LoadTheStoredPlane) {
    writeCalibration("0.000000 -0.600000 0.800000 1000.000000\n");
    Quorvel ruler = makeRuler();
    EXPECT_EQ(ruler.setProductType(GetParam()), 0);
    EXPECT_EQ(ruler.productType, GetParam());
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.0F, -0.6F, 0.8F));
    EXPECT_EQ(ruler.refPlaneOffset, 1000.0F);
    EXPECT_EQ(ruler.cameraHeight, 1000.0F);
    EXPECT_EQ(ruler.minObjectPixels, 56) << "(50 / 1000 * 150) squared is 56.25";
    EXPECT_TRUE(ruler.calibStatus);
}

TEST_P(LoadingModes, CentreTheObjectRegion) {
    Quorvel ruler = makeRuler();
    ruler.setProductType(GetParam());
    EXPECT_EQ(ruler.effectiveRegion, kKioskRegion);
    EXPECT_EQ(ruler.calibrationRoI, kDefaultRegion) << "the calibration's region is another";
    // 641 * 0.2 = 128.2, (641 - 128.2) / 2 = 256.4; 483 * 0.2 = 96.6, (483 - 96.6) / 2 = 193.2.
    Quorvel odd(600.0F, 600.0F, 320.0F, 240.0F, 641, 483, false, "");
    odd.setProductType(GetParam());
    EXPECT_EQ(odd.effectiveRegion, cv::Rect(256, 193, 128, 96));
}

TEST_P(LoadingModes, FieldsThatCannotBeReadKeepTheMembers) {
    writeCalibration("0.5 0.25 broken 3\n");
    Quorvel ruler = makeRuler();
    ruler.refPlaneNormal = cv::Vec3f(0.0F, 0.0F, 1.0F);
    ruler.refPlaneOffset = 500.0F;
    ruler.setProductType(GetParam());
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.5F, 0.25F, 1.0F));
    EXPECT_EQ(ruler.refPlaneOffset, 500.0F);
    EXPECT_EQ(ruler.cameraHeight, 500.0F) << "the file was opened: the height follows the plane";
    EXPECT_EQ(ruler.minObjectPixels, 225);
    EXPECT_TRUE(ruler.calibStatus);
}

TEST_P(LoadingModes, AnEmptyFileCountsAsAPlane) {
    writeCalibration("");
    Quorvel ruler = makeRuler();
    ruler.setProductType(GetParam());
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_EQ(ruler.cameraHeight, 0.0F);
    EXPECT_EQ(ruler.minObjectPixels, INT_MIN) << "the distance is 0";
}

TEST_P(LoadingModes, WithoutAFileThePlaneStays) {
    Quorvel ruler = makeRuler();
    ruler.refPlaneNormal = cv::Vec3f(0.0F, 0.0F, 1.0F);
    ruler.refPlaneOffset = 500.0F;
    ruler.minObjectPixels = 17;
    EXPECT_EQ(ruler.setProductType(GetParam()), 0);
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.0F, 0.0F, 1.0F));
    EXPECT_EQ(ruler.refPlaneOffset, 500.0F);
    EXPECT_EQ(ruler.cameraHeight, 0.0F);
    EXPECT_EQ(ruler.minObjectPixels, 17);
    EXPECT_EQ(ruler.calibStatus, GetParam() == KIOSK_LOW_OBJECT) << "only the low-object mode counts as calibrated";
    EXPECT_EQ(ruler.effectiveRegion, kKioskRegion);
}

TEST_P(LoadingModes, AFolderInTheFilesPlaceIsNoFile) {
    std::filesystem::create_directories("param/cal.txt");
    Quorvel ruler = makeRuler();
    ruler.minObjectPixels = 17;
    ruler.setProductType(GetParam());
    EXPECT_EQ(ruler.calibStatus, GetParam() == KIOSK_LOW_OBJECT);
    EXPECT_EQ(ruler.minObjectPixels, 17);
    EXPECT_EQ(ruler.effectiveRegion, kKioskRegion);
}

TEST_P(LoadingModes, AnExistingCalibrationIsNotForgotten) {
    Quorvel ruler = makeRuler();
    ruler.calibStatus = true;
    ruler.setProductType(GetParam());
    EXPECT_TRUE(ruler.calibStatus);
}

TEST_P(LoadingModes, ReadTheFileThatTheMemberNames) {
    std::ofstream("plane.txt") << "0 0 1 250\n";
    Quorvel ruler = makeRuler();
    ruler.calFilePath = "plane.txt";
    ruler.setProductType(GetParam());
    EXPECT_EQ(ruler.cameraHeight, 250.0F);
}

TEST_P(LoadingModes, RestoreACalibrationMadeInTheSameFolder) {
    // 0.1 and 1234.56 have no exact float; all are restored to six decimals.
    Quorvel before = makeRuler();
    before.productType = GROUND_TRACKING;
    before.depthImage = cv::Mat::zeros(480, 640, CV_16UC1);
    before.refPlaneNormal = cv::Vec3f(0.1F, -0.7F, 0.70710678F);
    before.refPlaneOffset = 1234.56F;
    float t = 0.0F;
    before.calibRef(t, 0.0F);
    Quorvel after = makeRuler();
    after.setProductType(GetParam());
    for (int k = 0; k < 3; ++k) {
        EXPECT_NEAR(after.refPlaneNormal[k], before.refPlaneNormal[k], 5.1e-7) << "component " << k;
    }
    EXPECT_EQ(after.refPlaneOffset, before.refPlaneOffset);
    EXPECT_EQ(after.minObjectPixels, before.minObjectPixels);
}

void expectAnyLocaleToLoad(ProductType mode) {
    writeCalibration("0.000000 -0.600000 0.800000 1000.500000\n");
    Quorvel ruler = makeRuler();
    ruler.setProductType(mode);
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.0F, -0.6F, 0.8F));
    EXPECT_EQ(ruler.cameraHeight, 1000.5F);
}

TEST_P(LoadingModes, ReadAPointWhereTheHostsStreamsHaveAComma) {
    const CommaStreamLocale comma;
    expectAnyLocaleToLoad(GetParam());
}

TEST_P(LoadingModes, ReadAPointWhereTheHostsScanfHasAComma) {
    const CommaCLocale comma;
    if (!comma.available()) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    expectAnyLocaleToLoad(GetParam());
}

TEST_P(LoadingModes, WithoutDebugNothingIsPrinted) {
    writeCalibration("0 0 1 1000\n");
    Quorvel ruler = makeRuler();
    const CapturedOutput output;
    ruler.setProductType(GetParam());
    EXPECT_EQ(output.text(), "");
}

std::string debugLines(ProductType mode) {
    Quorvel ruler = makeRuler();
    ruler.setDebugMode(true);
    const CapturedOutput output;
    ruler.setProductType(mode);
    return output.text();
}

TEST(SetProductType, DebugLinesOfKiosk) {
    const WorkingDirectory here;
    const std::string first = "Set Product Type : KIOSK mode.\n";
    const std::string last =
        "KIOSK mode object effective RoI initial value : [128 x 96 from (256, 192)]\n"
        "Set Product Type : KIOSK mode success.\n";
    EXPECT_EQ(debugLines(KIOSK), first + last) << "success is told without a file, too";
    writeCalibration("-0.000000 0.600000 0.800000 1000.250000\n");
    EXPECT_EQ(debugLines(KIOSK), first + "Normal : -0, 0.6, 0.8\nCamera Height : 1000.25\n" + last);
}

TEST(SetProductType, DebugLinesOfKioskLowObject) {
    const WorkingDirectory here;
    const std::string first = "Set Product Type : KIOSK LOW OBJECT mode.\n";
    const std::string last =
        "KIOSK Low Object mode object effective RoI initial value : [128 x 96 from (256, 192)]\n"
        "Set Product Type : KIOSK Low Object mode success.\n";
    EXPECT_EQ(debugLines(KIOSK_LOW_OBJECT), first + last);
    writeCalibration("-0.000000 0.600000 0.800000 1000.250000\n");
    EXPECT_EQ(debugLines(KIOSK_LOW_OBJECT), first + "Normal : -0, 0.6, 0.8\nCamera Height : 1000.25\n" + last);
}

TEST(SetProductType, OnlyTheLowObjectModeSetsTheFilterWeight) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler();
    ruler.filterWeight = 0.25F;
    for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING}) {
        ruler.setProductType(mode);
        EXPECT_EQ(ruler.filterWeight, 0.25F) << "mode " << mode;
    }
    ruler.setProductType(KIOSK_LOW_OBJECT);
    EXPECT_EQ(ruler.filterWeight, 0.005F);
}

TEST(SetProductType, TheGroundModesOnlyChangeTheSelector) {
    const WorkingDirectory here;
    writeCalibration("0 0 1 1000\n");
    for (const int mode : {1, 2, 7, -1}) {
        Quorvel ruler = makeRuler();
        ruler.setDebugMode(true);
        const CapturedOutput output;
        EXPECT_EQ(ruler.setProductType(static_cast<ProductType>(mode)), 0);
        EXPECT_EQ(ruler.productType, mode);
        EXPECT_EQ(ruler.refPlaneOffset, 0.0F) << "mode " << mode;
        EXPECT_FALSE(ruler.calibStatus) << "mode " << mode;
        EXPECT_EQ(ruler.effectiveRegion, kDefaultRegion) << "mode " << mode;
        EXPECT_EQ(output.text(), "") << "mode " << mode;
    }
}

TEST(SetProductType, TheBackgroundImageHasNoEffect) {
    const WorkingDirectory here;
    std::filesystem::create_directory("param");
    std::ofstream("param/bg.bmp") << "not an image";
    Quorvel ruler = makeRuler();
    EXPECT_EQ(ruler.setProductType(GROUND_GROWING), 0);
    EXPECT_FALSE(ruler.calibStatus);
    EXPECT_EQ(std::filesystem::file_size("param/bg.bmp"), 12U) << "it is neither written nor shortened";
}

}  // namespace

}  // namespace quorvel::test
