// SPDX-License-Identifier: Apache-2.0
// Real depth-camera frames, when their folder is there (QUORVEL_DATA_DIR, in CMake or the environment). Skipped
// otherwise.
//
// overhead_single: objects on a sheet, seen from 713 mm under a tilt of 12.7 degrees. The objects' true sizes are not
// known. Their bands come from the colour pictures, at 1.33 mm a pixel on the sheet: the visible outline's length and
// width +-12 % or so, wide enough for depth that bleeds over the outline, too narrow for another object, a part of the
// object or a neighbouring region.
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "support/data_folder.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

struct Band {
    float low;
    float high;
};

struct RealObject {
    const char* frame;
    const char* what;
    Band length;
    Band width;
    Band height;
};

// 00: torch, 136 x 36 pixels, its head about 45 mm thick (the depth's smoothing takes some of that).
// 01: bag clip, 97 x 42 pixels.
// 02: flat bottle lying, 108 x 46 pixels.
// 04: horseshoe-shaped block, 57 x 53 pixels.
// 07: toy shark; its tail (another 50 pixels) lies flatter than the height cut, so only the body of 76 pixels and not
//     the fins counts.
const RealObject kObjects[] = {
    {"00", "torch", {172.0F, 208.0F}, {42.0F, 56.0F}, {32.0F, 46.0F}},
    {"01", "bag clip", {105.0F, 138.0F}, {45.0F, 65.0F}, {24.0F, 38.0F}},
    {"02", "bottle", {138.0F, 170.0F}, {52.0F, 70.0F}, {12.0F, 25.0F}},
    {"04", "block", {68.0F, 92.0F}, {60.0F, 82.0F}, {15.0F, 27.0F}},
    {"07", "toy shark", {90.0F, 116.0F}, {27.0F, 43.0F}, {18.0F, 31.0F}},
};

std::filesystem::path framesFolder() {
    return dataFolder() / "overhead_single";
}

class RealCaptures : public ::testing::Test {
protected:
    void SetUp() override {
        if (!std::filesystem::is_directory(framesFolder())) {
            GTEST_SKIP() << "there is no folder overhead_single in QUORVEL_DATA_DIR";
        }
        directory_ = std::make_unique<WorkingDirectory>();
        std::srand(1);
    }

    static bool push(Quorvel& ruler, const std::string& frame) {
        const std::string path = (framesFolder() / frame).string();
        return ruler.getCameraFrame(cv::imread(path + "_color.png", cv::IMREAD_COLOR),
                                    cv::imread(path + "_depth.png", cv::IMREAD_UNCHANGED));
    }

    /// A ruler calibrated on the empty frame. The camera is tilted, so the filter weight is negative: the height above
    /// the plane alone separates object and ground.
    static Quorvel calibratedRuler(ProductType mode) {
        Quorvel ruler(525.0F, 525.0F, 319.5F, 239.5F, 640, 480, false, "");
        cv::Rect region;
        ruler.setProductType(mode);
        ruler.setCalibrationRoI(0.3F, region);
        ruler.setEffectiveRegionInArea(0.6F, region);
        ruler.setFilterWeight(-1.0F);
        EXPECT_TRUE(push(ruler, "composed_empty"));
        float t = 0.0F;
        ruler.calibRef(t, 0.0F);
        return ruler;
    }

    static double tiltDegrees(const Quorvel& ruler) {
        return std::acos(static_cast<double>(ruler.refPlaneNormal[2])) * 180.0 / 3.14159265358979;
    }

private:
    std::unique_ptr<WorkingDirectory> directory_;
};

TEST_F(RealCaptures, KioskCalibrationFindsTheSheet) {
    const Quorvel ruler = calibratedRuler(KIOSK);
    EXPECT_NEAR(ruler.refPlaneOffset, 713.0F, 1.0F);
    EXPECT_NEAR(tiltDegrees(ruler), 12.7, 0.2);
}

TEST_F(RealCaptures, GrowingCalibrationFindsTheSheetWithinTheShiftOfFloatSums) {
    const Quorvel ruler = calibratedRuler(GROUND_GROWING);
    EXPECT_NEAR(ruler.refPlaneOffset, 713.0F, 4.0F);
    EXPECT_NEAR(tiltDegrees(ruler), 12.7, 1.0);
}

TEST_F(RealCaptures, TrackingFindsTheSheetUnderEveryObject) {
    Quorvel ruler = calibratedRuler(GROUND_TRACKING);
    for (const RealObject& object : kObjects) {
        ASSERT_TRUE(push(ruler, object.frame));
        EXPECT_NEAR(ruler.refPlaneOffset, 713.0F, 1.5F) << object.what;
        EXPECT_NEAR(tiltDegrees(ruler), 12.7, 0.3) << object.what;
    }
}

void expectInside(float value, const Band& band, const std::string& what) {
    EXPECT_GE(value, band.low) << what;
    EXPECT_LE(value, band.high) << what;
}

TEST_F(RealCaptures, KioskMeasuresEveryObjectInsideItsBand) {
    Quorvel ruler = calibratedRuler(KIOSK);
    for (const RealObject& object : kObjects) {
        ASSERT_TRUE(push(ruler, object.frame));
        ASSERT_EQ(ruler.measureOnce(), 0) << object.what;
        ASSERT_EQ(ruler.result.corners.size(), 8U) << object.what;
        EXPECT_TRUE(ruler.result.inView) << object.what;
        EXPECT_TRUE(ruler.result.onTarget) << object.what;
        expectInside(ruler.result.length, object.length, std::string(object.what) + ", length");
        expectInside(ruler.result.width, object.width, std::string(object.what) + ", width");
        expectInside(ruler.result.height, object.height, std::string(object.what) + ", height");
    }
}

TEST_F(RealCaptures, GrowingMeasuresTheObjectsThatStandTenMillimetresHigh) {
    Quorvel ruler = calibratedRuler(GROUND_GROWING);
    for (const RealObject& object : kObjects) {
        ASSERT_TRUE(push(ruler, object.frame));
        ASSERT_EQ(ruler.measureOnce(), 0) << object.what;
        // Too few pixels of the clip are higher than this mode's 10 mm to form a region.
        if (std::string(object.frame) == "01") {
            EXPECT_TRUE(ruler.result.corners.empty()) << object.what;
            continue;
        }
        ASSERT_EQ(ruler.result.corners.size(), 8U) << object.what;
        expectInside(ruler.result.length, object.length, std::string(object.what) + ", length");
        expectInside(ruler.result.width, object.width, std::string(object.what) + ", width");
        expectInside(ruler.result.height, object.height, std::string(object.what) + ", height");
    }
}

TEST_F(RealCaptures, TheSameFrameReadsTheSameTwice) {
    Quorvel ruler = calibratedRuler(KIOSK);
    ASSERT_TRUE(push(ruler, "00"));
    ASSERT_EQ(ruler.measureOnce(), 0);
    const MeasureResult first = ruler.result;
    ASSERT_TRUE(push(ruler, "00"));
    ASSERT_EQ(ruler.measureOnce(), 0);
    EXPECT_EQ(ruler.result.length, first.length);
    EXPECT_EQ(ruler.result.width, first.width);
    EXPECT_EQ(ruler.result.height, first.height);
    EXPECT_EQ(ruler.result.corners, first.corners);
}

}  // namespace

}  // namespace quorvel::test
