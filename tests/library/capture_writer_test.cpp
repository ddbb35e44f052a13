// SPDX-License-Identifier: Apache-2.0
#include "files/capture_writer.h"

#include <cmath>
#include <cstddef>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "files/capture_reader.h"
#include "library/measure_draws.h"
#include "support/same_bits.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

using internal::CaptureParameters;
using internal::captureParametersText;
using internal::captureReadingText;
using internal::readCaptureParameters;

std::vector<float> realValues(const CaptureParameters& capture) {
    const cv::Vec3f& normal = capture.plane.normal;
    return {capture.minObjectHeight, capture.cx, capture.cy, capture.fx, capture.fy,          capture.invFx,
            capture.invFy,           normal[0],  normal[1],  normal[2],  capture.plane.offset};
}

CaptureParameters withRealValues(const std::vector<float>& values) {
    CaptureParameters capture;
    capture.minObjectHeight = values[0];
    capture.cx = values[1];
    capture.cy = values[2];
    capture.fx = values[3];
    capture.fy = values[4];
    capture.invFx = values[5];
    capture.invFy = values[6];
    capture.plane = {{values[7], values[8], values[9]}, values[10]};
    return capture;
}

CaptureParameters writtenAndRead(const CaptureParameters& capture) {
    std::ofstream("para.txt", std::ios::binary) << captureParametersText(capture);
    const std::optional<CaptureParameters> read = readCaptureParameters("para.txt");
    EXPECT_TRUE(read) << captureParametersText(capture);
    return read.value_or(CaptureParameters());
}

TEST(CaptureWriter, WritesEveryValueInItsPlace) {
    CaptureParameters capture = withRealValues({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    capture.downScale = -12;
    capture.imageWidth = 13;
    capture.imageHeight = 14;
    EXPECT_EQ(captureParametersText(capture),
              "-12\n1.000000\n2.000000\n3.000000\n4.000000\n5.000000\n6.000000\n7.000000\n8.000000\n9.000000\n"
              "10.000000\n11.000000\n13\n14\n");
}

TEST(CaptureWriter, WritesWidthBeforeLength) {
    EXPECT_EQ(captureReadingText({2, 1, 3, {}}), "2.000000\n1.000000\n3.000000\n");
    EXPECT_EQ(captureReadingText({2, 1, 3, {{5, 6}, {-7.5F, 0.0000005F}}}),
              "2.000000\n1.000000\n3.000000\n5.000000 6.000000\n-7.500000 0.000000\n")
        << "the nearest float to half a millionth lies below it";
    EXPECT_EQ(captureReadingText({}), "0.000000\n0.000000\n0.000000\n");
}

TEST(CaptureWriter, IsReadBackToSixDecimals) {
    // Written to within half a millionth, read to the nearest float: from 16 on that is the value itself, since floats
    // then lie farther apart than 10^-6.
    const WorkingDirectory directory;
    Draws draws(52);
    for (int run = 0; run < 300; ++run) {
        std::vector<float> values;
        for (int i = 0; i < 11; ++i) {
            const float magnitude = std::pow(10.0F, draws.real(-8, 6));
            values.push_back(draws.chance(50) ? magnitude : -magnitude);
        }
        CaptureParameters capture = withRealValues(values);
        capture.downScale = draws.between(-9, 9);
        capture.imageWidth = draws.below(100000);
        capture.imageHeight = draws.below(100000);
        const CaptureParameters read = writtenAndRead(capture);
        ASSERT_EQ(read.downScale, capture.downScale);
        ASSERT_EQ(read.imageWidth, capture.imageWidth);
        ASSERT_EQ(read.imageHeight, capture.imageHeight);
        const std::vector<float> back = realValues(read);
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (std::fabs(values[i]) >= 16) {
                ASSERT_EQ(back[i], values[i]) << "run " << run << ", value " << i;
            } else {
                // Half a millionth and half the distance of floats below 16, 2^-20.
                ASSERT_NEAR(static_cast<double>(back[i]), static_cast<double>(values[i]), 0.5e-6 + 0.48e-6)
                    << "run " << run << ", value " << i;
            }
        }
        ASSERT_EQ(captureParametersText(read), captureParametersText(capture)) << "a replay is saved as it was read";
    }
}

TEST(CaptureWriter, IsReadBackAtTheLimitsOfItsTypes) {
    const WorkingDirectory directory;
    const float largest = std::numeric_limits<float>::max();
    const std::vector<float> values{largest, -largest, kInfinity, -kInfinity, kNaN, 0, 16777216, 1e30F, -1e20F, 0, 1};
    CaptureParameters capture = withRealValues(values);
    capture.downScale = std::numeric_limits<int>::min();
    capture.imageWidth = std::numeric_limits<int>::max();
    const CaptureParameters read = writtenAndRead(capture);
    EXPECT_TRUE(sameBits(realValues(read), values));
    EXPECT_EQ(read.downScale, std::numeric_limits<int>::min());
    EXPECT_EQ(read.imageWidth, std::numeric_limits<int>::max());
    EXPECT_EQ(read.imageHeight, 0);
}

TEST(CaptureWriter, LosesWhatIsSmallerThanItsLastDecimal) {
    const WorkingDirectory directory;
    const CaptureParameters read = writtenAndRead(
        withRealValues({std::numeric_limits<float>::min(), 1e-7F, -1e-7F, 4e-7F, 6e-7F, -6e-7F, 0, 0, 0, 0, -0.0F}));
    EXPECT_TRUE(sameBits(realValues(read), {0, 0, -0.0F, 0, 1e-6F, -1e-6F, 0, 0, 0, 0, -0.0F}));
}

}  // namespace

}  // namespace quorvel::test
