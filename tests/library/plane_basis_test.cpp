// SPDX-License-Identifier: Apache-2.0
#include <cmath>

#include <gtest/gtest.h>

#include "geometry/plane_model.h"
#include "library/measure_draws.h"
#include "library/plain/object_points.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

TEST(PlaneBasis, UsesTheImageAxesForAPlaneThatFacesTheCamera) {
    const internal::PlaneBasis basis = internal::planeBasis({0, 0, 1});
    EXPECT_EQ(basis.e1, cv::Vec3f(1, 0, 0));
    EXPECT_EQ(basis.e2, cv::Vec3f(0, 1, 0));
}

TEST(PlaneBasis, TakesTheFirstDirectionAcrossTheTilt) {
    // n = (0.6, 0, 0.8): e1 = (0, -0.6, 0) / 0.6, e2 = n x e1 = (0 - 0.8 * -1, 0.8 * 0 - 0.6 * 0, 0.6 * -1 - 0).
    const internal::PlaneBasis basis = internal::planeBasis({0.6F, 0, 0.8F});
    EXPECT_EQ(basis.e1, cv::Vec3f(0, -1, 0));
    EXPECT_EQ(basis.e2, cv::Vec3f(0.8F, 0, -0.6F));
}

TEST(PlaneBasis, RoundsTheDoubleQuotientToFloat) {
    // n = (0.3, 0.4, ...): the length is sqrt(0.3F^2 + 0.4F^2), so e1 = (0.8, -0.6, 0) but for rounding.
    const internal::PlaneBasis basis = internal::planeBasis({0.3F, 0.4F, std::sqrt(0.75F)});
    const double x = 0.3F;
    const double y = 0.4F;
    const double length = std::sqrt(x * x + y * y);
    EXPECT_EQ(basis.e1, cv::Vec3f(static_cast<float>(y / length), static_cast<float>(-x / length), 0));
}

TEST(PlaneBasis, HasNoGuardForOtherNormalsAlongTheAxis) {
    for (const float z : {-1.0F, 0.99999994F, 0.0F}) {
        const internal::PlaneBasis basis = internal::planeBasis({0, 0, z});
        EXPECT_TRUE(std::isnan(basis.e1[0]) && std::isnan(basis.e1[1]) && std::isnan(basis.e1[2])) << "nz " << z;
    }
}

TEST(PlaneBasis, SpansThePlaneAndAgreesWithThePlainFormForRandomNormals) {
    Draws draws(105);
    for (int run = 0; run < 1000; ++run) {
        const cv::Vec3f normal = drawNormal(draws);
        const internal::PlaneBasis basis = internal::planeBasis(normal);
        const plain::Basis expected = plain::planeBasis(normal);
        ASSERT_TRUE(sameBits(basis.e1, expected.e1)) << "e1 of " << normal;
        ASSERT_TRUE(sameBits(basis.e2, expected.e2)) << "e2 of " << normal;
        ASSERT_NEAR(basis.e1.dot(normal), 0, 1e-6) << normal;
        ASSERT_NEAR(basis.e2.dot(normal), 0, 1e-6) << normal;
        ASSERT_NEAR(basis.e1.dot(basis.e2), 0, 1e-6) << normal;
        ASSERT_NEAR(cv::norm(basis.e1), 1, 1e-6) << normal;
        ASSERT_NEAR(cv::norm(basis.e2), 1, 1e-6) << normal;
        ASSERT_GT(basis.e1.cross(basis.e2).dot(normal), 0.99) << "right-handed, " << normal;
    }
}

}  // namespace

}  // namespace quorvel::test
