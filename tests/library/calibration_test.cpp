// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <quorvel/quorvel.h>

#include "library/calib_support.h"
#include "library/plain/back_projection.h"
#include "library/plain/calibration_region.h"
#include "library/plain/reference_fit.h"
#include "support/captured_output.h"
#include "support/same_bits.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

constexpr int kWidth = 160;
constexpr int kHeight = 120;

/// A ruler whose focal length is a power of two: on a flat floor at 1024 mm pixels are 4 mm apart and every sum of the
/// fits is exact. The default region is (30, 10, 100, 100).
Quorvel makeRuler(ProductType mode) {
    Quorvel ruler(256.0F, 256.0F, 80.0F, 60.0F, kWidth, kHeight, false, "");
    ruler.productType = mode;
    return ruler;
}

void pushDepth(Quorvel& ruler, const cv::Mat& depth) {
    ASSERT_TRUE(ruler.getCameraFrame(cv::Mat::zeros(depth.size(), CV_8UC3), depth));
}

cv::Mat flatDepth() {
    return {kHeight, kWidth, CV_16UC1, cv::Scalar(1024)};
}

/// A depth image of a tilted, noisy floor with holes.
cv::Mat floorDepthImage(Draws& random) {
    calib::FloorView view;
    view.width = kWidth;
    view.height = kHeight;
    view.focal = 256.0F;
    view.slopeX = random.real(-0.3F, 0.3F);
    view.slopeY = random.real(-0.3F, 0.3F);
    view.distance = random.real(500.0F, 1500.0F);
    view.noise = random.real(0.0F, 4.0F);
    view.absent = random.below(3);
    return calib::floorDepthImage(view, random);
}

std::string fileText(const std::string& path, std::ios::openmode mode = std::ios::in) {
    std::ifstream file(path, mode);
    EXPECT_TRUE(file) << path << " cannot be opened";
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string fileBytes(const std::string& path) {
    return fileText(path, std::ios::binary);
}

std::string planeLine(const Quorvel& ruler) {
    std::array<char, 200> line{};
    const cv::Vec3f& n = ruler.refPlaneNormal;
    const int length =
        std::snprintf(line.data(), line.size(), "%f %f %f %f\n", static_cast<double>(n[0]), static_cast<double>(n[1]),
                      static_cast<double>(n[2]), static_cast<double>(ruler.refPlaneOffset));
    return {line.data(), static_cast<std::size_t>(length)};
}

void setPlane(Quorvel& ruler, const cv::Vec3f& normal, float offset) {
    ruler.refPlaneNormal = normal;
    ruler.refPlaneOffset = offset;
}

void expectCalibrated(const Quorvel& ruler, float t) {
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_TRUE(sameBits(t, ruler.refPlaneOffset)) << "handed back " << t << ", stored " << ruler.refPlaneOffset;
    EXPECT_TRUE(sameBits(ruler.cameraHeight, ruler.refPlaneOffset)) << "camera height " << ruler.cameraHeight;
    EXPECT_EQ(ruler.minObjectPixels, plain::objectPixelMinimum(ruler.refPlaneOffset, ruler.fxSmall));
    EXPECT_EQ(fileText("param/cal.txt"), planeLine(ruler));
    EXPECT_TRUE(sameBits(cv::imread("param/depth.tif", cv::IMREAD_UNCHANGED), ruler.depthImage));
    cv::imwrite("param/expected.tif", ruler.depthImage);
    EXPECT_EQ(fileBytes("param/depth.tif"), fileBytes("param/expected.tif")) << "other bytes than those of cv::imwrite";
}

class FittingModes : public ::testing::TestWithParam<ProductType> {
protected:
    WorkingDirectory here_;
};
INSTANTIATE_TEST_SUITE_P(CalibRef, FittingModes, ::testing::Values(KIOSK, GROUND_GROWING));

TEST_P(FittingModes, AFlatFloorIsFoundExactlyAndShiftedByTheOffset) {
    Quorvel ruler = makeRuler(GetParam());
    pushDepth(ruler, flatDepth());
    float t = -1.0F;
    EXPECT_EQ(ruler.calibRef(t, 10.0F), 0);
    EXPECT_EQ(t, 1034.0F);
    EXPECT_EQ(ruler.refPlaneOffset, 1034.0F);
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.0F, 0.0F, 1.0F));
    EXPECT_EQ(ruler.minObjectPixels, 9) << "50 / 1034 * 64 squared is 9.58";
    expectCalibrated(ruler, t);
    const std::string line = fileText("param/cal.txt");
    const std::string end = " 1.000000 1034.000000\n";
    EXPECT_EQ(line.substr(line.size() - end.size()), end) << line;
}

TEST_P(FittingModes, ANegativeOffsetBringsThePlaneNearer) {
    Quorvel ruler = makeRuler(GetParam());
    pushDepth(ruler, flatDepth());
    float t = 0.0F;
    ruler.calibRef(t, -24.5F);
    EXPECT_EQ(t, 999.5F);
    expectCalibrated(ruler, t);
}

TEST_P(FittingModes, ASecondCalibrationReplacesPlaneAndFiles) {
    Quorvel ruler = makeRuler(GetParam());
    pushDepth(ruler, flatDepth());
    float t = 0.0F;
    ruler.calibRef(t, 0.0F);
    const cv::Mat second(kHeight, kWidth, CV_16UC1, cv::Scalar(512));
    pushDepth(ruler, second);
    ruler.calibRef(t, 0.0F);
    EXPECT_EQ(t, 512.0F) << "the offset of an earlier calibration is not carried on";
    expectCalibrated(ruler, t);
}

TEST_P(FittingModes, AFailedFitKeepsThePlaneYetAddsTheOffset) {
    Quorvel ruler = makeRuler(GetParam());
    pushDepth(ruler, cv::Mat::zeros(kHeight, kWidth, CV_16UC1));
    setPlane(ruler, {0.0F, 0.6F, 0.8F}, 700.0F);
    float t = 0.0F;
    EXPECT_EQ(ruler.calibRef(t, 25.0F), 0);
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.0F, 0.6F, 0.8F));
    EXPECT_EQ(t, 725.0F);
    expectCalibrated(ruler, t);
    EXPECT_EQ(fileText("param/cal.txt"), "0.000000 0.600000 0.800000 725.000000\n");
}

TEST_P(FittingModes, AFailedFirstFitLeavesNoPlaneAtTheOffset) {
    Quorvel ruler = makeRuler(GetParam());
    pushDepth(ruler, cv::Mat::zeros(kHeight, kWidth, CV_16UC1));
    float t = -1.0F;
    ruler.calibRef(t, 5.0F);
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.0F, 0.0F, 0.0F));
    EXPECT_EQ(t, 5.0F);
    EXPECT_EQ(ruler.minObjectPixels, 409600) << "(50 / 5 * 64) squared";
    expectCalibrated(ruler, t);
}

TEST_P(FittingModes, ADistanceOfZeroMakesTheSmallestRegionIntMin) {
    Quorvel ruler = makeRuler(GetParam());
    pushDepth(ruler, cv::Mat::zeros(kHeight, kWidth, CV_16UC1));
    float t = -1.0F;
    ruler.calibRef(t, 0.0F);
    EXPECT_EQ(t, 0.0F);
    EXPECT_EQ(ruler.minObjectPixels, INT_MIN);
    EXPECT_EQ(fileText("param/cal.txt"), "0.000000 0.000000 0.000000 0.000000\n");
}

TEST_P(FittingModes, AgreesWithThePlainStagesOnRandomFloors) {
    Draws random(151);
    for (int i = 0; i < 25; ++i) {
        Quorvel ruler = makeRuler(GetParam());
        pushDepth(ruler, floorDepthImage(random));
        setPlane(ruler, {0.0F, 0.0F, 1.0F}, 321.0F);
        ruler.calibrationRoI.x = random.between(-5, 40);
        ruler.calibrationRoI.y = random.between(-5, 30);
        ruler.calibrationRoI.width = random.between(60, 130);
        ruler.calibrationRoI.height = random.between(50, 110);
        const cv::Rect& roi = ruler.calibrationRoI;
        const std::array<cv::Point, 3> corners{cv::Point(roi.x, roi.y), cv::Point(roi.x, roi.y + roi.height),
                                               cv::Point(roi.x + roi.width, roi.y)};
        cv::Mat smoothed;
        cv::GaussianBlur(ruler.depthImage, smoothed, cv::Size(5, 5), 0.0, 0.0, cv::BORDER_REFLECT_101);
        cv::GaussianBlur(smoothed, smoothed, cv::Size(5, 5), 0.0, 0.0, cv::BORDER_REFLECT_101);
        const cv::Mat full = plain::backProject(smoothed, ruler.cx, ruler.cy, ruler.invFx, ruler.invFy);
        const cv::Mat region = plain::pointsInsideRegion(full, corners);
        cv::Vec3f normal = ruler.refPlaneNormal;
        float offset = ruler.refPlaneOffset;
        std::srand(static_cast<unsigned>(i));
        if (GetParam() == KIOSK) {
            plain::fitDominantPlane(region, normal, offset);
        } else {
            plain::fitGrownPlane(full, region, plain::halfRegionArea(corners), normal, offset);
        }
        offset += 3.25F;

        const cv::Mat depthBefore = ruler.depthImage.clone();
        float t = 0.0F;
        std::srand(static_cast<unsigned>(i));
        ruler.calibRef(t, 3.25F);
        EXPECT_TRUE(sameBits(ruler.calibFullCloud, full)) << "scene " << i;
        EXPECT_TRUE(sameBits(ruler.calibCloud, region)) << "scene " << i;
        EXPECT_TRUE(sameBits(ruler.refPlaneNormal, normal)) << "scene " << i << ", region " << roi;
        EXPECT_TRUE(sameBits(ruler.refPlaneOffset, offset)) << "scene " << i << ", region " << roi;
        EXPECT_TRUE(sameBits(ruler.depthImage, depthBefore)) << "the frame itself was smoothed";
        EXPECT_EQ(std::vector<cv::Point>(ruler.calibPoints, ruler.calibPoints + 3),
                  std::vector<cv::Point>(corners.begin(), corners.end()));
        expectCalibrated(ruler, t);
    }
}

class KeepingModes : public ::testing::TestWithParam<ProductType> {
protected:
    WorkingDirectory here_;
};
INSTANTIATE_TEST_SUITE_P(CalibRef, KeepingModes,
                         ::testing::Values(GROUND_TRACKING, KIOSK_LOW_OBJECT, static_cast<ProductType>(9)));

TEST_P(KeepingModes, RewriteThePlaneUnchangedAndIgnoreTheOffset) {
    Quorvel ruler = makeRuler(KIOSK);
    pushDepth(ruler, flatDepth());
    ruler.productType = GetParam();
    setPlane(ruler, {0.25F, -0.5F, 0.75F}, 1234.5F);
    float t = 0.0F;
    EXPECT_EQ(ruler.calibRef(t, 10.0F), 0);
    EXPECT_EQ(t, 1234.5F);
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.25F, -0.5F, 0.75F));
    expectCalibrated(ruler, t);
    EXPECT_EQ(fileText("param/cal.txt"), "0.250000 -0.500000 0.750000 1234.500000\n");
    EXPECT_FALSE(ruler.calibCloud.empty()) << "the clouds are made in every mode";
}

TEST(CalibRef, AKioskRegionOfTooFewPointsKeepsThePlane) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler(KIOSK);
    pushDepth(ruler, flatDepth());
    setPlane(ruler, {0.0F, 0.6F, 0.8F}, 700.0F);
    // 63 x 63 points with 62 x 62 = 3844 normals of the floor; 65 x 65 with 64 x 64 = 4096.
    ruler.setCalibrationRoI(cv::Rect(20, 20, 64, 64));
    float t = 0.0F;
    ruler.calibRef(t, 0.0F);
    EXPECT_EQ(t, 700.0F);
    expectCalibrated(ruler, t);
    ruler.setCalibrationRoI(cv::Rect(20, 20, 66, 66));
    ruler.calibRef(t, 0.0F);
    EXPECT_EQ(t, 1024.0F);
}

TEST(CalibRef, HalfTheRegionMustHaveDepthForTheGrowingMode) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler(GROUND_GROWING);
    setPlane(ruler, {0.0F, 0.0F, -1.0F}, 700.0F);  // along which nothing grows
    // Depth in the upper rows only; smoothing carries it some rows further. 99 columns of the region count.
    for (const int rows : {40, 80}) {
        cv::Mat depth = flatDepth();
        depth.rowRange(rows, kHeight).setTo(0);
        pushDepth(ruler, depth);
        float t = 0.0F;
        ruler.calibRef(t, 0.0F);
        EXPECT_EQ(ruler.refPlaneNormal[2] < 0.0F, rows == 40) << rows << " rows with depth, t = " << t;
    }
}

TEST(CalibRef, DebugLines) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler(GROUND_TRACKING);
    ruler.setDebugMode(true);
    ruler.depthImage = flatDepth();
    setPlane(ruler, {-0.0F, 0.6F, 0.8F}, 1000.25F);
    const CapturedOutput output;
    float t = 0.0F;
    ruler.calibRef(t, 0.0F);
    EXPECT_EQ(output.text(),
              "Quorvel Calib Ref Plane Start\n"
              "cal ref normal: [-0, 0.6, 0.8] , t = 1000.25\n");
}

TEST(CalibRef, TheDebugLineOfAFittingModeHasTheOffsetAlready) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler(GROUND_GROWING);
    pushDepth(ruler, flatDepth());
    ruler.setDebugMode(true);
    const CapturedOutput output;
    float t = 0.0F;
    ruler.calibRef(t, 10.0F);
    EXPECT_NE(output.text().find("] , t = 1034\n"), std::string::npos) << output.text();
}

TEST(CalibRef, WithoutDebugNothingIsPrinted) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler(KIOSK);
    const CapturedOutput output;
    float t = 0.0F;
    ruler.calibRef(t, 0.0F);
    pushDepth(ruler, flatDepth());
    ruler.calibRef(t, 0.0F);
    EXPECT_EQ(output.text(), "");
}

void expectNoCalibration(const cv::Mat& depth, const std::string& what) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler(KIOSK);
    setPlane(ruler, {0.0F, 0.6F, 0.8F}, 700.0F);
    ruler.depthImage = depth;
    ruler.minObjectPixels = 17;
    ruler.setDebugMode(true);
    const CapturedOutput output;
    float t = -1.0F;
    EXPECT_EQ(ruler.calibRef(t, 10.0F), 0) << what;
    EXPECT_EQ(t, 700.0F) << what << ": the stored distance is handed back";
    EXPECT_EQ(ruler.refPlaneOffset, 700.0F) << what;
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.0F, 0.6F, 0.8F)) << what;
    EXPECT_FALSE(ruler.calibStatus) << what;
    EXPECT_EQ(ruler.cameraHeight, 0.0F) << what;
    EXPECT_EQ(ruler.minObjectPixels, 17) << what;
    EXPECT_EQ(ruler.calibPoints[0], cv::Point()) << what;
    EXPECT_TRUE(ruler.calibFullCloud.empty() && ruler.calibCloud.empty()) << what;
    EXPECT_TRUE(std::filesystem::is_empty(".")) << what << ": something was written";
    EXPECT_EQ(output.text(), "Quorvel Calib Ref Plane Start\nNo depth frame to calibrate on.\n") << what;
}

TEST(CalibRef, WithoutAFrameNothingChanges) {
    expectNoCalibration(cv::Mat(), "no frame");
}

TEST(CalibRef, AFrameOfTheWrongFormChangesNothing) {
    expectNoCalibration(cv::Mat(kHeight, kWidth + 1, CV_16UC1, cv::Scalar(1024)), "too wide");
    expectNoCalibration(cv::Mat(kHeight - 1, kWidth, CV_16UC1, cv::Scalar(1024)), "too low");
    expectNoCalibration(cv::Mat(kWidth, kHeight, CV_16UC1, cv::Scalar(1024)), "on its side");
    expectNoCalibration(cv::Mat(kHeight, kWidth, CV_8UC1, cv::Scalar(9)), "of 8 bits");
    expectNoCalibration(cv::Mat(kHeight, kWidth, CV_16SC1, cv::Scalar(1024)), "signed");
    expectNoCalibration(cv::Mat(kHeight, kWidth, CV_16UC3, cv::Scalar::all(1024)), "of three channels");
    const std::vector<int> sizes{2, kHeight, kWidth};
    expectNoCalibration(cv::Mat(sizes, CV_16UC1, cv::Scalar(1024)), "of three dimensions");
}

TEST(CalibRef, AnUnconfiguredRulerChangesNothing) {
    const WorkingDirectory here;
    Quorvel ruler(256.0F, 256.0F, 80.0F, 60.0F, kWidth, kHeight, true, "no-such-folder");
    float t = -1.0F;
    EXPECT_EQ(ruler.calibRef(t, 10.0F), 0);
    EXPECT_EQ(t, 0.0F);
    EXPECT_FALSE(ruler.calibStatus);
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(CalibRef, AnUnwritableFolderIsPassedOver) {
    const WorkingDirectory here;
    std::ofstream("param") << "a file in the folder's place";
    Quorvel ruler = makeRuler(GROUND_GROWING);
    pushDepth(ruler, flatDepth());
    float t = 0.0F;
    EXPECT_EQ(ruler.calibRef(t, 10.0F), 0);
    EXPECT_EQ(t, 1034.0F);
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_EQ(ruler.cameraHeight, 1034.0F);
    EXPECT_EQ(fileText("param"), "a file in the folder's place");
}

TEST(CalibRef, AnUnwritableCalibrationFileIsPassedOver) {
    const WorkingDirectory here;
    std::filesystem::create_directories("param/cal.txt");
    Quorvel ruler = makeRuler(GROUND_GROWING);
    pushDepth(ruler, flatDepth());
    float t = 0.0F;
    EXPECT_EQ(ruler.calibRef(t, 10.0F), 0);
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_TRUE(sameBits(cv::imread("param/depth.tif", cv::IMREAD_UNCHANGED), ruler.depthImage));
}

TEST(CalibRef, WritesWhereTheMembersSay) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler(GROUND_GROWING);
    ruler.paramDir = "other";
    ruler.calFilePath = "plane.txt";
    pushDepth(ruler, flatDepth());
    float t = 0.0F;
    ruler.calibRef(t, 0.0F);
    EXPECT_EQ(fileText("plane.txt"), planeLine(ruler));
    EXPECT_TRUE(std::filesystem::exists("other/depth.tif"));
    EXPECT_FALSE(std::filesystem::exists("param"));
}

/// Calibrates in a region that holds no floor, with a plane along which nothing grows.
/// \return the distance handed back, with an offset of 1 mm to the 700 mm before
float calibratedIn(const cv::Rect& region, ProductType mode) {
    Quorvel ruler = makeRuler(mode);
    pushDepth(ruler, flatDepth());
    ruler.setCalibrationRoI(region);
    setPlane(ruler, {0.0F, 0.0F, -1.0F}, 700.0F);
    float t = 0.0F;
    EXPECT_EQ(ruler.calibRef(t, 1.0F), 0) << region;
    EXPECT_TRUE(ruler.calibStatus) << region;
    EXPECT_EQ(cv::countNonZero(ruler.calibCloud.reshape(1)) > 0, region == cv::Rect(5, 5, -3, -3)) << region;
    return t;
}

TEST(CalibRef, RegionsWithoutFloorKeepThePlane) {
    const WorkingDirectory here;
    for (const cv::Rect& region : {cv::Rect(5, 5, -3, -3), cv::Rect(-50, -50, 10, 10), cv::Rect(500, 500, 100, 100),
                                   cv::Rect(INT_MIN, INT_MIN, INT_MAX, INT_MAX)}) {
        EXPECT_EQ(calibratedIn(region, KIOSK), 701.0F) << region;
        EXPECT_EQ(calibratedIn(region, GROUND_GROWING), 701.0F) << region;
    }
}

TEST(CalibRef, RegionsWithoutAreaAskForNoPointsInTheGrowingMode) {
    // Half of an empty area is 0 points, so the fit is not refused: it runs over no point and gives a plane of NaN.
    const WorkingDirectory here;
    for (const cv::Rect& region : {cv::Rect(), cv::Rect(50, 50, 0, 20), cv::Rect(INT_MAX, INT_MAX, INT_MAX, INT_MAX),
                                   cv::Rect(INT_MIN, INT_MIN, INT_MIN, INT_MIN)}) {
        EXPECT_EQ(calibratedIn(region, KIOSK), 701.0F) << region;
        EXPECT_TRUE(std::isnan(calibratedIn(region, GROUND_GROWING))) << region;
    }
}

TEST(CalibRef, ARegionAsLargeAsAnIntReachesTheWholeImage) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler(KIOSK);
    pushDepth(ruler, flatDepth());
    ruler.setCalibrationRoI(cv::Rect(-1000000000, -1000000000, INT_MAX, INT_MAX));
    float t = 0.0F;
    ruler.calibRef(t, 0.0F);
    EXPECT_EQ(t, 1024.0F);
    EXPECT_TRUE(sameBits(ruler.calibCloud, ruler.calibFullCloud));
    EXPECT_EQ(ruler.calibPoints[1], cv::Point(-1000000000, 1147483648)) << "1147483647 as a float";
}

TEST(CalibRef, TheDistanceMayBeHandedBackIntoTheMemberItself) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler(GROUND_GROWING);
    pushDepth(ruler, flatDepth());
    ruler.calibRef(ruler.refPlaneOffset, 10.0F);
    EXPECT_EQ(ruler.refPlaneOffset, 1034.0F);
    expectCalibrated(ruler, ruler.refPlaneOffset);
}

TEST(CalibRef, LeavesTheCloudsThatACopyHolds) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler(GROUND_GROWING);
    pushDepth(ruler, flatDepth());
    float t = 0.0F;
    ruler.calibRef(t, 0.0F);
    const Quorvel copy = ruler;
    const cv::Mat fullBefore = copy.calibFullCloud.clone();
    const cv::Mat regionBefore = copy.calibCloud.clone();
    pushDepth(ruler, cv::Mat(kHeight, kWidth, CV_16UC1, cv::Scalar(512)));
    ruler.calibRef(t, 0.0F);
    EXPECT_TRUE(sameBits(copy.calibFullCloud, fullBefore));
    EXPECT_TRUE(sameBits(copy.calibCloud, regionBefore));
}

}  // namespace

}  // namespace quorvel::test
