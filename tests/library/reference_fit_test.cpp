// SPDX-License-Identifier: Apache-2.0
#include "calib/reference_fit.h"

#include <cmath>
#include <cstdlib>

#include <gtest/gtest.h>

#include "library/calib_support.h"
#include "library/plain/reference_fit.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

using internal::fitDominantPlane;
using internal::fitGrownPlane;
using internal::Plane;

const Plane kPrevious{cv::Vec3f(0.0F, 0.6F, 0.8F), 777.0F};

::testing::AssertionResult samePlane(const Plane& a, const cv::Vec3f& normal, float offset) {
    if (!sameBits(a.normal, normal) || !sameBits(a.offset, offset)) {
        return ::testing::AssertionFailure() << a.normal << ", " << a.offset << " and " << normal << ", " << offset;
    }
    return ::testing::AssertionSuccess();
}

TEST(FitDominantPlane, AFailedFitHandsBackThePreviousPlane) {
    Draws random(132);
    calib::FloorView view;
    view.width = 60;
    view.height = 60;
    const cv::Mat cloud = calib::floorCloud(view, random);
    EXPECT_TRUE(samePlane(fitDominantPlane(cloud, kPrevious).plane, kPrevious.normal, kPrevious.offset))
        << "58 * 58 = 3364 candidates are too few";
    EXPECT_TRUE(samePlane(fitDominantPlane(cv::Mat::zeros(90, 90, CV_32FC3), kPrevious).plane, kPrevious.normal,
                          kPrevious.offset));
    EXPECT_TRUE(samePlane(fitDominantPlane(cv::Mat::zeros(1, 1, CV_32FC3), kPrevious).plane, kPrevious.normal,
                          kPrevious.offset));
}

TEST(FitDominantPlane, AgreesWithThePlainStages) {
    Draws random(133);
    for (int i = 0; i < 60; ++i) {
        calib::FloorView view;
        view.slopeX = random.real(-0.3F, 0.3F);
        view.slopeY = random.real(-0.3F, 0.3F);
        view.noise = random.real(0.0F, 3.0F);
        view.absent = random.below(6);
        const cv::Mat cloud = calib::floorCloud(view, random);
        cv::Vec3f normal = kPrevious.normal;
        float offset = kPrevious.offset;
        std::srand(static_cast<unsigned>(i + 1));
        plain::fitDominantPlane(cloud, normal, offset);
        std::srand(static_cast<unsigned>(i + 1));
        EXPECT_TRUE(samePlane(fitDominantPlane(cloud, kPrevious).plane, normal, offset)) << "input " << i;
    }
}

/// A flat floor of 40 x 40 pixels and, as the region, its middle rows and columns 10 ... 29.
struct GrowScene {
    GrowScene() {
        Draws random(134);
        calib::FloorView view;
        view.width = 40;
        view.height = 40;
        view.slopeX = 0.1F;
        full = calib::floorCloud(view, random);
        region = cv::Mat::zeros(full.size(), CV_32FC3);
        const cv::Rect middle(10, 10, 20, 20);
        full(middle).copyTo(region(middle));
    }
    cv::Mat full;
    cv::Mat region;
};

TEST(FitGrownPlane, FindsAFloorFromAPartOfIt) {
    const GrowScene scene;
    const Plane plane = fitGrownPlane(scene.full, scene.region, 200.0F, kPrevious).plane;
    const float length = std::sqrt(1.01F);
    EXPECT_NEAR(plane.normal[0], -0.1F / length, 1e-4);
    EXPECT_NEAR(plane.normal[1], 0.0, 1e-4);
    EXPECT_NEAR(plane.normal[2], 1.0F / length, 1e-4);
    EXPECT_NEAR(plane.offset, 1000.0F / length, 0.1);
}

TEST(FitGrownPlane, LeavesTheRegionCloud) {
    const GrowScene scene;
    const cv::Mat before = scene.region.clone();
    fitGrownPlane(scene.full, scene.region, 200.0F, kPrevious);
    EXPECT_TRUE(sameBits(scene.region, before));
}

TEST(FitGrownPlane, GrowsAlongThePreviousPlaneWhenTheFirstFitFails) {
    // 400 points in the region, 1444 in the grown one: only the second fit has 1000.
    const GrowScene scene;
    const Plane flat{cv::Vec3f(0.0F, 0.0F, 1.0F), 500.0F};
    EXPECT_NEAR(fitGrownPlane(scene.full, scene.region, 1000.0F, flat).plane.offset, 1000.0F / std::sqrt(1.01F), 0.1);
    const Plane sideways{cv::Vec3f(1.0F, 0.0F, 0.0F), 500.0F};
    EXPECT_TRUE(samePlane(fitGrownPlane(scene.full, scene.region, 1000.0F, sideways).plane, sideways.normal, 500.0F))
        << "along another orientation nothing grows, and both fits fail";
}

TEST(FitGrownPlane, TwoFailedFitsHandBackThePreviousPlane) {
    const GrowScene scene;
    EXPECT_TRUE(samePlane(fitGrownPlane(scene.full, scene.region, 1601.0F, kPrevious).plane, kPrevious.normal,
                          kPrevious.offset));
    const cv::Mat nothing = cv::Mat::zeros(40, 40, CV_32FC3);
    EXPECT_TRUE(samePlane(fitGrownPlane(nothing, nothing, 0.5F, kPrevious).plane, kPrevious.normal, kPrevious.offset));
}

TEST(FitGrownPlane, AgreesWithThePlainStages) {
    Draws random(135);
    for (int i = 0; i < 60; ++i) {
        calib::FloorView view;
        view.width = random.between(1, 60);
        view.height = random.between(1, 60);
        view.slopeX = random.real(-0.4F, 0.4F);
        view.slopeY = random.real(-0.4F, 0.4F);
        view.noise = random.real(0.0F, 8.0F);
        view.absent = random.below(10);
        const cv::Mat full = calib::floorCloud(view, random);
        cv::Mat region = cv::Mat::zeros(full.size(), CV_32FC3);
        const int left = random.below(30);
        const int top = random.below(30);
        const int width = random.between(1, 30);
        const int height = random.between(1, 30);
        const cv::Rect inside = cv::Rect(left, top, width, height) & cv::Rect(0, 0, full.cols, full.rows);
        if (!inside.empty()) {
            full(inside).copyTo(region(inside));
        }
        const float minPoints = random.real(0.0F, 600.0F);
        cv::Vec3f normal = kPrevious.normal;
        float offset = kPrevious.offset;
        plain::fitGrownPlane(full, region, minPoints, normal, offset);
        EXPECT_TRUE(samePlane(fitGrownPlane(full, region, minPoints, kPrevious).plane, normal, offset))
            << "input " << i;
    }
}

}  // namespace

}  // namespace quorvel::test
