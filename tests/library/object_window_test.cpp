// SPDX-License-Identifier: Apache-2.0
#include "measure/object_window.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include "library/measure_draws.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

/// The mask at full size and the points that it leaves, step by step.
void isolatePlainly(const cv::Mat& mask, cv::Mat& cloud) {
    cv::Mat full;
    cv::resize(mask, full, cloud.size(), 0, 0, cv::INTER_AREA);
    for (int row = 0; row < cloud.rows; ++row) {
        for (int column = 0; column < cloud.cols; ++column) {
            if (full.at<uchar>(row, column) < 255) {
                cloud.at<cv::Vec3f>(row, column) = cv::Vec3f(0, 0, 0);
            }
        }
    }
}

cv::Mat drawMask(Draws& draws, const cv::Size& size) {
    cv::Mat mask = drawMatrix(draws, size, CV_8UC1);
    const int rectangles = draws.below(4);
    for (int i = 0; i < rectangles; ++i) {
        const int left = draws.between(-3, size.width);
        const int top = draws.between(-3, size.height);
        const int width = draws.between(1, 12);
        const int height = draws.between(1, 12);
        const cv::Rect wanted(left, top, width, height);
        mask(wanted & cv::Rect(cv::Point(0, 0), size)).setTo(draws.chance(90) ? 255 : 254);
    }
    if (draws.chance(30)) {
        const int row = draws.below(size.height);
        const int column = draws.below(size.width);
        mask.at<uchar>(row, column) = 0;
    }
    return mask;
}

cv::Mat drawCloud(Draws& draws, const cv::Size& size) {
    cv::Mat cloud = drawMatrix(draws, size, CV_32FC3);
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            cloud.at<cv::Vec3f>(row, column) = {draws.real(-9, 9), draws.chance(5) ? kNaN : -0.0F, draws.real(0, 999)};
        }
    }
    return cloud;
}

cv::Mat presentMask(const cv::Mat& cloud) {
    cv::Mat present = cv::Mat::zeros(cloud.size(), CV_8UC1);
    for (int row = 0; row < cloud.rows; ++row) {
        for (int column = 0; column < cloud.cols; ++column) {
            const auto& p = cloud.at<cv::Vec3f>(row, column);
            present.at<uchar>(row, column) = p[0] == 0.0F && p[1] == 0.0F && p[2] == 0.0F ? 0 : 1;
        }
    }
    return present;
}

TEST(IsolateObject, ClearsAsTheScaledMaskDoesForAnySizes) {
    Draws draws(121);
    int points = 0;
    for (int run = 0; run < 2000; ++run) {
        const int columns = draws.between(1, 30);
        const int rows = draws.between(1, 20);
        const cv::Size small(columns, rows);
        const int factor = draws.between(1, 5);
        // Sides that are no multiple of the small ones too, as integer division leaves them.
        const bool exact = draws.chance(60);
        const int moreColumns = exact ? 0 : draws.below(factor);
        const int moreRows = exact ? 0 : draws.below(factor);
        const cv::Size full(columns * factor + moreColumns, rows * factor + moreRows);
        const cv::Mat mask = drawMask(draws, small);
        const cv::Mat maskBefore = mask.clone();
        cv::Mat cloud = drawCloud(draws, full);
        cv::Mat expected = cloud.clone();
        isolatePlainly(mask, expected);
        const cv::Rect window = internal::isolateObject(mask, cloud);
        ASSERT_TRUE(sameBits(cloud, expected)) << "run " << run << ", " << small << " to " << full;
        ASSERT_TRUE(sameBits(mask, maskBefore)) << "run " << run;
        ASSERT_EQ(window & cv::Rect(cv::Point(0, 0), full), window) << "run " << run;
        cv::Mat present = presentMask(cloud);
        points += cv::countNonZero(present);
        // All points lie in the window, and none on its edge unless that is the image's.
        const cv::Rect inner(window.x == 0 ? 0 : window.x + 1, window.y == 0 ? 0 : window.y + 1, 0, 0);
        const int right = window.br().x == full.width ? full.width : window.br().x - 1;
        const int bottom = window.br().y == full.height ? full.height : window.br().y - 1;
        present(cv::Rect(inner.tl(), cv::Point(right, bottom))).setTo(0);
        ASSERT_EQ(cv::countNonZero(present), 0) << "run " << run << ", window " << window;
    }
    EXPECT_GT(points, 100000) << "the random masks must leave points";
}

TEST(MaskBounds, SurroundsWhatIsNotZero) {
    Draws draws(122);
    for (int run = 0; run < 2000; ++run) {
        const int columns = draws.between(1, 20);
        const int rows = draws.between(1, 20);
        const cv::Size size(columns, rows);
        cv::Mat mask = drawMatrix(draws, size, CV_8UC1);
        const int pixels = draws.below(5);
        cv::Rect expected;
        for (int i = 0; i < pixels; ++i) {
            const int column = draws.below(size.width);
            const int row = draws.below(size.height);
            const cv::Point pixel(column, row);
            mask.at<uchar>(pixel) = static_cast<uchar>(draws.between(1, 255));
            expected = i == 0 ? cv::Rect(pixel, cv::Size(1, 1)) : expected | cv::Rect(pixel, cv::Size(1, 1));
        }
        ASSERT_EQ(internal::maskBounds(mask), expected) << "run " << run << "\n" << mask;
    }
}

TEST(WithMargin, EndsAtTheImage) {
    const cv::Size image(20, 10);
    EXPECT_EQ(internal::withMargin({5, 4, 3, 2}, image), cv::Rect(4, 3, 5, 4));
    EXPECT_EQ(internal::withMargin({0, 0, 20, 10}, image), cv::Rect(0, 0, 20, 10));
    EXPECT_EQ(internal::withMargin({19, 9, 1, 1}, image), cv::Rect(18, 8, 2, 2));
    EXPECT_EQ(internal::withMargin({}, image), cv::Rect(0, 0, 1, 1));
}

}  // namespace

}  // namespace quorvel::test
