// SPDX-License-Identifier: Apache-2.0
// Settings that no installation has: areas far outside the picture, NaN and infinite numbers, modes that do not exist.
#include <array>
#include <climits>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/frame_draws.h"
#include "library/hostile_draws.h"
#include "support/captured_output.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

/// A ruler that has a plane, for a scene that it measures with ordinary settings.
class HostileSettings : public ::testing::Test {
protected:
    Quorvel calibratedRuler(ProductType mode) {
        Quorvel ruler = scene_.ruler();
        ruler.setProductType(mode);
        setPlane(ruler, {0, 0, 1}, scene_.distance, 5);
        ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene_.size);
        return ruler;
    }

    /// Calibrates on the scene and measures it, alone and in a batch.
    void calibrateAndMeasure(Quorvel& ruler) {
        float t = 0;
        ASSERT_TRUE(ruler.getCameraFrame(color_, depth_));
        EXPECT_EQ(ruler.calibRef(t, 0), 0);
        setPlane(ruler, {0, 0, 1}, scene_.distance, 5);
        measureAnything(ruler);
        ASSERT_TRUE(ruler.getCameraMultipleFrame({color_, color_}, {depth_, depth_}));
        measureAnyBatch(ruler, 5);
    }

    DepthScene scene_ = blockScene(200);
    cv::Mat color_ = scene_.color();
    cv::Mat depth_;

private:
    void SetUp() override {
        Draws draws(1);
        depth_ = scene_.depth(draws);
    }

    const WorkingDirectory directory_;
    const CapturedOutput output_;
};

TEST_F(HostileSettings, AreasMayLieAnywhere) {
    Draws draws(2);
    for (int i = 0; i < 300; ++i) {
        Quorvel ruler = calibratedRuler(i % 2 == 0 ? KIOSK : GROUND_GROWING);
        const cv::Rect calibration = drawOddRect(draws);
        const cv::Rect detection = drawOddRect(draws);
        ASSERT_EQ(ruler.setCalibrationRoI(calibration), 0);
        ASSERT_EQ(ruler.setEffectiveRegionInArea(detection), 0);
        calibrateAndMeasure(ruler);
        ASSERT_FALSE(HasFailure()) << calibration << " and " << detection;
    }
}

TEST_F(HostileSettings, AreasOutsideThePictureFindNothing) {
    for (const cv::Rect& outside : {cv::Rect(64, 0, 10, 48),
                                    {0, 48, 64, 10},
                                    {-10, 0, 10, 48},
                                    {0, 0, -5, -5},
                                    {INT_MAX, INT_MAX, INT_MAX, INT_MAX},
                                    {INT_MIN, INT_MIN, INT_MAX, INT_MAX},
                                    {INT_MIN, INT_MIN, INT_MIN, INT_MIN}}) {
        Quorvel ruler = calibratedRuler(KIOSK);
        ruler.setEffectiveRegionInArea(outside);
        ASSERT_TRUE(ruler.getCameraFrame(color_, depth_));
        EXPECT_EQ(ruler.measureOnce(), 0) << outside;
        EXPECT_TRUE(isEmptyResult(ruler.result)) << outside;
        ruler.setCalibrationRoI(outside);
        float t = 0;
        EXPECT_EQ(ruler.calibRef(t, 0), 0) << outside;
        EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0, 0, 1)) << outside << ": the plane stays";
        EXPECT_EQ(t, scene_.distance) << outside;
    }
}

TEST_F(HostileSettings, AnAreaAroundEverythingIsThePicture) {
    for (const cv::Rect& around : {cv::Rect(-1, -1, INT_MAX, INT_MAX), {-65536, -65536, INT_MAX, INT_MAX}}) {
        Quorvel ruler = calibratedRuler(KIOSK);
        ruler.setEffectiveRegionInArea(around);
        ASSERT_TRUE(ruler.getCameraFrame(color_, depth_));
        EXPECT_EQ(ruler.measureOnce(), 0) << around;
        EXPECT_TRUE(ruler.result.onTarget) << around;
        EXPECT_TRUE(ruler.result.inView) << around;
    }
}

TEST_F(HostileSettings, RatiosMayBeAnyNumber) {
    for (const float ratio : kOddFloats) {
        Quorvel ruler = calibratedRuler(GROUND_GROWING);
        cv::Rect calibration;
        cv::Rect detection;
        EXPECT_EQ(ruler.setCalibrationRoI(ratio, calibration), 0);
        EXPECT_EQ(ruler.setEffectiveRegionInArea(ratio, detection), 0);
        EXPECT_EQ(calibration, ruler.calibrationRoI);
        EXPECT_EQ(detection, calibration);
        calibrateAndMeasure(ruler);
        ASSERT_FALSE(HasFailure()) << ratio;
    }
}

TEST_F(HostileSettings, RegionsOfAParameterFileMayBeAnyNumbers) {
    const std::vector<std::string> odd{"2147483647", "-2147483648", "99999999999999", "1.e+300", ".Nan", "-.Inf", "0"};
    for (const std::string& number : odd) {
        std::ofstream("odd.yml") << "%YAML:1.0\n---\nCalibration_Area: [ " << number << ", " << number << ", " << number
                                 << ", " << number << " ]\nDetect_Area: [ 0, " << number << ", 64, " << number
                                 << " ]\nGround_Weight: " << number << "\n";
        Quorvel ruler = calibratedRuler(KIOSK);
        cv::Rect calibration;
        cv::Rect detection;
        ASSERT_TRUE(ruler.loadRulerParam("odd.yml", calibration, detection)) << number;
        EXPECT_EQ(calibration, ruler.calibrationRoI);
        EXPECT_EQ(detection, ruler.effectiveRegion);
        calibrateAndMeasure(ruler);
        EXPECT_TRUE(ruler.saveRulerParam("again.yml"));
        ASSERT_FALSE(HasFailure()) << number;
    }
}

TEST_F(HostileSettings, ModesThatDoNotExistMeasureNothing) {
    for (const int value : {-1, 4, 5, 255, INT_MIN, INT_MAX}) {
        Quorvel ruler = calibratedRuler(KIOSK);
        ASSERT_TRUE(ruler.getCameraFrame(color_, depth_));
        ASSERT_EQ(ruler.measureOnce(), 0);
        ASSERT_FALSE(ruler.result.corners.empty());
        EXPECT_EQ(ruler.setProductType(static_cast<ProductType>(value)), 0);
        EXPECT_EQ(ruler.productType, value);
        float t = 0;
        ASSERT_TRUE(ruler.getCameraFrame(color_, depth_));
        EXPECT_EQ(ruler.calibRef(t, 77), 0);
        EXPECT_EQ(t, scene_.distance) << "a mode that does not calibrate keeps its plane and ignores the shift";
        EXPECT_EQ(ruler.measureOnce(), 0);
        EXPECT_TRUE(isEmptyResult(ruler.result)) << value;
        ASSERT_TRUE(ruler.getCameraMultipleFrame({color_}, {depth_}));
        EXPECT_EQ(ruler.measureMultiple(9, 9, 9), 1);
        EXPECT_TRUE(ruler.depthFrameBuffer.empty()) << value;
    }
}

TEST_F(HostileSettings, ASideBandMayHaveAnyWidth) {
    for (const int width : kOddInts) {
        Quorvel ruler = calibratedRuler(KIOSK);
        EXPECT_EQ(ruler.setCameraType(true, width), 0);
        EXPECT_EQ(ruler.cameraType, static_cast<float>(width));
        calibrateAndMeasure(ruler);
        ASSERT_TRUE(ruler.getCameraFrame(color_, depth_));
        ASSERT_EQ(ruler.measureOnce(), 0);
        // The float nearest to the largest int is 2^31, which does not fit int and becomes INT_MIN.
        EXPECT_EQ(ruler.result.inView, width <= 1 || width >= INT_MAX - 1) << width;
    }
}

TEST_F(HostileSettings, AWeightMayBeAnyNumber) {
    for (const float weight : kOddFloats) {
        Quorvel ruler = calibratedRuler(KIOSK);
        EXPECT_EQ(ruler.setFilterWeight(weight), 0);
        calibrateAndMeasure(ruler);
        ASSERT_FALSE(HasFailure()) << weight;
    }
}

TEST_F(HostileSettings, AShiftOfThePlaneMayBeAnyNumber) {
    for (const float shift : kOddFloats) {
        for (const ProductType mode : {KIOSK, GROUND_GROWING}) {
            Quorvel ruler = calibratedRuler(mode);
            float t = 0;
            ASSERT_TRUE(ruler.getCameraFrame(color_, depth_));
            EXPECT_EQ(ruler.calibRef(t, shift), 0);
            EXPECT_TRUE(sameBits(std::vector<float>{t}, std::vector<float>{ruler.refPlaneOffset})) << shift;
            measureAnything(ruler);
            Quorvel other = scene_.ruler();
            EXPECT_EQ(other.setProductType(KIOSK), 0) << "reads the file that was written";
            ASSERT_TRUE(other.getCameraFrame(color_, depth_));
            measureAnything(other);
            ASSERT_FALSE(HasFailure()) << shift;
        }
    }
}

TEST_F(HostileSettings, NoToleranceMakesFramesOfOneSceneDiffer) {
    for (const float tolerance : kOddFloats) {
        Quorvel ruler = calibratedRuler(KIOSK);
        ASSERT_TRUE(ruler.getCameraMultipleFrame({color_, color_}, {depth_, depth_}));
        const int expected = tolerance < 0 ? 1 : 0;  // the difference is 0, which is not greater than NaN
        EXPECT_EQ(ruler.measureMultiple(tolerance, tolerance, tolerance), expected) << tolerance;
        EXPECT_TRUE(ruler.depthFrameBuffer.empty()) << tolerance;
    }
}

}  // namespace

}  // namespace quorvel::test
