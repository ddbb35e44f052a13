// SPDX-License-Identifier: Apache-2.0
// The public interface of the shared library, used as a host uses it.
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/file_bytes.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

namespace fs = std::filesystem;

/// A parcel of 160 x 133 x 200 mm before a camera at 1000 mm, and the bare surface below it. How well it is measured is
/// the subject of other tests: here it must be recognised.
class SharedLibrary : public ::testing::Test {
protected:
    SharedLibrary() {
        scene_.size = {640, 480};
        scene_.focal = 600;
        empty_ = scene_.depth(draws_);
        scene_.blocks.push_back({{260, 190, 120, 100}, 200});
        for (int i = 0; i < 3; ++i) {
            parcel_.push_back(scene_.depth(draws_));
        }
    }

    /// A ruler that has its plane and regions; in GROUND_TRACKING the frames bring the plane.
    Quorvel readyRuler(ProductType mode) {
        Quorvel ruler = scene_.ruler();
        cv::Rect region;
        EXPECT_EQ(ruler.setProductType(mode), 0);
        EXPECT_EQ(ruler.setCalibrationRoI(0.8F, region), 0);
        EXPECT_EQ(region, ruler.calibrationRoI);
        EXPECT_EQ(ruler.setEffectiveRegionInArea(0.9F, region), 0);
        EXPECT_EQ(region, ruler.effectiveRegion);
        EXPECT_TRUE(ruler.getCameraFrame(scene_.color(), empty_));
        float t = 0;
        EXPECT_EQ(ruler.calibRef(t, 0), 0);
        EXPECT_NEAR(t, 1000, 10);
        return ruler;
    }

    static void expectParcel(const MeasureResult& result) {
        ASSERT_EQ(result.corners.size(), 8U);
        EXPECT_TRUE(result.inView);
        EXPECT_NEAR(result.length, 160, 15);
        EXPECT_NEAR(result.width, 133, 15);
        EXPECT_NEAR(result.height, 200, 15);
    }

    cv::Mat color() const { return scene_.color(); }

    const WorkingDirectory here_;
    Draws draws_{1};
    DepthScene scene_;
    cv::Mat empty_;
    std::vector<cv::Mat> parcel_;
};

class SharedLibraryModes : public SharedLibrary, public ::testing::WithParamInterface<ProductType> {};

INSTANTIATE_TEST_SUITE_P(Fitting, SharedLibraryModes, ::testing::Values(KIOSK, GROUND_TRACKING, GROUND_GROWING),
                         [](const auto& mode) { return "Mode" + std::to_string(mode.param); });

TEST_P(SharedLibraryModes, CalibratesAndMeasures) {
    Quorvel ruler = readyRuler(GetParam());
    EXPECT_TRUE(fs::exists("param/depth.tif"));
    bool status = false;
    float height = 0;
    EXPECT_EQ(ruler.getCalibStatus(status), 0);
    EXPECT_TRUE(status);
    EXPECT_EQ(ruler.getCameraHeight(height), 0);
    EXPECT_NEAR(height, 1000, 10);
    ASSERT_TRUE(ruler.getCameraFrame(color(), parcel_[0]));
    EXPECT_EQ(ruler.measureOnce(), 0);
    expectParcel(ruler.result);
    EXPECT_EQ(ruler.result.onTarget, GetParam() != GROUND_GROWING);
    EXPECT_EQ(ruler.stop(), 0);
}

TEST_F(SharedLibrary, TellsItsVersion) {
    EXPECT_EQ(scene_.ruler().getVersion(), "3.6.4.1");
}

TEST_F(SharedLibrary, LoadsThePlaneOfTheCalibrationFile) {
    const Quorvel calibrated = readyRuler(KIOSK);
    Quorvel next = scene_.ruler();
    EXPECT_EQ(next.setProductType(KIOSK_LOW_OBJECT), 0);
    EXPECT_TRUE(next.calibStatus);
    EXPECT_NEAR(next.refPlaneOffset, calibrated.refPlaneOffset, 1e-5);
    EXPECT_EQ(next.filterWeight, 0.005F);
    ASSERT_TRUE(next.getCameraFrame(color(), parcel_[0]));
    EXPECT_EQ(next.measureOnce(), 0);
    EXPECT_TRUE(isEmptyResult(next.result));
}

TEST_F(SharedLibrary, FitsThePlaneOfTheLastFrameAnew) {
    Quorvel ruler = scene_.ruler();
    ASSERT_TRUE(ruler.getCameraFrame(color(), empty_));
    EXPECT_EQ(ruler.ransacCalibRef(), 0);
    EXPECT_NEAR(ruler.refPlaneOffset, 1000, 3);
}

TEST_F(SharedLibrary, KeepsTheThirdImage) {
    Quorvel ruler = scene_.ruler();
    EXPECT_TRUE(ruler.getCameraFrame(color(), empty_, cv::Mat(2, 3, CV_32FC1, cv::Scalar(4))));
    EXPECT_EQ(ruler.auxImage.at<float>(1, 2), 4.0F);
    EXPECT_FALSE(ruler.getCameraFrame(color(), cv::Mat()));
}

TEST_F(SharedLibrary, MeasuresBatches) {
    Quorvel ruler = readyRuler(KIOSK);
    const std::vector<cv::Mat> colors(3, color());
    ASSERT_TRUE(ruler.getCameraMultipleFrame(colors, parcel_));
    EXPECT_EQ(ruler.measureMultiple(10, 10, 10), 0);
    expectParcel(ruler.result);
    EXPECT_TRUE(ruler.depthFrameBuffer.empty());
    const CapturedOutput output;
    ASSERT_TRUE(ruler.getCameraMultipleFrame(colors, {parcel_[0], parcel_[1], empty_}));
    EXPECT_EQ(ruler.measureMultiple(10, 10, 10), 1);
    EXPECT_TRUE(isEmptyResult(ruler.result));
    EXPECT_EQ(ruler.measureMultiple(10, 10, 10), 1);
    EXPECT_FALSE(ruler.getCameraMultipleFrame({color()}, parcel_));
    EXPECT_EQ(output.text(), "No object found.\nERROR !! result is empty.\nsize not match\n");
}

TEST_F(SharedLibrary, PrintsWhenItIsAskedTo) {
    Quorvel ruler = scene_.ruler();
    const CapturedOutput output;
    EXPECT_EQ(ruler.measureOnce(), 1);
    EXPECT_EQ(output.text(), "");
    ruler.setDebugMode(true);
    EXPECT_EQ(ruler.measureOnce(), 1);
    EXPECT_EQ(output.text(), "No calibration data.\n");
}

TEST_F(SharedLibrary, TakesSettings) {
    Quorvel ruler = scene_.ruler();
    float height = 5;
    EXPECT_EQ(ruler.getCameraHeight(height), 1);
    EXPECT_EQ(height, 0.0F);
    EXPECT_EQ(ruler.setCalibrationRoI({1, 2, 3, 4}), 0);
    EXPECT_EQ(ruler.calibrationRoI, cv::Rect(1, 2, 3, 4));
    EXPECT_EQ(ruler.setEffectiveRegionInArea({5, 6, 7, 8}), 0);
    EXPECT_EQ(ruler.effectiveRegion, cv::Rect(5, 6, 7, 8));
    EXPECT_EQ(ruler.setFilterWeight(0.25F), 0);
    EXPECT_EQ(ruler.filterWeight, 0.25F);
    EXPECT_EQ(ruler.setCameraType(false, 30), 0);
    EXPECT_EQ(ruler.cameraType, 30.0F);
    EXPECT_TRUE(ruler.cameraTypeSet);
}

TEST_F(SharedLibrary, KeepsParameterFilesOfEveryFormat) {
    Quorvel ruler = scene_.ruler();
    ruler.setCalibrationRoI({1, 2, 3, 4});
    ruler.setEffectiveRegionInArea({5, 6, 7, 8});
    ruler.setFilterWeight(0.25F);
    const CapturedOutput silence;
    for (const std::string path : {"p.yml", "p.xml", "p.json"}) {
        ASSERT_TRUE(ruler.saveRulerParam(path)) << path;
        Quorvel other = scene_.ruler();
        cv::Rect calibration;
        cv::Rect detection;
        ASSERT_TRUE(other.loadRulerParam(path, calibration, detection)) << path;
        EXPECT_EQ(calibration, cv::Rect(1, 2, 3, 4)) << path;
        EXPECT_EQ(detection, cv::Rect(5, 6, 7, 8)) << path;
        EXPECT_TRUE(sameSettings(ruler, other)) << path;
    }
    EXPECT_FALSE(ruler.saveRulerParam("no-such-folder/p.yml"));
}

TEST_F(SharedLibrary, ThrowsWhatAHostCanCatch) {
    put("garbage.yml", "%YAML:1.0\n---\n[ ] : {");
    Quorvel ruler = scene_.ruler();
    const Quorvel before(ruler);
    const CapturedOutput silence;
    cv::Rect region;
    EXPECT_THROW(ruler.loadRulerParam("garbage.yml", region, region), cv::Exception);
    EXPECT_TRUE(sameRuler(ruler, before));
}

TEST_F(SharedLibrary, ReplaysACapture) {
    Quorvel ruler = readyRuler(KIOSK);
    ASSERT_TRUE(ruler.getCameraFrame(color(), parcel_[0]));
    ASSERT_EQ(ruler.saveOfflineData(), 0);
    const fs::path month = fs::directory_iterator("log")->path();
    const fs::path folder = fs::directory_iterator(month)->path();
    ASSERT_TRUE(fs::exists(folder / "para.txt"));
    fs::rename(folder, "capture");
    Quorvel replayed(0, 0, 0, 0, 0, 0, true, "capture");
    EXPECT_EQ(replayed.imageWidth, 640);
    EXPECT_TRUE(sameBits(replayed.depthImage, parcel_[0]));
    replayed.effectiveRegion = ruler.effectiveRegion;
    ASSERT_TRUE(replayed.getCameraFrame(cv::Mat(), cv::Mat())) << "takes the stored images";
    EXPECT_EQ(replayed.measureOnce(), 0);
    expectParcel(replayed.result);
}

TEST_F(SharedLibrary, CopiesShareTheirPixels) {
    Quorvel ruler = readyRuler(KIOSK);
    Quorvel assigned = scene_.ruler();
    {
        const Quorvel copy(ruler);
        EXPECT_EQ(copy.depthImage.data, ruler.depthImage.data);
        assigned = copy;
    }
    EXPECT_TRUE(sameRuler(assigned, ruler));
    for (Quorvel* one : {&assigned, &ruler}) {
        ASSERT_TRUE(one->getCameraFrame(color(), parcel_[0]));
        EXPECT_EQ(one->measureOnce(), 0);
    }
    EXPECT_TRUE(sameRuler(assigned, ruler));
}

}  // namespace

}  // namespace quorvel::test
