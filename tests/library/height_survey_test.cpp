// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "measure/height_cut.h"

namespace quorvel::test {

namespace {

using internal::HeightSurvey;
using internal::Plane;
using internal::surveyHeights;

const Plane kLevel{{0.0F, 0.0F, 1.0F}, 1000.0F};

cv::Mat flatCloud(float z) {
    return {4, 5, CV_32FC3, cv::Scalar(0, 0, static_cast<double>(z))};
}

TEST(SurveyHeights, CountsMeasuredAndRemovedPixelsAndFindsTheHighest) {
    cv::Mat cloud = flatCloud(1000.0F);
    cloud.at<cv::Vec3f>(0, 0) = {0, 0, 0};         // no depth
    cloud.at<cv::Vec3f>(1, 1) = {10, 10, 970.0F};  // the highest
    cloud.at<cv::Vec3f>(2, 2) = {10, 10, 995.0F};  // exactly at the ground cut: stays
    const HeightSurvey survey = surveyHeights(cloud, kLevel, 995.0F);
    EXPECT_EQ(survey.measured, 19);
    EXPECT_EQ(survey.removedAsGround, 17);
    EXPECT_EQ(survey.highest, 30.0);
}

TEST(SurveyHeights, TheHighestMayBeRemovedAsGround) {
    // A tilted plane: far away along the axis, and yet high above it.
    const Plane tilted{{0.6F, 0.0F, 0.8F}, 800.0F};
    cv::Mat cloud = flatCloud(1000.0F);
    cloud.at<cv::Vec3f>(3, 4) = {-500.0F, 0, 1200.0F};
    const HeightSurvey survey = surveyHeights(cloud, tilted, 1100.0F);
    EXPECT_EQ(survey.removedAsGround, 1);
    EXPECT_NEAR(survey.highest, 140.0, 1e-3);
}

TEST(SurveyHeights, AllMayLieBeyondThePlane) {
    EXPECT_EQ(surveyHeights(flatCloud(1008.0F), kLevel, 1000.0F).highest, -8.0);
}

TEST(SurveyHeights, AFrameWithoutDepthHasNoHighest) {
    for (const cv::Mat& cloud : {flatCloud(0.0F), cv::Mat()}) {
        const HeightSurvey survey = surveyHeights(cloud, kLevel, 1000.0F);
        EXPECT_EQ(survey.measured, 0);
        EXPECT_EQ(survey.removedAsGround, 0);
        EXPECT_EQ(survey.highest, 0.0);
    }
}

}  // namespace

}  // namespace quorvel::test
