// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstdlib>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/frame_draws.h"
#include "library/plain/back_projection.h"
#include "support/captured_output.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

const std::string kEmptyMessage = "Image data size is empty.\n";

/// The picture with every `scale`-th pixel as nearest-neighbour scaling picks them for sizes that divide.
cv::Mat everyPixel(const cv::Mat& image, int scale) {
    cv::Mat small(image.rows / scale, image.cols / scale, image.type());
    for (int row = 0; row < small.rows; ++row) {
        for (int column = 0; column < small.cols; ++column) {
            image(cv::Rect(column * scale, row * scale, 1, 1)).copyTo(small(cv::Rect(column, row, 1, 1)));
        }
    }
    return small;
}

/// Checks all images that one frame leads to, apart from the small pictures' own pixels.
void expectDerived(const Quorvel& ruler, const cv::Mat& color, const cv::Mat& depth) {
    const cv::Size small(ruler.imageWidth / ruler.downScale, ruler.imageHeight / ruler.downScale);
    EXPECT_TRUE(sameBits(ruler.colorImage, color));
    EXPECT_TRUE(sameBits(ruler.depthImage, depth));
    cv::Mat expectedColor;
    cv::Mat expectedDepth;
    cv::resize(color, expectedColor, small, 0, 0, cv::INTER_NEAREST);
    cv::resize(depth, expectedDepth, small, 0, 0, cv::INTER_NEAREST);
    EXPECT_TRUE(sameBits(ruler.colorSmall, expectedColor));
    EXPECT_TRUE(sameBits(ruler.depthSmall, expectedDepth));
    const cv::Mat cloudSmall =
        plain::backProject(expectedDepth, ruler.cxSmall, ruler.cySmall, ruler.invFxSmall, ruler.invFySmall);
    EXPECT_TRUE(sameBits(ruler.pointCloudSmall, cloudSmall));
    EXPECT_TRUE(sameBits(ruler.pointCloudSmallCopy, cloudSmall));
    EXPECT_NE(ruler.pointCloudSmall.data, ruler.pointCloudSmallCopy.data) << "a deep copy";
    EXPECT_TRUE(sameBits(ruler.pointCloud, plain::backProject(depth, ruler.cx, ruler.cy, ruler.invFx, ruler.invFy)));
}

/// A ruler with a frame, and what it held then.
struct WithFrame {
    Draws draws{7};
    cv::Mat color = drawColor(draws, {64, 48});
    cv::Mat depth = drawDepth(draws, {64, 48});
    Quorvel ruler{60, 61, 31, 25, 64, 48, false, ""};

    WithFrame() { EXPECT_TRUE(ruler.getCameraFrame(color, depth)); }
    void expectUnchanged() const { expectDerived(ruler, color, depth); }
};

TEST(FrameIntake, DerivesTheSmallImagesOfAUsualCamera) {
    Quorvel ruler(600, 600, 320, 240, 640, 480, false, "");
    Draws draws(1);
    const cv::Mat color = drawColor(draws, {640, 480});
    const cv::Mat depth = drawDepth(draws, {640, 480});
    EXPECT_TRUE(ruler.getCameraFrame(color, depth));
    EXPECT_EQ(ruler.colorSmall.size(), cv::Size(160, 120));
    EXPECT_EQ(ruler.pointCloudSmall.size(), cv::Size(160, 120));
    EXPECT_EQ(ruler.pointCloudSmall.type(), CV_32FC3);
    EXPECT_EQ(ruler.pointCloud.size(), cv::Size(640, 480));
    EXPECT_TRUE(sameBits(ruler.colorSmall, everyPixel(color, 4)));
    EXPECT_TRUE(sameBits(ruler.depthSmall, everyPixel(depth, 4)));
    expectDerived(ruler, color, depth);
    EXPECT_FALSE(ruler.calibStatus);
}

TEST(FrameIntake, BackProjectsWithTheIntrinsicsOfEachScale) {
    // One pixel at (8, 4), 1000 mm: full (8 - 32) * 1000 / 50 = -480, (4 - 24) * 1000 / 40 = -500; small (2 - 8) * 1000
    // * 4 / 50 = -480, (1 - 6) * 1000 * 4 / 40 = -500.
    Quorvel ruler(50, 40, 32, 24, 64, 48, false, "");
    cv::Mat depth = cv::Mat::zeros(48, 64, CV_16UC1);
    depth.at<ushort>(4, 8) = 1000;
    EXPECT_TRUE(ruler.getCameraFrame(cv::Mat::zeros(48, 64, CV_8UC3), depth));
    EXPECT_EQ(ruler.pointCloud.at<cv::Vec3f>(4, 8), cv::Vec3f(-480, -500, 1000));
    EXPECT_EQ(ruler.pointCloudSmall.at<cv::Vec3f>(1, 2), cv::Vec3f(-480, -500, 1000));
    EXPECT_EQ(cv::countNonZero(ruler.pointCloud.reshape(1)), 3);
    EXPECT_EQ(cv::countNonZero(ruler.pointCloudSmall.reshape(1)), 3);
}

TEST(FrameIntake, TakesAFrameWithoutAnyDepth) {
    Quorvel ruler(60, 60, 32, 24, 64, 48, false, "");
    EXPECT_TRUE(ruler.getCameraFrame(cv::Mat::zeros(48, 64, CV_8UC3), cv::Mat::zeros(48, 64, CV_16UC1)));
    EXPECT_EQ(ruler.pointCloud.size(), cv::Size(64, 48));
    EXPECT_EQ(cv::countNonZero(ruler.pointCloud.reshape(1)), 0);
    EXPECT_EQ(cv::countNonZero(ruler.pointCloudSmall.reshape(1)), 0);
}

class FrameIntakeLoops : public EveryLoopVariant {};

INSTANTIATE_TEST_SUITE_P(Loops, FrameIntakeLoops, runnableLoopVariants(), loopVariantName);

TEST_P(FrameIntakeLoops, AgreesWithThePlainFormForRandomFrames) {
    Draws draws(114);
    for (int run = 0; run < 1000; ++run) {
        Quorvel ruler = drawRuler(draws);
        const cv::Size size(ruler.imageWidth, ruler.imageHeight);
        for (int frame = 0; frame < 2; ++frame) {
            const cv::Mat color = drawColor(draws, size);
            const cv::Mat depth = drawDepth(draws, size);
            ASSERT_TRUE(ruler.getCameraFrame(color, depth)) << "run " << run;
            expectDerived(ruler, color, depth);
            ASSERT_FALSE(HasFailure()) << "run " << run << ", frame " << frame << ", size " << size;
        }
    }
}

TEST(FrameIntake, KeepsClonesAndNeverWritesTheHostsPixels) {
    Draws draws(3);
    const cv::Mat color = drawColor(draws, {64, 48});
    const cv::Mat depth = drawDepth(draws, {64, 48});
    const cv::Mat aux = drawDepth(draws, {64, 48});
    const std::array<cv::Mat, 3> before{color.clone(), depth.clone(), aux.clone()};
    Quorvel ruler(60, 60, 32, 24, 64, 48, false, "");
    EXPECT_TRUE(ruler.getCameraFrame(color, depth, aux));
    EXPECT_NE(ruler.colorImage.data, color.data);
    EXPECT_NE(ruler.depthImage.data, depth.data);
    EXPECT_NE(ruler.auxImage.data, aux.data);
    ruler.colorImage.setTo(cv::Scalar::all(9));
    ruler.depthImage.setTo(9);
    ruler.auxImage.setTo(9);
    EXPECT_TRUE(ruler.getCameraFrame(before[0], before[1], before[2]));
    EXPECT_TRUE(sameBits(color, before[0]));
    EXPECT_TRUE(sameBits(depth, before[1]));
    EXPECT_TRUE(sameBits(aux, before[2]));
}

TEST(FrameIntake, GivesEveryFrameStorageOfItsOwn) {
    // A host that kept the images of the frame before keeps their pixels.
    WithFrame w;
    const cv::Mat heldColor = w.ruler.colorImage;
    const cv::Mat heldSmall = w.ruler.depthSmall;
    const cv::Mat heldCloud = w.ruler.pointCloud;
    const cv::Mat heldCopy = w.ruler.pointCloudSmallCopy;
    const std::array<cv::Mat, 4> before{heldColor.clone(), heldSmall.clone(), heldCloud.clone(), heldCopy.clone()};
    EXPECT_TRUE(w.ruler.getCameraFrame(cv::Mat::zeros(48, 64, CV_8UC3), cv::Mat::zeros(48, 64, CV_16UC1)));
    EXPECT_TRUE(sameBits(heldColor, before[0]));
    EXPECT_TRUE(sameBits(heldSmall, before[1]));
    EXPECT_TRUE(sameBits(heldCloud, before[2]));
    EXPECT_TRUE(sameBits(heldCopy, before[3]));
}

TEST(FrameIntake, AcceptsItsOwnImagesAsAFrame) {
    WithFrame w;
    EXPECT_TRUE(w.ruler.getCameraFrame(w.ruler.colorImage, w.ruler.depthImage));
    w.expectUnchanged();
}

TEST(FrameIntake, KeepsTheThirdImageOfAnyKind) {
    WithFrame w;
    const std::array<int, 3> cube{2, 3, 4};
    for (const cv::Mat& aux : {cv::Mat(3, 200, CV_64FC2, cv::Scalar::all(4)), cv::Mat(),
                               cv::Mat(3, cube.data(), CV_8UC1, cv::Scalar(5)), cv::Mat(1, 1, CV_8UC1)}) {
        EXPECT_TRUE(w.ruler.getCameraFrame(w.color, w.depth, aux));
        EXPECT_EQ(w.ruler.auxImage.type(), aux.type());
        EXPECT_EQ(w.ruler.auxImage.dims, aux.dims);
        EXPECT_EQ(w.ruler.auxImage.total(), aux.total());
        w.expectUnchanged();
    }
    EXPECT_TRUE(w.ruler.getCameraFrame(w.color, w.depth));
    EXPECT_EQ(w.ruler.auxImage.total(), 1U) << "the two-image form leaves the third image";
}

TEST(FrameIntake, KeepsTheClonesOfAnEmptyFrameAndNothingElse) {
    for (const bool colorGiven : {false, true}) {
        for (const bool debug : {false, true}) {
            WithFrame w;
            w.ruler.debugMode = debug;
            const cv::Mat newColor = colorGiven ? cv::Mat(48, 64, CV_8UC3, cv::Scalar::all(3)) : cv::Mat();
            const cv::Mat newDepth = colorGiven ? cv::Mat() : cv::Mat(48, 64, CV_16UC1, cv::Scalar(3));
            const cv::Mat aux(2, 2, CV_8UC1, cv::Scalar(1));
            const Quorvel before = detachedCopy(w.ruler);
            const CapturedOutput output;
            EXPECT_FALSE(w.ruler.getCameraFrame(newColor, newDepth, aux));
            EXPECT_EQ(output.text(), debug ? kEmptyMessage : "");
            EXPECT_TRUE(sameBits(w.ruler.colorImage, newColor.clone()));
            EXPECT_TRUE(sameBits(w.ruler.depthImage, newDepth.clone()));
            EXPECT_TRUE(sameBits(w.ruler.auxImage, aux));
            EXPECT_TRUE(sameBits(w.ruler.colorSmall, before.colorSmall));
            EXPECT_TRUE(sameBits(w.ruler.depthSmall, before.depthSmall));
            EXPECT_TRUE(sameBits(w.ruler.pointCloud, before.pointCloud));
            EXPECT_TRUE(sameBits(w.ruler.pointCloudSmall, before.pointCloudSmall));
            EXPECT_TRUE(sameBits(w.ruler.pointCloudSmallCopy, before.pointCloudSmallCopy));
        }
    }
}

TEST(FrameIntake, AppliesTheRuleForEmptyImagesBeforeTheCheckOfTheOther) {
    // The colour image fits nothing, but the depth is empty: clones are kept and the message is that of empty images.
    WithFrame w;
    w.ruler.debugMode = true;
    const cv::Mat odd(2, 3, CV_32FC1, cv::Scalar(1));
    const CapturedOutput output;
    EXPECT_FALSE(w.ruler.getCameraFrame(odd, cv::Mat()));
    EXPECT_EQ(output.text(), kEmptyMessage);
    EXPECT_TRUE(sameBits(w.ruler.colorImage, odd));
}

TEST(FrameIntake, RefusesMismatchedFramesAndChangesNothing) {
    const std::array<int, 3> cube{2, 48, 64};
    const cv::Mat color(48, 64, CV_8UC3, cv::Scalar::all(1));
    const cv::Mat depth(48, 64, CV_16UC1, cv::Scalar(1));
    const std::vector<std::pair<cv::Mat, cv::Mat>> frames{
        {cv::Mat(48, 64, CV_8UC1), depth},          {cv::Mat(48, 64, CV_8UC4), depth},
        {cv::Mat(48, 63, CV_8UC3), depth},          {color, cv::Mat(49, 64, CV_16UC1)},
        {color, cv::Mat(48, 64, CV_16SC1)},         {color, cv::Mat(48, 64, CV_32FC1)},
        {color, cv::Mat(64, 48, CV_16UC1)},         {cv::Mat(3, cube.data(), CV_8UC3), depth},
        {color, cv::Mat(3, cube.data(), CV_16UC1)}, {color, cv::Mat(48, 0, CV_16UC1)},
    };
    for (std::size_t i = 0; i < frames.size(); ++i) {
        WithFrame w;
        w.ruler.auxImage = cv::Mat(1, 1, CV_8UC1, cv::Scalar(7));
        w.ruler.productType = GROUND_TRACKING;
        {
            const CapturedOutput output;
            EXPECT_FALSE(w.ruler.getCameraFrame(frames[i].first, frames[i].second, color)) << "frame " << i;
            EXPECT_EQ(output.text(), "") << "frame " << i;
        }
        w.ruler.debugMode = true;
        const CapturedOutput output;
        EXPECT_FALSE(w.ruler.getCameraFrame(frames[i].first, frames[i].second)) << "frame " << i;
        const std::string line = output.text();
        EXPECT_EQ(line.rfind("Frame refused: expected colour and depth of 64 x 48", 0), 0U) << line;
        EXPECT_EQ(line.find('\n'), line.size() - 1) << "one line: " << line;
        w.expectUnchanged();
        EXPECT_EQ(w.ruler.auxImage.total(), 1U) << "frame " << i;
        EXPECT_FALSE(w.ruler.calibStatus) << "frame " << i;
    }
}

TEST(FrameIntake, RefusesFramesWithoutAUsableDownScale) {
    for (const int downScale : {0, -1, -4, 49, 1000}) {
        WithFrame w;
        w.ruler.downScale = downScale;
        w.ruler.debugMode = true;
        const CapturedOutput output;
        EXPECT_FALSE(w.ruler.getCameraFrame(w.color, w.depth)) << downScale;
        EXPECT_EQ(output.text().rfind("Frame refused: ", 0), 0U) << output.text();
        w.ruler.downScale = 4;
        w.expectUnchanged();
    }
}

TEST(FrameIntake, TakesTheSmallestFrames) {
    Quorvel ruler(60, 60, 2, 2, 4, 4, false, "");
    Draws draws(5);
    const cv::Mat color = drawColor(draws, {4, 4});
    const cv::Mat depth = drawDepth(draws, {4, 4});
    EXPECT_TRUE(ruler.getCameraFrame(color, depth));
    EXPECT_EQ(ruler.depthSmall.size(), cv::Size(1, 1));
    expectDerived(ruler, color, depth);
    Quorvel tooSmall(60, 60, 2, 2, 3, 3, false, "");
    EXPECT_FALSE(tooSmall.getCameraFrame(color(cv::Rect(0, 0, 3, 3)), depth(cv::Rect(0, 0, 3, 3))));
    EXPECT_TRUE(tooSmall.colorImage.empty());
}

TEST(FrameIntake, RefusesFramesOfAnUnconfiguredRuler) {
    Quorvel ruler(60, 60, 32, 24, 64, 48, true, "no-such-folder");
    ASSERT_EQ(ruler.downScale, 0);
    ruler.debugMode = true;
    Draws draws(6);
    const cv::Mat color = drawColor(draws, {64, 48});
    const cv::Mat depth = drawDepth(draws, {64, 48});
    const CapturedOutput output;
    EXPECT_FALSE(ruler.getCameraFrame(color, depth));
    EXPECT_EQ(output.text(), kEmptyMessage) << "its own images count, and it has none";
    EXPECT_TRUE(ruler.colorImage.empty());
    EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(), cv::Mat(), cv::Mat()));
    // With images, but still without a frame size.
    ruler.colorImage = drawColor(draws, {64, 48});
    ruler.depthImage = drawDepth(draws, {64, 48});
    EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(), cv::Mat()));
    EXPECT_TRUE(ruler.pointCloud.empty());
}

TEST(FrameIntake, DerivesFromItsOwnImagesInOfflineMode) {
    WithFrame w;
    w.ruler.offlineMode = true;
    w.ruler.depthSmall.setTo(0);
    w.ruler.pointCloud.setTo(cv::Scalar::all(0));
    EXPECT_TRUE(w.ruler.getCameraFrame(cv::Mat(), cv::Mat()));
    w.expectUnchanged();
    const cv::Mat other(48, 64, CV_16UC1, cv::Scalar(5));
    EXPECT_TRUE(w.ruler.getCameraFrame(cv::Mat(48, 64, CV_8UC3), other, other)) << "the arguments are ignored";
    w.expectUnchanged();
    EXPECT_TRUE(w.ruler.auxImage.empty());
    EXPECT_TRUE(w.ruler.getCameraFrame(cv::Mat(1, 1, CV_8UC1), other)) << "even ones that do not fit";
}

TEST(FrameIntake, FitsThePlaneAnewOnlyInGroundTracking) {
    DepthScene scene;
    scene.size = {400, 320};
    scene.focal = 380;
    scene.noise = 1;
    Draws draws(9);
    const cv::Mat depth = scene.depth(draws);
    for (const ProductType type : {KIOSK, GROUND_GROWING, KIOSK_LOW_OBJECT}) {
        Quorvel ruler = scene.ruler();
        ruler.productType = type;
        EXPECT_TRUE(ruler.getCameraFrame(scene.color(), depth));
        EXPECT_FALSE(ruler.calibStatus) << type;
        EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0, 0, 0)) << type;
    }
    Quorvel ruler = scene.ruler();
    ruler.productType = GROUND_TRACKING;
    std::srand(5);
    EXPECT_TRUE(ruler.getCameraFrame(scene.color(), depth));
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_NEAR(ruler.refPlaneOffset, 1000, 2);
    EXPECT_NEAR(ruler.refPlaneNormal[2], 1, 1e-3);
    EXPECT_EQ(ruler.cameraHeight, 0.0F) << "only a calibration writes the camera height";
    // The same draws by hand on the images of a plain intake.
    Quorvel byHand = scene.ruler();
    EXPECT_TRUE(byHand.getCameraFrame(scene.color(), depth));
    std::srand(5);
    EXPECT_EQ(byHand.ransacCalibRef(), 0);
    EXPECT_TRUE(sameBits(ruler.refPlaneNormal, byHand.refPlaneNormal));
    EXPECT_TRUE(sameBits(ruler.refPlaneOffset, byHand.refPlaneOffset));
    EXPECT_EQ(ruler.minObjectPixels, byHand.minObjectPixels);
}

TEST(FrameIntake, CountsAsCalibratedInGroundTrackingEvenWhenTheFitFails) {
    // Too few points for a fit: the plane stays as it was.
    WithFrame w;
    w.ruler.productType = GROUND_TRACKING;
    w.ruler.refPlaneNormal = {0, 0, 1};
    w.ruler.refPlaneOffset = 500;
    EXPECT_TRUE(w.ruler.getCameraFrame(w.color, w.depth));
    EXPECT_TRUE(w.ruler.calibStatus);
    EXPECT_EQ(w.ruler.refPlaneNormal, cv::Vec3f(0, 0, 1));
    EXPECT_EQ(w.ruler.refPlaneOffset, 500.0F);
    // (50 / 500 * 60 / 4)^2 = 2.25.
    EXPECT_EQ(w.ruler.minObjectPixels, 2);
}

}  // namespace

}  // namespace quorvel::test
