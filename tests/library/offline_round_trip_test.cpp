// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/frame_draws.h"
#include "library/same_ruler.h"
#include "support/same_bits.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

namespace fs = std::filesystem;

/// Measures a block live, saves the capture into a fresh working directory and starts a ruler on it.
class OfflineRoundTrip : public ::testing::Test {
protected:
    /// The camera arguments of an offline start are ignored.
    Quorvel replay() const { return {1, 2, 3, 4, 5, 6, true, folder_}; }

    const DepthScene scene_ = makeScene();
    Quorvel live_ = scene_.ruler();
    cv::Mat color_;
    cv::Mat depth_;

private:
    static DepthScene makeScene() {
        DepthScene scene = blockScene(200);
        scene.noise = 1;
        scene.focal = 61.7F;
        scene.distance = 987.654F;
        return scene;
    }

    void SetUp() override {
        Draws draws(53);
        color_ = drawColor(draws, scene_.size);
        depth_ = scene_.depth(draws);
        ASSERT_TRUE(live_.getCameraFrame(color_, depth_));
        setPlane(live_, {0.0012345678F, -0.0023456789F, 0.99999648F}, scene_.distance, 5);
        live_.effectiveRegion = {2, 3, 60, 44};
        live_.filterWeight = 0.005F;
        ASSERT_EQ(live_.measureOnce(), 0);
        ASSERT_TRUE(live_.result.inView);
        ASSERT_EQ(live_.saveOfflineData(), 0);
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator("log")) {
            if (entry.path().filename() == "para.txt") {
                folder_ = entry.path().parent_path().generic_string();
            }
        }
        ASSERT_FALSE(folder_.empty());
    }

    const WorkingDirectory directory_;
    std::string folder_;
};

TEST_F(OfflineRoundTrip, KeepsEveryParameterToSixDecimals) {
    const Quorvel offline = replay();
    EXPECT_EQ(offline.downScale, live_.downScale);
    EXPECT_EQ(offline.imageWidth, live_.imageWidth);
    EXPECT_EQ(offline.imageHeight, live_.imageHeight);
    for (float Quorvel::*value : {&Quorvel::cx, &Quorvel::cy, &Quorvel::fx, &Quorvel::fy, &Quorvel::refPlaneOffset,
                                  &Quorvel::minObjectHeight}) {
        EXPECT_EQ(offline.*value, live_.*value) << "floats from 16 on, and whole numbers, lose nothing";
    }
    // Half of the sixth decimal, and some bits of a float near 1.
    constexpr double kHalf = 0.5e-6 + 0.06e-6;
    EXPECT_NEAR(offline.invFx, live_.invFx, kHalf);
    EXPECT_NEAR(offline.invFy, live_.invFy, kHalf);
    EXPECT_EQ(offline.invFx, 0.016207F) << "1 / 61.7 = 0.01620746, as printed and not recomputed";
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(offline.refPlaneNormal[i], live_.refPlaneNormal[i], kHalf) << i;
    }
    EXPECT_EQ(offline.refPlaneNormal, cv::Vec3f(0.001235F, -0.002346F, 0.999996F));
}

TEST_F(OfflineRoundTrip, KeepsThePictures) {
    const Quorvel offline = replay();
    EXPECT_TRUE(sameBits(offline.colorImage, color_));
    EXPECT_TRUE(sameBits(offline.depthImage, depth_));
    EXPECT_TRUE(sameBits(offline.colorSmall, live_.colorSmall));
}

TEST_F(OfflineRoundTrip, LeavesOutWhatACaptureDoesNotHold) {
    ASSERT_GT(live_.fxSmall, 0.0F);
    ASSERT_GT(live_.cameraHeight, 0.0F);
    ASSERT_EQ(live_.reservedValue, 50);
    const Quorvel offline = replay();
    for (float Quorvel::*value :
         {&Quorvel::fxSmall, &Quorvel::fySmall, &Quorvel::invFxSmall, &Quorvel::invFySmall, &Quorvel::cxSmall,
          &Quorvel::cySmall, &Quorvel::cameraHeight, &Quorvel::filterWeight, &Quorvel::cameraType}) {
        EXPECT_EQ(offline.*value, 0.0F);
    }
    EXPECT_EQ(offline.calibrationRoI, cv::Rect());
    EXPECT_EQ(offline.effectiveRegion, cv::Rect());
    EXPECT_EQ(offline.minObjectPixels, 0);
    EXPECT_EQ(offline.productType, 0);
    EXPECT_EQ(offline.reservedValue, 0);
    EXPECT_TRUE(offline.calibStatus);
    EXPECT_TRUE(offline.offlineMode);
    EXPECT_TRUE(isEmptyResult(offline.result)) << "no box meets an empty detection area";
}

TEST_F(OfflineRoundTrip, DoesNotKeepTheMode) {
    for (const ProductType mode : {GROUND_TRACKING, GROUND_GROWING, KIOSK_LOW_OBJECT}) {
        live_.productType = mode;
        fs::remove_all("log");
        live_.saveOfflineData();
        const std::string month = fs::directory_iterator("log")->path().generic_string();
        const std::string folder = fs::directory_iterator(month)->path().generic_string();
        const Quorvel offline(1, 2, 3, 4, 5, 6, true, folder);
        EXPECT_TRUE(offline.calibStatus);
        EXPECT_EQ(offline.productType, KIOSK) << mode;
    }
}

TEST_F(OfflineRoundTrip, TakesNoBatch) {
    Quorvel offline = replay();
    const Quorvel before = detachedCopy(offline);
    EXPECT_FALSE(offline.getCameraMultipleFrame({color_}, {depth_}));
    EXPECT_TRUE(sameRuler(offline, before));
}

/// What a host does to measure a replayed frame as it was measured live.
void restoreSettings(Quorvel& offline, const Quorvel& live) {
    const auto scale = static_cast<float>(offline.downScale);
    offline.fxSmall = offline.fx / scale;
    offline.fySmall = offline.fy / scale;
    offline.cxSmall = offline.cx / scale;
    offline.cySmall = offline.cy / scale;
    offline.invFxSmall = offline.invFx * scale;
    offline.invFySmall = offline.invFy * scale;
    offline.minObjectPixels = live.minObjectPixels;
    offline.setEffectiveRegionInArea(live.effectiveRegion);
    offline.setFilterWeight(live.filterWeight);
}

TEST_F(OfflineRoundTrip, MeasuresTheSameOnceTheHostRestoresItsSettings) {
    Quorvel offline = replay();
    restoreSettings(offline, live_);
    ASSERT_TRUE(offline.getCameraFrame({}, {}));
    ASSERT_EQ(offline.measureOnce(), 0);
    ASSERT_TRUE(offline.result.inView);
    EXPECT_TRUE(offline.result.onTarget);
    // The inverse focal length is short by 0.5e-6 of 0.016, 3e-5 of every x and y: 0.01 mm in 400. The footprint is
    // taken of whole millimetres, so each of two opposite sides may move by one; the vertical side is then stretched by
    // less than 2. The plane's sixth decimal moves heights by 1000 mm * 0.5e-6 and less than 1e-3 mm in all.
    EXPECT_NEAR(offline.result.length, live_.result.length, 2 * 2 + 0.02);
    EXPECT_NEAR(offline.result.width, live_.result.width, 2 + 0.02);
    EXPECT_NEAR(offline.result.height, live_.result.height, 2e-3);
}

TEST_F(OfflineRoundTrip, MeasuresTheSameBitsWithTheRoundedValuesGivenBack) {
    Quorvel offline = replay();
    offline.invFx = live_.invFx;
    offline.invFy = live_.invFy;
    offline.refPlaneNormal = live_.refPlaneNormal;
    restoreSettings(offline, live_);
    ASSERT_TRUE(offline.getCameraFrame({}, {}));
    ASSERT_EQ(offline.measureOnce(), 0);
    EXPECT_TRUE(sameResult(offline.result, live_.result));
    EXPECT_TRUE(sameBits(offline.pointCloud, live_.pointCloud));
    EXPECT_TRUE(sameBits(offline.depthSmall, live_.depthSmall));
}

TEST_F(OfflineRoundTrip, MayBeSavedAgain) {
    Quorvel offline = replay();
    fs::remove_all("log");
    offline.saveOfflineData();
    const std::string month = fs::directory_iterator("log")->path().generic_string();
    const Quorvel again(1, 2, 3, 4, 5, 6, true, fs::directory_iterator(month)->path().generic_string());
    EXPECT_TRUE(sameSettings(again, [&] {
        Quorvel expected = offline;
        expected.offlineDir = again.offlineDir;
        return expected;
    }()));
    EXPECT_TRUE(sameImages(again, offline));
}

}  // namespace

}  // namespace quorvel::test
