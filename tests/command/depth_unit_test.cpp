// SPDX-License-Identifier: Apache-2.0
#include "kit/input/depth_unit.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace quorvel::command {

using namespace kit;
namespace {

std::vector<int> values(const cv::Mat& depth) {
    EXPECT_EQ(depth.type(), CV_16UC1);
    return {depth.begin<std::uint16_t>(), depth.end<std::uint16_t>()};
}

TEST(DepthUnit, MillimetresStayAsTheyAre) {
    const cv::Mat stored = (cv::Mat_<std::uint16_t>(1, 3) << 0, 713, 65535);
    EXPECT_EQ(values(depthInMillimetres(stored, 1.0)), (std::vector<int>{0, 713, 65535}));
}

TEST(DepthUnit, TenthsOfAMillimetreAreRounded) {
    const cv::Mat stored = (cv::Mat_<std::uint16_t>(1, 4) << 0, 7134, 7136, 65535);
    EXPECT_EQ(values(depthInMillimetres(stored, 0.1)), (std::vector<int>{0, 713, 714, 6554}));
}

TEST(DepthUnit, MetresInFloatWithEverythingThatIsNoDepth) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const cv::Mat stored = (cv::Mat_<float>(1, 6) << 0.7134F, 1.0F, kNan, kInfinity, -1.0F, 70.0F);
    EXPECT_EQ(values(depthInMillimetres(stored, 1000.0)), (std::vector<int>{713, 1000, 0, 0, 0, 65535}));
}

TEST(DepthUnit, ResultSharesNoPixelsWithTheSource) {
    cv::Mat stored = (cv::Mat_<std::uint16_t>(1, 1) << 500);
    const cv::Mat depth = depthInMillimetres(stored, 1.0);
    stored.setTo(7);
    EXPECT_EQ(values(depth), std::vector<int>{500});
}

TEST(DepthUnit, GreyPictureIsBrightNearDarkFarBlackWithoutDepth) {
    const cv::Mat depth = (cv::Mat_<std::uint16_t>(1, 4) << 0, 500, 750, 1000);
    const cv::Mat grey = greyFromDepth(depth);
    ASSERT_EQ(grey.type(), CV_8UC3);
    ASSERT_EQ(grey.size(), depth.size());
    const auto level = [&grey](int col) { return static_cast<int>(grey.at<cv::Vec3b>(0, col)[0]); };
    EXPECT_EQ(level(0), 0);
    EXPECT_GT(level(1), level(2));
    EXPECT_GT(level(2), level(3));
    EXPECT_GT(level(3), 0);
    EXPECT_EQ(grey.at<cv::Vec3b>(0, 1)[0], grey.at<cv::Vec3b>(0, 1)[2]);
}

TEST(DepthUnit, GreyPictureOfEmptyDepthIsBlack) {
    const cv::Mat grey = greyFromDepth(cv::Mat::zeros(4, 5, CV_16UC1));
    EXPECT_EQ(cv::countNonZero(grey.reshape(1)), 0);
}

}  // namespace
}  // namespace quorvel::command
