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
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/members.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

static_assert(KIOSK == 0 && GROUND_TRACKING == 1 && GROUND_GROWING == 2 && KIOSK_LOW_OBJECT == 3);
static_assert(std::is_same_v<std::underlying_type_t<ProductType>, std::int32_t>);

Quorvel normalRuler() {
    return {600, 500, 321, 239, 640, 480, false, "some-folder"};
}

TEST(Construction, StartsARecordEmpty) {
    const MeasureResult r;
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
    for (const auto& [name, image] : rulerImages()) {
        EXPECT_TRUE((r.*image).empty()) << name;
    }
    for (const auto& [name, buffer] : rulerBuffers()) {
        EXPECT_TRUE((r.*buffer).empty()) << name;
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

TEST(Construction, RunsNoStartWithoutAnOfflineFolder) {
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

/// A value of each type that no ruler starts with; another one for every number.
void fill(cv::Mat& image, int number) {
    image = cv::Mat(2, 3, CV_8UC1, cv::Scalar(number));
}
void fill(std::vector<cv::Mat>& buffer, int number) {
    buffer.assign(2, cv::Mat(1, 2, CV_8UC1, cv::Scalar(number)));
}
void fill(MeasureResult& result, int number) {
    const auto size = static_cast<float>(number);
    result = {{{1, 2}, {3, 4}}, size, size + 1, size + 2, true, true, size + 3};
}
void fill(cv::Point (&points)[3], int number) {
    for (cv::Point& point : points) {
        point = {number, -number};
        ++number;
    }
}
void fill(cv::Vec3f& vector, int number) {
    vector = {0.1F, 0.2F, static_cast<float>(number)};
}
void fill(cv::Rect& region, int number) {
    region = {1, 2, 3, number};
}
void fill(float& value, int number) {
    value = static_cast<float>(10000 + number);
}
void fill(int& value, int number) {
    value = 20000 + number;
}
void fill(bool& value, int /*number*/) {
    value = true;
}
void fill(std::string& text, int number) {
    text = "a text so long that it needs storage of its own " + std::to_string(number);
}

/// A ruler none of whose members has its initial value.
Quorvel filledRuler() {
    Quorvel r = normalRuler();
    int number = 0;
    forEachMember([&](const char* name, auto member) {
        fill(r.*member, ++number);
        EXPECT_FALSE(sameMember(r, normalRuler(), member)) << name << " still has its initial value";
    });
    return r;
}

/// Checks that a copy has the pixels of the original's images and the values of everything else.
void expectCopy(const Quorvel& copy, const Quorvel& original) {
    EXPECT_TRUE(sameRuler(copy, original));
    for (const auto& [name, image] : rulerImages()) {
        EXPECT_EQ((copy.*image).data, (original.*image).data) << name << " shares its pixels";
    }
    for (const auto& [name, buffer] : rulerBuffers()) {
        ASSERT_EQ((copy.*buffer).size(), 2U) << name;
        EXPECT_NE((copy.*buffer).data(), (original.*buffer).data()) << name << " is a vector of its own";
        EXPECT_EQ((copy.*buffer)[1].data, (original.*buffer)[1].data) << name << ": its images share their pixels";
    }
    EXPECT_NE(copy.result.corners.data(), original.result.corners.data());
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
    EXPECT_TRUE(sameRuler(target, filledRuler()));
}

}  // namespace

}  // namespace quorvel::test
