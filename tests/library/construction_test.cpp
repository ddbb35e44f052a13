// SPDX-License-Identifier: Apache-2.0
#include <climits>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/measure_draws.h"
#include "library/same_result.h"
#include "support/captured_output.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

static_assert(KIOSK == 0 && GROUND_TRACKING == 1 && GROUND_GROWING == 2 && KIOSK_LOW_OBJECT == 3);
static_assert(std::is_same_v<std::underlying_type_t<ProductType>, std::int32_t>);

Quorvel normalRuler() {
    return {600, 500, 321, 239, 640, 480, false, "some-folder"};
}

/// Every image member in the order of their declaration.
std::vector<cv::Mat*> imagesOf(Quorvel& r) {
    return {&r.colorImage,     &r.depthImage,          &r.auxImage,    &r.pointCloud,
            &r.calibFullCloud, &r.pointCloudSmall,     &r.colorSmall,  &r.depthSmall,
            &r.calibImage,     &r.pointCloudSmallCopy, &r.calibCloud,  &r.spareImage1,
            &r.spareImage2,    &r.spareImage3,         &r.spareImage4, &r.spareImage5};
}

/// Every buffer member in the order of their declaration.
std::vector<std::vector<cv::Mat>*> buffersOf(Quorvel& r) {
    return {&r.colorFrameBuffer,          &r.depthFrameBuffer, &r.pointCloudBuffer, &r.spareBuffer1,
            &r.pointCloudSmallBuffer,     &r.colorSmallBuffer, &r.depthSmallBuffer, &r.spareBuffer2,
            &r.pointCloudSmallCopyBuffer, &r.spareBuffer3};
}

TEST(Construction, DeclaresTheMembersInTheirOrder) {
    const Quorvel r = normalRuler();
    const std::vector<std::pair<std::string, const void*>> members{
        {"colorImage", &r.colorImage},
        {"depthImage", &r.depthImage},
        {"auxImage", &r.auxImage},
        {"colorFrameBuffer", &r.colorFrameBuffer},
        {"depthFrameBuffer", &r.depthFrameBuffer},
        {"result", &r.result},
        {"calibPoints", &r.calibPoints},
        {"pointCloud", &r.pointCloud},
        {"calibFullCloud", &r.calibFullCloud},
        {"pointCloudSmall", &r.pointCloudSmall},
        {"colorSmall", &r.colorSmall},
        {"depthSmall", &r.depthSmall},
        {"calibImage", &r.calibImage},
        {"pointCloudSmallCopy", &r.pointCloudSmallCopy},
        {"calibCloud", &r.calibCloud},
        {"pointCloudBuffer", &r.pointCloudBuffer},
        {"spareBuffer1", &r.spareBuffer1},
        {"pointCloudSmallBuffer", &r.pointCloudSmallBuffer},
        {"colorSmallBuffer", &r.colorSmallBuffer},
        {"depthSmallBuffer", &r.depthSmallBuffer},
        {"spareBuffer2", &r.spareBuffer2},
        {"pointCloudSmallCopyBuffer", &r.pointCloudSmallCopyBuffer},
        {"spareBuffer3", &r.spareBuffer3},
        {"spareImage1", &r.spareImage1},
        {"spareImage2", &r.spareImage2},
        {"spareImage3", &r.spareImage3},
        {"spareImage4", &r.spareImage4},
        {"spareImage5", &r.spareImage5},
        {"refPlaneNormal", &r.refPlaneNormal},
        {"calibrationRoI", &r.calibrationRoI},
        {"effectiveRegion", &r.effectiveRegion},
        {"refPlaneOffset", &r.refPlaneOffset},
        {"cameraType", &r.cameraType},
        {"fx", &r.fx},
        {"fy", &r.fy},
        {"invFx", &r.invFx},
        {"invFy", &r.invFy},
        {"cx", &r.cx},
        {"cy", &r.cy},
        {"fxSmall", &r.fxSmall},
        {"fySmall", &r.fySmall},
        {"invFxSmall", &r.invFxSmall},
        {"invFySmall", &r.invFySmall},
        {"cxSmall", &r.cxSmall},
        {"cySmall", &r.cySmall},
        {"imageWidth", &r.imageWidth},
        {"imageHeight", &r.imageHeight},
        {"downScale", &r.downScale},
        {"minObjectHeight", &r.minObjectHeight},
        {"productType", &r.productType},
        {"calibStatus", &r.calibStatus},
        {"minObjectPixels", &r.minObjectPixels},
        {"reservedValue", &r.reservedValue},
        {"offlineMode", &r.offlineMode},
        {"paramDir", &r.paramDir},
        {"calFilePath", &r.calFilePath},
        {"backgroundPath", &r.backgroundPath},
        {"offlineDir", &r.offlineDir},
        {"cameraTypeSet", &r.cameraTypeSet},
        {"debugMode", &r.debugMode},
        {"spareFloat1", &r.spareFloat1},
        {"cameraHeight", &r.cameraHeight},
        {"spareFloat2", &r.spareFloat2},
        {"filterWeight", &r.filterWeight},
    };
    EXPECT_EQ(members.front().second, static_cast<const void*>(&r)) << "nothing stands before the first member";
    for (std::size_t i = 1; i < members.size(); ++i) {
        EXPECT_LT(members[i - 1].second, members[i].second)
            << members[i].first << " must stand behind " << members[i - 1].first;
    }
}

TEST(Construction, OrdersTheFieldsOfARecord) {
    const MeasureResult r;
    const std::vector<const void*> fields{&r.corners, &r.length,   &r.width,     &r.height,
                                          &r.inView,  &r.onTarget, &r.sideMargin};
    for (std::size_t i = 1; i < fields.size(); ++i) {
        EXPECT_LT(fields[i - 1], fields[i]) << "field " << i;
    }
    EXPECT_TRUE(r.corners.empty());
    EXPECT_EQ(r.length, 0.0F);
    EXPECT_EQ(r.width, 0.0F);
    EXPECT_EQ(r.height, 0.0F);
    EXPECT_FALSE(r.inView);
    EXPECT_FALSE(r.onTarget);
    EXPECT_EQ(r.sideMargin, 0.0F);
}

/// Checks the initial values that all starts share.
void expectCommonStart(Quorvel& r) {
    for (const cv::Mat* image : imagesOf(r)) {
        EXPECT_TRUE(image->empty());
    }
    for (const std::vector<cv::Mat>* buffer : buffersOf(r)) {
        EXPECT_TRUE(buffer->empty());
    }
    EXPECT_TRUE(isEmptyResult(r.result));
    for (const cv::Point& point : r.calibPoints) {
        EXPECT_EQ(point, cv::Point(0, 0));
    }
    EXPECT_EQ(r.refPlaneNormal, cv::Vec3f(0, 0, 0));
    EXPECT_EQ(r.refPlaneOffset, 0.0F);
    EXPECT_EQ(r.cameraType, 0.0F);
    EXPECT_EQ(r.productType, KIOSK);
    EXPECT_FALSE(r.calibStatus);
    EXPECT_EQ(r.minObjectPixels, 0);
    EXPECT_EQ(r.paramDir, "./param");
    EXPECT_EQ(r.calFilePath, "./param/cal.txt");
    EXPECT_EQ(r.backgroundPath, "./param/bg.bmp");
    EXPECT_FALSE(r.cameraTypeSet);
    EXPECT_FALSE(r.debugMode);
    EXPECT_EQ(r.spareFloat1, 0.0F);
    EXPECT_EQ(r.cameraHeight, 0.0F);
    EXPECT_EQ(r.spareFloat2, 0.0F);
    EXPECT_EQ(r.filterWeight, 0.0F);
}

TEST(Construction, SetsEveryMemberInTheNormalStart) {
    const CapturedOutput output;
    Quorvel r = normalRuler();
    EXPECT_EQ(output.text(), "");
    expectCommonStart(r);
    EXPECT_EQ(r.calibrationRoI, cv::Rect(270, 190, 100, 100));
    EXPECT_EQ(r.effectiveRegion, cv::Rect(270, 190, 100, 100));
    EXPECT_EQ(r.fx, 600.0F);
    EXPECT_EQ(r.fy, 500.0F);
    EXPECT_EQ(r.cx, 321.0F);
    EXPECT_EQ(r.cy, 239.0F);
    EXPECT_EQ(r.invFx, static_cast<float>(1.0 / 600.0));
    EXPECT_EQ(r.invFy, static_cast<float>(1.0 / 500.0));
    EXPECT_EQ(r.fxSmall, 150.0F);
    EXPECT_EQ(r.fySmall, 125.0F);
    EXPECT_EQ(r.invFxSmall, r.invFx * 4.0F);
    EXPECT_EQ(r.invFySmall, r.invFy * 4.0F);
    EXPECT_EQ(r.cxSmall, 80.25F);
    EXPECT_EQ(r.cySmall, 59.75F);
    EXPECT_EQ(r.imageWidth, 640);
    EXPECT_EQ(r.imageHeight, 480);
    EXPECT_EQ(r.downScale, 4);
    EXPECT_EQ(r.minObjectHeight, 10.0F);
    EXPECT_EQ(r.reservedValue, 50);
    EXPECT_FALSE(r.offlineMode);
    EXPECT_EQ(r.offlineDir, "some-folder");
}

cv::Rect regionOf(int width, int height) {
    const Quorvel ruler(600, 600, 320, 240, width, height, false, "");
    EXPECT_EQ(ruler.calibrationRoI, ruler.effectiveRegion);
    EXPECT_EQ(ruler.imageWidth, width);
    EXPECT_EQ(ruler.imageHeight, height);
    return ruler.effectiveRegion;
}

TEST(Construction, HalvesTheSizeTowardsZero) {
    EXPECT_EQ(regionOf(641, 481), cv::Rect(270, 190, 100, 100));
    EXPECT_EQ(regionOf(99, 100), cv::Rect(-1, 0, 100, 100));
    EXPECT_EQ(regionOf(40, 30), cv::Rect(-30, -35, 100, 100));
    EXPECT_EQ(regionOf(0, 1), cv::Rect(-50, -50, 100, 100));
    EXPECT_EQ(regionOf(-5, -100), cv::Rect(-52, -100, 100, 100));
    EXPECT_EQ(regionOf(INT_MAX, INT_MIN), cv::Rect(INT_MAX / 2 - 50, INT_MIN / 2 - 50, 100, 100));
}

TEST(Construction, ChecksNoFocalLength) {
    const Quorvel ruler(0, -0.0F, 320, 240, 640, 480, false, "");
    EXPECT_EQ(ruler.invFx, kInfinity);
    EXPECT_EQ(ruler.invFxSmall, kInfinity);
    EXPECT_EQ(ruler.invFy, -kInfinity);
    EXPECT_EQ(ruler.fxSmall, 0.0F);
    const Quorvel odd(kNaN, kInfinity, 320, 240, 640, 480, false, "");
    EXPECT_TRUE(std::isnan(odd.invFx));
    EXPECT_EQ(odd.invFy, 0.0F);
}

TEST(Construction, InvertsTheFocalLengthsInDouble) {
    Draws draws(115);
    for (int run = 0; run < 500; ++run) {
        const float fx = draws.real(0.01F, 3000);
        const Quorvel ruler(fx, 1, 0, 0, 640, 480, false, "");
        ASSERT_EQ(ruler.invFx, static_cast<float>(1.0 / static_cast<double>(fx))) << fx;
    }
}

/// Checks that no start has run: every setting is zero.
void expectUnconfigured(Quorvel& r, const std::string& dir) {
    expectCommonStart(r);
    EXPECT_EQ(r.calibrationRoI, cv::Rect());
    EXPECT_EQ(r.effectiveRegion, cv::Rect());
    for (const float value : {r.fx, r.fy, r.cx, r.cy, r.invFx, r.invFy, r.fxSmall, r.fySmall, r.cxSmall, r.cySmall,
                              r.invFxSmall, r.invFySmall, r.minObjectHeight}) {
        EXPECT_EQ(value, 0.0F);
    }
    EXPECT_EQ(r.imageWidth, 0);
    EXPECT_EQ(r.imageHeight, 0);
    EXPECT_EQ(r.downScale, 0);
    EXPECT_EQ(r.reservedValue, 0);
    EXPECT_TRUE(r.offlineMode);
    EXPECT_EQ(r.offlineDir, dir);
}

TEST(Construction, RunsNoStartForAnOfflineFolderThatIsNone) {
    const WorkingDirectory directory;
    std::ofstream("regular-file") << "4\n";
    const CapturedOutput output;
    for (const std::string name : {"missing", "regular-file", "", "regular-file/below"}) {
        Quorvel ruler(600, 500, 321, 239, 640, 480, true, name);
        expectUnconfigured(ruler, name);
        EXPECT_FALSE(HasFailure()) << "folder '" << name << "'";
        EXPECT_EQ(ruler.measureOnce(), 1) << "and measuring finds no calibration";
    }
    EXPECT_EQ(output.text(), "");
}

/// A ruler none of whose members has its initial value.
Quorvel filledRuler() {
    Quorvel r = normalRuler();
    uchar shade = 1;
    for (cv::Mat* image : imagesOf(r)) {
        *image = cv::Mat(2, 3, CV_8UC1, cv::Scalar(shade++));
    }
    for (std::vector<cv::Mat>* buffer : buffersOf(r)) {
        buffer->assign(2, cv::Mat(1, 2, CV_8UC1, cv::Scalar(shade++)));
    }
    r.result = {{{1, 2}, {3, 4}}, 5, 6, 7, true, true, 8};
    r.calibPoints[0] = {1, 2};
    r.calibPoints[1] = {3, 4};
    r.calibPoints[2] = {5, 6};
    r.refPlaneNormal = {0.1F, 0.2F, 0.3F};
    r.calibrationRoI = {1, 2, 3, 4};
    r.effectiveRegion = {5, 6, 7, 8};
    float value = 100;
    for (float* member : {&r.refPlaneOffset, &r.cameraType, &r.fx, &r.fy, &r.invFx, &r.invFy, &r.cx, &r.cy, &r.fxSmall,
                          &r.fySmall, &r.invFxSmall, &r.invFySmall, &r.cxSmall, &r.cySmall, &r.minObjectHeight,
                          &r.spareFloat1, &r.cameraHeight, &r.spareFloat2, &r.filterWeight}) {
        *member = value++;
    }
    int number = 200;
    for (int* member :
         {&r.imageWidth, &r.imageHeight, &r.downScale, &r.productType, &r.minObjectPixels, &r.reservedValue}) {
        *member = number++;
    }
    r.calibStatus = r.offlineMode = r.cameraTypeSet = r.debugMode = true;
    r.paramDir = "a folder with a name that needs storage of its own";
    r.calFilePath = "b";
    r.backgroundPath = "c";
    r.offlineDir = "d";
    return r;
}

/// Checks that a copy has the pixels of the original's images and the values of everything else.
void expectCopy(Quorvel& copy, Quorvel& original) {
    const auto copied = imagesOf(copy);
    const auto images = imagesOf(original);
    for (std::size_t i = 0; i < images.size(); ++i) {
        EXPECT_EQ(copied[i]->data, images[i]->data) << "image " << i << " shares its pixels";
        EXPECT_EQ(copied[i]->size(), images[i]->size()) << "image " << i;
    }
    const auto copiedBuffers = buffersOf(copy);
    const auto buffers = buffersOf(original);
    for (std::size_t i = 0; i < buffers.size(); ++i) {
        ASSERT_EQ(copiedBuffers[i]->size(), 2U) << "buffer " << i;
        EXPECT_NE(copiedBuffers[i]->data(), buffers[i]->data()) << "buffer " << i << " is a vector of its own";
        EXPECT_EQ(copiedBuffers[i]->at(1).data, buffers[i]->at(1).data) << "but its images share their pixels";
    }
    EXPECT_TRUE(sameResult(copy.result, original.result));
    EXPECT_NE(copy.result.corners.data(), original.result.corners.data());
    EXPECT_EQ(copy.calibPoints[0], original.calibPoints[0]);
    EXPECT_EQ(copy.calibPoints[1], original.calibPoints[1]);
    EXPECT_EQ(copy.calibPoints[2], original.calibPoints[2]);
    EXPECT_EQ(copy.refPlaneNormal, original.refPlaneNormal);
    EXPECT_EQ(copy.calibrationRoI, original.calibrationRoI);
    EXPECT_EQ(copy.effectiveRegion, original.effectiveRegion);
    const auto floats = [](const Quorvel& r) {
        return std::vector<float>{r.refPlaneOffset, r.cameraType,   r.fx,          r.fy,          r.invFx,
                                  r.invFy,          r.cx,           r.cy,          r.fxSmall,     r.fySmall,
                                  r.invFxSmall,     r.invFySmall,   r.cxSmall,     r.cySmall,     r.minObjectHeight,
                                  r.spareFloat1,    r.cameraHeight, r.spareFloat2, r.filterWeight};
    };
    EXPECT_EQ(floats(copy), floats(original));
    const auto ints = [](const Quorvel& r) {
        return std::vector<int>{r.imageWidth,  r.imageHeight,     r.downScale,
                                r.productType, r.minObjectPixels, r.reservedValue};
    };
    EXPECT_EQ(ints(copy), ints(original));
    EXPECT_TRUE(copy.calibStatus && copy.offlineMode && copy.cameraTypeSet && copy.debugMode);
    EXPECT_EQ(copy.paramDir, original.paramDir);
    EXPECT_EQ(copy.calFilePath, "b");
    EXPECT_EQ(copy.backgroundPath, "c");
    EXPECT_EQ(copy.offlineDir, "d");
}

TEST(Construction, CopiesEveryMemberAndSharesPixels) {
    Quorvel original = filledRuler();
    Quorvel copy(original);
    expectCopy(copy, original);
    copy.depthImage.at<uchar>(1, 2) = 77;
    EXPECT_EQ(original.depthImage.at<uchar>(1, 2), 77) << "pixels are shared until a member gets a new image";
    copy.depthImage = cv::Mat(2, 3, CV_8UC1, cv::Scalar(5));
    EXPECT_EQ(original.depthImage.at<uchar>(1, 2), 77);
    copy.depthSmallBuffer.clear();
    copy.result.corners.clear();
    EXPECT_EQ(original.depthSmallBuffer.size(), 2U);
    EXPECT_EQ(original.result.corners.size(), 2U);
}

TEST(Construction, AssignsEveryMemberAndSharesPixels) {
    Quorvel original = filledRuler();
    Quorvel target = normalRuler();
    Quorvel& reference = (target = original);
    EXPECT_EQ(&reference, &target);
    expectCopy(target, original);
    Quorvel& self = target;
    target = self;
    expectCopy(target, original);
}

TEST(Construction, KeepsPixelsAliveBeyondTheOriginal) {
    Quorvel target = normalRuler();
    {
        const Quorvel original = filledRuler();
        target = original;
    }
    EXPECT_EQ(target.colorImage.at<uchar>(0, 0), 1);
    EXPECT_EQ(target.spareBuffer3.at(1).at<uchar>(0, 1), 26);
}

}  // namespace

}  // namespace quorvel::test
