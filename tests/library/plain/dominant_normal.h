// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// Bin 0 ... 3 of a channel value: truncated to int (INT_MIN, whose low bits are 0, where int cannot hold it or for
/// NaN), the low 8 bits, divided by 64.
inline int normalColourBin(float value) {
    const bool inRange = value > -2147483904.0F && value < 2147483648.0F;
    const int whole = inRange ? static_cast<int>(value) : 0;
    const int lowBits = ((whole % 256) + 256) % 256;
    return lowBits / 64;
}

/// The most frequent of the 64 orientation bins; of several with equal counts the one that reached the count first;
/// never bin (0, 0, 0).
inline cv::Vec3f dominantNormalBin(const cv::Mat& normalMap) {
    std::array<int, 64> counts{};
    int best = 0;
    int bestCount = 0;
    for (int r = 0; r < normalMap.rows; ++r) {
        for (int c = 0; c < normalMap.cols; ++c) {
            const auto colour = normalMap.at<cv::Vec3f>(r, c);
            const int index =
                normalColourBin(colour[0]) + 4 * normalColourBin(colour[1]) + 16 * normalColourBin(colour[2]);
            const int count = ++counts[static_cast<std::size_t>(index)];
            if (index != 0 && count > bestCount) {
                best = index;
                bestCount = count;
            }
        }
    }
    return {static_cast<float>(best % 4), static_cast<float>((best % 16) / 4), static_cast<float>(best / 16)};
}

}  // namespace quorvel::test::plain
