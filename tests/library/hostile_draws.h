// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <climits>
#include <cstddef>
#include <limits>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

#include "library/measure_draws.h"
#include "library/same_result.h"

namespace quorvel::test {

/// Numbers that no host wants: NaN, infinite, zero, too small to divide by, too large to square.
constexpr std::array<float, 14> kOddFloats{kNaN,
                                           kInfinity,
                                           -kInfinity,
                                           0.0F,
                                           -0.0F,
                                           std::numeric_limits<float>::denorm_min(),
                                           -std::numeric_limits<float>::denorm_min(),
                                           std::numeric_limits<float>::min(),
                                           std::numeric_limits<float>::max(),
                                           std::numeric_limits<float>::lowest(),
                                           1e30F,
                                           -1e30F,
                                           -1.0F,
                                           2147483648.0F};
constexpr std::array<int, 10> kOddInts{INT_MIN, INT_MIN + 1, -65536, -4, -1, 0, 1, 65536, INT_MAX - 1, INT_MAX};

inline float drawOddFloat(Draws& draws) {
    return draws.oneOf(kOddFloats);
}

inline int drawOddInt(Draws& draws) {
    return draws.oneOf(kOddInts);
}

inline cv::Rect drawOddRect(Draws& draws) {
    return {drawOddInt(draws), drawOddInt(draws), drawOddInt(draws), drawOddInt(draws)};
}

/// An image with a size but without pixels: its public data pointer is null.
inline cv::Mat withoutPixels(int rows, int columns, int type) {
    cv::Mat image(rows, columns, type);
    image.data = nullptr;
    return image;
}

/// A matrix of three dimensions, the last two of them an image's.
inline cv::Mat cubeOf(int rows, int columns, int type) {
    const std::array<int, 3> sizes{2, rows, columns};
    return {3, sizes.data(), type, cv::Scalar::all(7)};
}

/// Random bytes, which give depths of every size and points of NaN.
inline void fillWithBytes(Draws& draws, cv::Mat& image) {
    for (int row = 0; row < image.rows; ++row) {
        uchar* const bytes = image.ptr(row);
        const std::size_t count = static_cast<std::size_t>(image.cols) * image.elemSize();
        for (std::size_t i = 0; i < count; ++i) {
            bytes[i] = static_cast<uchar>(draws.below(256));
        }
    }
}

/// A random point cloud: points near one another, far out or absent, and odd numbers among them.
/// \return CV_32FC3, a window of a larger matrix now and then
inline cv::Mat drawOddCloud(Draws& draws, const cv::Size& size) {
    cv::Mat cloud = drawMatrix(draws, size, CV_32FC3);
    const float reach = std::array<float, 4>{100.0F, 3e4F, 3e9F, 1e30F}.at(static_cast<std::size_t>(draws.below(4)));
    const int odd = draws.chance(50) ? 0 : draws.between(1, 60);
    const int absent = draws.chance(50) ? 0 : draws.between(1, 90);
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            cv::Vec3f point;
            for (float& value : point.val) {
                value = draws.chance(odd) ? drawOddFloat(draws) : draws.real(-reach, reach);
            }
            cloud.at<cv::Vec3f>(row, column) = draws.chance(absent) ? cv::Vec3f() : point;
        }
    }
    return cloud;
}

/// An image that does not fit the member it is assigned to: of any type and size, without pixels, or of three
/// dimensions.
inline cv::Mat drawOddImage(Draws& draws) {
    const int rows = draws.between(0, 40);
    const int columns = draws.between(0, 40);
    const int depth = draws.below(8);
    const int type = CV_MAKETYPE(depth, draws.between(1, 4));
    switch (draws.below(6)) {
        case 0:
            return {};
        case 1:
            return withoutPixels(rows, columns, type);
        case 2:
            return cubeOf(rows + 1, columns + 1, type);
        default:
            break;
    }
    cv::Mat image = drawMatrix(draws, {columns, rows}, type);
    fillWithBytes(draws, image);
    return image;
}

/// Measures and checks what holds for every input: the status is 0 or 1, and with 1 there is no result.
inline void measureAnything(Quorvel& ruler) {
    const int status = ruler.measureOnce();
    EXPECT_TRUE(status == 0 || status == 1) << status;
    EXPECT_TRUE(status == 0 || isEmptyResult(ruler.result));
}

/// The same for a batch, which must be dropped after a success.
inline void measureAnyBatch(Quorvel& ruler, float tolerance) {
    const int status = ruler.measureMultiple(tolerance, tolerance, tolerance);
    EXPECT_TRUE(status == 0 || status == 1) << status;
    EXPECT_TRUE(status == 0 ? ruler.depthFrameBuffer.empty() : static_cast<bool>(isEmptyResult(ruler.result)));
}

}  // namespace quorvel::test
