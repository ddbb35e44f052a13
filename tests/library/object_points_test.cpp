// SPDX-License-Identifier: Apache-2.0
#include "measure/object_points.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "library/measure_draws.h"
#include "library/plain/object_points.h"
#include "support/loop_variants.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

using Floats = std::vector<float>;
using Pixels = std::vector<cv::Point>;

const cv::Vec3f kTowardsScene(0.0F, 0.0F, 1.0F);

/// What was collected, in the plain form's shape.
struct Collected {
    Floats heights;
    Pixels outline;
    float largestDistance = 0.0F;
};

Collected collect(const cv::Mat& cloud, const cv::Vec3f& normal, float offset) {
    internal::ObjectPoints object;
    internal::collectObjectPoints(cloud, normal, offset, internal::planeBasis(normal), object);
    const float* heights = object.heights.atLeast(object.count);
    return {Floats(heights, heights + object.count), object.outline, object.largestDistance};
}

Collected collect(const std::vector<cv::Vec3f>& points, float offset = 1000.0F) {
    return collect(cv::Mat(points, true).reshape(3, 1), kTowardsScene, offset);
}

float heightQuantile(Floats heights) {
    return internal::heightQuantile(heights.data(), heights.size());
}

TEST(ObjectPoints, TakesDistancesAndWholeMillimetresTowardsZero) {
    // Plane z = 1000: distances -100, +2.5, 0. Feet (1.9, -1.9), (-0.5, 7), (3, 4) in plane coordinates.
    const Collected object = collect({{1.9F, -1.9F, 900}, {-0.5F, 7, 1002.5F}, {3, 4, 1000}});
    EXPECT_EQ(object.heights, (Floats{100, 2.5F, 0}));
    EXPECT_EQ(object.outline, (Pixels{{1, -1}, {0, 7}, {3, 4}}));
    EXPECT_EQ(object.largestDistance, -100.0F);
}

TEST(ObjectPoints, ProjectsOntoATiltedPlane) {
    // n = (0.6, 0, 0.8), t = 800, p = (100, 20, 900): d = 60 + 0 + 720 - 800 = -20 (0.6F and 0.8F are rounded, so
    // about), foot q = p + 20 n = (112, 20, 916), e1 = (0, -1, 0), e2 = (0.8, 0, -0.6): (-20, 89.6 - 549.6 = -460).
    const cv::Vec3f normal(0.6F, 0, 0.8F);
    const cv::Mat cloud(1, 1, CV_32FC3, cv::Scalar(100, 20.5, 900.5));
    const Collected object = collect(cloud, normal, 800);
    // With y = 20.5 and z = 900.5: d = -19.6, q = (111.76, 20.5, 916.18), e2 . q = 89.408 - 549.708 = -460.3.
    ASSERT_EQ(object.heights.size(), 1U);
    EXPECT_NEAR(object.heights[0], 19.6F, 1e-3);
    EXPECT_EQ(object.outline, (Pixels{{-20, -460}}));
}

TEST(ObjectPoints, SkipsAbsentPoints) {
    const Collected object = collect({{0, 0, 0}, {0, 0, 1e-9F}, {1, 2, 990}, {0, 0, 0}});
    EXPECT_EQ(object.heights, Floats{10});
    EXPECT_EQ(object.outline, (Pixels{{1, 2}}));
}

TEST(ObjectPoints, KeepsTheFirstOfEquallyFarPoints) {
    EXPECT_EQ(collect({{0, 0, 990}, {0, 0, 1010}}).largestDistance, -10.0F);
    EXPECT_EQ(collect({{0, 0, 1010}, {0, 0, 990}}).largestDistance, 10.0F);
}

TEST(ObjectPoints, FindsNothingInAnEmptyCloud) {
    for (const cv::Size size : {cv::Size(4, 3), cv::Size(0, 0)}) {
        const Collected object = collect(cv::Mat::zeros(size, CV_32FC3), kTowardsScene, 1000);
        EXPECT_TRUE(object.heights.empty());
        EXPECT_TRUE(object.outline.empty());
        EXPECT_EQ(object.largestDistance, 0.0F);
    }
}

TEST(ObjectPoints, PutsFeetThatNoIntHoldsAtTheLowestOne) {
    const Collected object = collect({{kNaN, 3, 990}, {3e9F, -3e9F, 990}, {1, 2, kNaN}});
    EXPECT_EQ(object.outline, (Pixels{{INT_MIN, INT_MIN}, {INT_MIN, INT_MIN}, {INT_MIN, INT_MIN}}));
    EXPECT_EQ(object.largestDistance, -10.0F) << "a NaN distance is not the largest";
}

Floats ascending(std::size_t count) {
    Floats heights(count);
    for (std::size_t i = 0; i < count; ++i) {
        heights[i] = static_cast<float>(count - 1 - i);
    }
    return heights;
}

TEST(HeightQuantile, TakesTheTruncatedIndex) {
    // Heights 0 ... n-1 in falling order, so the quantile is its own index: trunc(0.99 n).
    const std::vector<std::pair<std::size_t, float>> cases{
        {1, 0},     {2, 1},     {4, 3},     {99, 98},    {100, 99},      {101, 99},         {102, 100},
        {200, 198}, {201, 198}, {300, 297}, {1000, 990}, {20000, 19800}, {1100001, 1089000}};
    for (const auto& [count, expected] : cases) {
        Floats heights = ascending(count);
        EXPECT_EQ(heightQuantile(heights), expected) << "of " << count;
    }
}

TEST(HeightQuantile, TakesNanForTheLargestHeight) {
    Floats few{3, kNaN, 1, 2};
    EXPECT_TRUE(std::isnan(heightQuantile(few))) << "index 3 of 1, 2, 3, NaN";
    Floats many = ascending(200);
    many[17] = kNaN;
    // 199 numbers without 182, then NaN: index 198 is the largest number.
    EXPECT_EQ(heightQuantile(many), 199.0F);
    Floats infinite{1, kInfinity, 2, 0};
    EXPECT_EQ(heightQuantile(infinite), kInfinity);
}

class ObjectPointsLoops : public EveryLoopVariant {};

INSTANTIATE_TEST_SUITE_P(Loops, ObjectPointsLoops, runnableLoopVariants(), loopVariantName);

TEST_P(ObjectPointsLoops, QuantileAgreesWithAFullSort) {
    Draws draws(106);
    for (int run = 0; run < 2000; ++run) {
        const int count = draws.chance(50)   ? draws.between(1, 12)
                          : draws.chance(80) ? draws.between(90, 700)
                                             : draws.between(2000, 6000);
        const int distinct = draws.chance(50) ? 7 : 100000;
        const bool sorted = draws.chance(10);
        const bool odd = draws.chance(40);
        Floats heights(static_cast<std::size_t>(count));
        for (float& height : heights) {
            height = static_cast<float>(draws.below(distinct)) * 0.25F;
            height = sorted ? static_cast<float>(&height - heights.data()) : height;
            if (odd && draws.below(300) == 0) {
                height = draws.chance(60) ? kNaN : kInfinity;
            }
        }
        const float expected = plain::heightQuantile(heights);
        ASSERT_TRUE(sameBits(heightQuantile(heights), expected)) << "run " << run << ", " << count;
    }
}

TEST_P(ObjectPointsLoops, QuantileIsRightWhenASampleMisleads) {
    // Every fourth height is large. A sample of only these heights would expect far more large ones than there are.
    Floats heights(4096);
    for (std::size_t i = 0; i < heights.size(); ++i) {
        heights[i] = i % 4 == 0 ? 1000.0F + static_cast<float>(i) : 5.0F;
    }
    EXPECT_EQ(heightQuantile(heights), plain::heightQuantile(heights));
    std::rotate(heights.begin(), heights.begin() + 1, heights.end());
    EXPECT_EQ(heightQuantile(heights), plain::heightQuantile(heights));
}

/// Points of a rough surface, of a few places or of wild coordinates, some of them absent.
cv::Mat drawCloud(Draws& draws) {
    const int columns = draws.between(1, 70);
    const int rows = draws.between(1, 12);
    cv::Mat cloud = drawMatrix(draws, {columns, rows}, CV_32FC3);
    const int kind = draws.below(4);
    const float spread = kind == 0 ? 3.0F : kind == 1 ? 900.0F : 30000.0F;
    for (int i = 0; i < cloud.rows * cloud.cols; ++i) {
        auto& point = cloud.at<cv::Vec3f>(i / cloud.cols, i % cloud.cols);
        if (kind == 3) {
            point = {2.5F * static_cast<float>(i % cloud.cols), 2.5F * static_cast<float>(i / cloud.cols),
                     draws.real(890, 900)};
        } else if (draws.chance(70)) {
            point = {draws.real(-spread, spread), draws.real(-spread, spread), draws.real(800, 1100)};
        }
        if (kind == 1 && draws.below(50) == 0) {
            point[draws.below(3)] = draws.chance(50) ? kNaN : draws.real(-1e10F, 1e10F);
        }
    }
    return cloud;
}

TEST_P(ObjectPointsLoops, AgreesWithThePlainFormOnRandomClouds) {
    Draws draws(107);
    for (int run = 0; run < 2000; ++run) {
        const cv::Mat cloud = drawCloud(draws);
        const cv::Vec3f normal = draws.chance(30) ? kTowardsScene : drawNormal(draws);
        const float offset = draws.chance(40) ? 1000.0F : draws.real(900, 1100);
        const plain::Points expected = plain::collectObjectPoints(cloud, normal, offset, plain::planeBasis(normal));
        const Collected object = collect(cloud, normal, offset);
        ASSERT_TRUE(sameBits(object.heights, expected.heights)) << "heights, run " << run;
        ASSERT_TRUE(sameBits(object.largestDistance, expected.largest)) << "run " << run;
        if (object.outline.size() == expected.footprint.size()) {
            ASSERT_EQ(object.outline, expected.footprint) << "run " << run;
        } else {
            const cv::RotatedRect all = cv::minAreaRect(expected.footprint);
            const cv::RotatedRect some = cv::minAreaRect(object.outline);
            ASSERT_TRUE(sameBits(some.center.x, all.center.x) && sameBits(some.center.y, all.center.y) &&
                        sameBits(some.size.width, all.size.width) && sameBits(some.size.height, all.size.height) &&
                        sameBits(some.angle, all.angle))
                << "run " << run << ": " << object.outline.size() << " of " << expected.footprint.size();
        }
    }
}

TEST(ObjectPoints, LeavesFewPointsOfABoxToTheRectangle) {
    cv::Mat cloud(200, 260, CV_32FC3);
    Draws draws(108);
    for (int row = 0; row < cloud.rows; ++row) {
        for (int column = 0; column < cloud.cols; ++column) {
            cloud.at<cv::Vec3f>(row, column) = {1.3F * static_cast<float>(column) + draws.real(-1, 1),
                                                1.3F * static_cast<float>(row) + draws.real(-1, 1), 900};
        }
    }
    EXPECT_LT(collect(cloud, drawNormal(draws), 1000).outline.size(), cloud.total() / 20);
}

}  // namespace

}  // namespace quorvel::test
