// SPDX-License-Identifier: Apache-2.0
#include "image/back_projection.h"

#include <cmath>

#include <gtest/gtest.h>

#include "library/measure_draws.h"
#include "library/plain/back_projection.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

cv::Mat backProjected(const cv::Mat& depth, const internal::BackProjection& camera) {
    cv::Mat cloud;
    internal::backProject(depth, camera, cloud);
    return cloud;
}

TEST(BackProjection, TurnsPixelsIntoPoints) {
    // cx = 1, cy = 0.5, 1 / fx = 0.01, 1 / fy = 0.02.
    cv::Mat depth = (cv::Mat_<ushort>(2, 3) << 1000, 500, 0, 0, 65535, 200);
    const cv::Mat cloud = backProjected(depth, {1, 0.5F, 0.01F, 0.02F});
    ASSERT_EQ(cloud.type(), CV_32FC3);
    ASSERT_EQ(cloud.size(), depth.size());
    EXPECT_EQ(cloud.at<cv::Vec3f>(0, 0), cv::Vec3f(-1000 * 0.01F, -500 * 0.02F, 1000));
    EXPECT_EQ(cloud.at<cv::Vec3f>(0, 1), cv::Vec3f(0, -250 * 0.02F, 500));
    EXPECT_EQ(cloud.at<cv::Vec3f>(0, 2), cv::Vec3f(0, 0, 0));
    EXPECT_EQ(cloud.at<cv::Vec3f>(1, 0), cv::Vec3f(0, 0, 0));
    EXPECT_EQ(cloud.at<cv::Vec3f>(1, 1), cv::Vec3f(0, 32767.5F * 0.02F, 65535));
    EXPECT_EQ(cloud.at<cv::Vec3f>(1, 2), cv::Vec3f(200 * 0.01F, 100 * 0.02F, 200));
}

TEST(BackProjection, MultipliesByTheDepthBeforeTheInverseFocalLength) {
    // Any other order gives other bits in this example.
    const cv::Mat depth(1, 4, CV_16UC1, cv::Scalar(11));
    const cv::Mat cloud = backProjected(depth, {0, 0, 0.1F, 0.1F});
    EXPECT_EQ(cloud.at<cv::Vec3f>(0, 3)[0], 33.0F * 0.1F);
    ASSERT_NE(3.0F * 0.1F * 11.0F, 33.0F * 0.1F) << "the example must tell the orders apart";
    ASSERT_NE(3.0F * (0.1F * 11.0F), 33.0F * 0.1F) << "the example must tell the orders apart";
}

TEST(BackProjection, LeavesPointsWithoutDepthAtZeroEvenWithInfiniteInverses) {
    cv::Mat depth = cv::Mat::zeros(1, 2, CV_16UC1);
    depth.at<ushort>(0, 1) = 5;
    const cv::Mat cloud = backProjected(depth, {0, 0, kInfinity, kInfinity});
    EXPECT_EQ(cloud.at<cv::Vec3f>(0, 0), cv::Vec3f(0, 0, 0));
    EXPECT_EQ(cloud.at<cv::Vec3f>(0, 1)[0], kInfinity);
    EXPECT_TRUE(std::isnan(cloud.at<cv::Vec3f>(0, 1)[1])) << "row 0 lies on the principal point: 0 * inf";
}

class BackProjectionLoops : public EveryLoopVariant {};

INSTANTIATE_TEST_SUITE_P(Loops, BackProjectionLoops, runnableLoopVariants(), loopVariantName);

TEST_P(BackProjectionLoops, AgreesWithThePlainFormOnRandomImages) {
    Draws draws(113);
    for (int run = 0; run < 2000; ++run) {
        const int columns = draws.between(1, 40);
        const int rows = draws.between(1, 15);
        cv::Mat depth = drawMatrix(draws, {columns, rows}, CV_16UC1);
        const int absent = draws.chance(20) ? 100 : draws.below(50);
        for (int i = 0; i < depth.rows * depth.cols; ++i) {
            if (!draws.chance(absent)) {
                depth.at<ushort>(i / depth.cols, i % depth.cols) = static_cast<ushort>(draws.below(65536));
            }
        }
        const float cx = draws.real(-10, 50);
        const float cy = draws.real(-10, 50);
        const float invFx = draws.chance(5) ? kInfinity : draws.real(0.0005F, 0.01F);
        const float invFy = draws.real(0.0005F, 0.01F);
        ASSERT_TRUE(
            sameBits(backProjected(depth, {cx, cy, invFx, invFy}), plain::backProject(depth, cx, cy, invFx, invFy)))
            << "run " << run;
    }
}

}  // namespace

}  // namespace quorvel::test
