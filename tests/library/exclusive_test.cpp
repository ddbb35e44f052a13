// SPDX-License-Identifier: Apache-2.0
#include <array>

#include <gtest/gtest.h>

#include "image/image_form.h"

namespace quorvel::test {

namespace {

const cv::Size kSize(8, 6);

TEST(CreateExclusive, KeepsStorageThatNobodyElseHolds) {
    cv::Mat image(kSize, CV_16UC1, cv::Scalar(7));
    const uchar* const storage = image.data;
    internal::createExclusive(image, kSize, CV_16UC1);
    EXPECT_EQ(image.data, storage);
}

TEST(CreateExclusive, LeavesSharedPixelsToTheirHolder) {
    cv::Mat image(kSize, CV_16UC1, cv::Scalar(7));
    const cv::Mat held = image;
    internal::createExclusive(image, kSize, CV_16UC1);
    EXPECT_NE(image.data, held.data);
    image.setTo(1);
    EXPECT_EQ(cv::countNonZero(held != 7), 0);
}

TEST(CreateExclusive, NeverWritesIntoMemoryThatIsNotOpenCvs) {
    std::array<ushort, 48> memory{};
    cv::Mat image(kSize, CV_16UC1, memory.data());
    internal::createExclusive(image, kSize, CV_16UC1);
    EXPECT_NE(image.data, reinterpret_cast<uchar*>(memory.data()));
}

TEST(CreateExclusive, ReplacesWhatDoesNotFit) {
    for (const auto& [size, type] : {std::pair{cv::Size(6, 8), CV_16UC1}, std::pair{kSize, CV_8UC3}}) {
        cv::Mat image(kSize, CV_16UC1);
        internal::createExclusive(image, size, type);
        EXPECT_EQ(image.size(), size);
        EXPECT_EQ(image.type(), type);
    }
    cv::Mat window = cv::Mat(20, 20, CV_16UC1)(cv::Rect(cv::Point(3, 3), kSize));
    internal::createExclusive(window, kSize, CV_16UC1);
    EXPECT_TRUE(window.isContinuous());
    cv::Mat nothing;
    internal::createExclusive(nothing, kSize, CV_16UC1);
    EXPECT_EQ(nothing.size(), kSize);
    cv::Mat robbed(kSize, CV_16UC1);
    robbed.data = nullptr;
    internal::createExclusive(robbed, kSize, CV_16UC1);
    EXPECT_NE(robbed.data, nullptr);
}

TEST(CopyExclusive, CopiesPixels) {
    const cv::Mat from(kSize, CV_16UC1, cv::Scalar(3));
    cv::Mat to(kSize, CV_16UC1, cv::Scalar(4));
    const cv::Mat held = to;
    internal::copyExclusive(from, to);
    EXPECT_EQ(cv::countNonZero(to != 3), 0);
    EXPECT_EQ(cv::countNonZero(held != 4), 0);
}

}  // namespace

}  // namespace quorvel::test
