// SPDX-License-Identifier: Apache-2.0
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/calib_support.h"
#include "library/plain/reference_fit.h"
#include "support/captured_output.h"
#include "support/same_bits.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
const cv::Vec3f kOldNormal(0.0F, 0.6F, 0.8F);
constexpr float kOldOffset = 700.0F;

/// A ruler with a plane already; its small images of 80 x 60 pixels have 78 x 58 = 4524 normals.
Quorvel makeRuler(ProductType mode) {
    Quorvel ruler(256.0F, 256.0F, 160.0F, 120.0F, kWidth, kHeight, false, "");
    ruler.productType = mode;
    ruler.refPlaneNormal = kOldNormal;
    ruler.refPlaneOffset = kOldOffset;
    return ruler;
}

bool pushDepth(Quorvel& ruler, const cv::Mat& depth) {
    return ruler.getCameraFrame(cv::Mat::zeros(depth.size(), CV_8UC3), depth);
}

cv::Mat flatDepth() {
    return {kHeight, kWidth, CV_16UC1, cv::Scalar(1024)};
}

cv::Mat tiltedDepth(Draws& random) {
    calib::FloorView view;
    view.width = kWidth;
    view.height = kHeight;
    view.focal = 256.0F;
    view.slopeX = random.real(-0.2F, 0.2F);
    view.slopeY = random.real(-0.2F, 0.2F);
    view.noise = random.real(0.0F, 2.0F);
    return calib::floorDepthImage(view, random);
}

TEST(RansacCalibRef, FitsTheSmallCloudOfTheFrame) {
    Quorvel ruler = makeRuler(KIOSK);
    ASSERT_TRUE(pushDepth(ruler, flatDepth()));
    EXPECT_EQ(ruler.ransacCalibRef(), 0);
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.0F, 0.0F, 1.0F));
    EXPECT_EQ(ruler.refPlaneOffset, 1024.0F);
    EXPECT_EQ(ruler.minObjectPixels, 9) << "50 / 1024 * 64 squared is 9.77";
}

TEST(RansacCalibRef, WritesNoFileAndLeavesHeightAndStatus) {
    const WorkingDirectory here;
    Quorvel ruler = makeRuler(KIOSK);
    ASSERT_TRUE(pushDepth(ruler, flatDepth()));
    ruler.cameraHeight = 333.0F;
    ruler.ransacCalibRef();
    EXPECT_EQ(ruler.cameraHeight, 333.0F);
    EXPECT_FALSE(ruler.calibStatus);
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(RansacCalibRef, AFailedFitKeepsThePlaneAndComputesTheSmallestRegionFromIt) {
    Quorvel ruler = makeRuler(KIOSK);
    ASSERT_TRUE(pushDepth(ruler, cv::Mat::zeros(kHeight, kWidth, CV_16UC1)));
    ruler.minObjectPixels = -1;
    EXPECT_EQ(ruler.ransacCalibRef(), 0);
    EXPECT_EQ(ruler.refPlaneNormal, kOldNormal);
    EXPECT_EQ(ruler.refPlaneOffset, kOldOffset);
    EXPECT_EQ(ruler.minObjectPixels, 20) << "50 / 700 * 64 squared is 20.9";
}

TEST(RansacCalibRef, WithoutAFrameThePlaneStays) {
    Quorvel ruler = makeRuler(KIOSK);
    EXPECT_EQ(ruler.ransacCalibRef(), 0);
    EXPECT_EQ(ruler.refPlaneNormal, kOldNormal);
    EXPECT_EQ(ruler.minObjectPixels, 20);
}

TEST(RansacCalibRef, WithoutFrameAndPlaneTheSmallestRegionIsIntMin) {
    Quorvel ruler(256.0F, 256.0F, 160.0F, 120.0F, kWidth, kHeight, false, "");
    EXPECT_EQ(ruler.ransacCalibRef(), 0);
    EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0.0F, 0.0F, 0.0F));
    EXPECT_EQ(ruler.minObjectPixels, INT_MIN);
}

TEST(RansacCalibRef, AnImageThatIsNoCloudIsNotFitted) {
    Quorvel ruler = makeRuler(KIOSK);
    const std::vector<int> sizes{2, 90, 90};
    for (const cv::Mat& image : {cv::Mat(90, 90, CV_8UC1, cv::Scalar(9)), cv::Mat(90, 90, CV_32FC1, cv::Scalar(9)),
                                 cv::Mat(90, 90, CV_64FC3, cv::Scalar::all(9)), cv::Mat(sizes, CV_32FC3)}) {
        ruler.pointCloudSmall = image;
        EXPECT_EQ(ruler.ransacCalibRef(), 0);
        EXPECT_EQ(ruler.refPlaneOffset, kOldOffset) << cv::typeToString(image.type());
    }
}

TEST(RansacCalibRef, DebugLine) {
    Quorvel ruler = makeRuler(KIOSK);
    ASSERT_TRUE(pushDepth(ruler, cv::Mat::zeros(kHeight, kWidth, CV_16UC1)));
    ruler.setDebugMode(true);
    const CapturedOutput output;
    ruler.ransacCalibRef();
    EXPECT_EQ(output.text(), "cal ref normal: [0, 0.6, 0.8] , t = 700\n");
    ruler.setDebugMode(false);
    ruler.ransacCalibRef();
    EXPECT_EQ(output.text(), "cal ref normal: [0, 0.6, 0.8] , t = 700\n") << "printed without debug";
}

TEST(RansacCalibRef, AgreesWithThePlainStagesOnEveryTrackedFrame) {
    Draws random(161);
    Quorvel ruler = makeRuler(GROUND_TRACKING);
    for (int i = 0; i < 25; ++i) {
        cv::Vec3f normal = ruler.refPlaneNormal;
        float offset = ruler.refPlaneOffset;
        std::srand(static_cast<unsigned>(i));
        ASSERT_TRUE(pushDepth(ruler, tiltedDepth(random)));
        const int nextRandom = std::rand();
        std::srand(static_cast<unsigned>(i));
        plain::fitDominantPlane(ruler.pointCloudSmall, normal, offset);
        EXPECT_TRUE(sameBits(ruler.refPlaneNormal, normal)) << "frame " << i;
        EXPECT_TRUE(sameBits(ruler.refPlaneOffset, offset)) << "frame " << i;
        EXPECT_EQ(nextRandom, std::rand()) << "frame " << i << ": the number of draws differs";
        EXPECT_EQ(ruler.minObjectPixels, plain::objectPixelMinimum(offset, ruler.fxSmall)) << "frame " << i;
    }
}

TEST(GroundTrackingIntake, EveryAcceptedFrameMakesTheRulerCalibrated) {
    Quorvel ruler = makeRuler(GROUND_TRACKING);
    ASSERT_TRUE(pushDepth(ruler, cv::Mat::zeros(kHeight, kWidth, CV_16UC1)));
    EXPECT_TRUE(ruler.calibStatus) << "also when the fit failed";
    EXPECT_EQ(ruler.refPlaneOffset, kOldOffset);
    ruler.calibStatus = false;
    ASSERT_TRUE(pushDepth(ruler, flatDepth()));
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_EQ(ruler.refPlaneOffset, 1024.0F);
}

TEST(GroundTrackingIntake, TheIntakeOfThreeImagesFitsToo) {
    Quorvel ruler = makeRuler(GROUND_TRACKING);
    ASSERT_TRUE(ruler.getCameraFrame(cv::Mat::zeros(kHeight, kWidth, CV_8UC3), flatDepth(), cv::Mat()));
    EXPECT_EQ(ruler.refPlaneOffset, 1024.0F);
}

TEST(GroundTrackingIntake, ARefusedFrameFitsNothing) {
    Quorvel ruler = makeRuler(GROUND_TRACKING);
    EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(), cv::Mat()));
    EXPECT_FALSE(pushDepth(ruler, cv::Mat(10, 10, CV_16UC1, cv::Scalar(1024))));
    EXPECT_FALSE(ruler.calibStatus);
    EXPECT_EQ(ruler.refPlaneOffset, kOldOffset);
}

TEST(GroundTrackingIntake, TheOtherModesKeepTheirPlane) {
    for (const ProductType mode : {KIOSK, GROUND_GROWING, KIOSK_LOW_OBJECT}) {
        Quorvel ruler = makeRuler(mode);
        ASSERT_TRUE(pushDepth(ruler, flatDepth()));
        EXPECT_EQ(ruler.refPlaneOffset, kOldOffset) << "mode " << mode;
        EXPECT_FALSE(ruler.calibStatus) << "mode " << mode;
    }
}

TEST(SetFilterWeight, StoresAnyWeight) {
    Quorvel ruler = makeRuler(KIOSK);
    EXPECT_EQ(ruler.filterWeight, 0.0F);
    for (const float weight : {0.005F, 0.0F, 1.0F, -3.0F, 7.5F}) {
        EXPECT_EQ(ruler.setFilterWeight(weight), 0);
        EXPECT_EQ(ruler.filterWeight, weight);
    }
}

TEST(SetFilterWeight, DebugLine) {
    Quorvel ruler = makeRuler(KIOSK);
    const CapturedOutput output;
    ruler.setFilterWeight(0.25F);
    EXPECT_EQ(output.text(), "") << "printed without debug";
    ruler.setDebugMode(true);
    ruler.setFilterWeight(0.015F);
    EXPECT_EQ(output.text(), "Filter weight value : 0.015\n");
}

}  // namespace

}  // namespace quorvel::test
