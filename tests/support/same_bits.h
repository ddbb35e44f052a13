// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

namespace quorvel::test {

/// Compares two floats bit for bit, except that any NaN equals any NaN.
inline bool sameBits(float a, float b) {
    return (a != a && b != b) || std::memcmp(&a, &b, sizeof(float)) == 0;
}

/// Compares two vectors of floats bit for bit and names the first difference.
inline ::testing::AssertionResult sameBits(const std::vector<float>& a, const std::vector<float>& b) {
    if (a.size() != b.size()) {
        return ::testing::AssertionFailure() << "sizes " << a.size() << " and " << b.size();
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!sameBits(a[i], b[i])) {
            return ::testing::AssertionFailure() << "entry " << i << ": " << a[i] << " and " << b[i];
        }
    }
    return ::testing::AssertionSuccess();
}

/// Compares two planes' normals, or any two 3-vectors, bit for bit.
inline ::testing::AssertionResult sameBits(const cv::Vec3f& a, const cv::Vec3f& b) {
    return sameBits(std::vector<float>{a[0], a[1], a[2]}, std::vector<float>{b[0], b[1], b[2]});
}

namespace detail {

template <typename Element>
bool sameElement(Element a, Element b) {
    return a == b;
}
inline bool sameElement(float a, float b) {
    return sameBits(a, b);
}

template <typename Element>
::testing::AssertionResult sameElements(const cv::Mat& a, const cv::Mat& b) {
    for (int row = 0; row < a.rows && a.cols > 0; ++row) {
        const auto* left = a.ptr<Element>(row);
        const auto* right = b.ptr<Element>(row);
        if (std::memcmp(left, right, static_cast<std::size_t>(a.cols) * a.elemSize()) == 0) {
            continue;
        }
        for (int i = 0; i < a.cols * a.channels(); ++i) {
            if (!sameElement(left[i], right[i])) {
                return ::testing::AssertionFailure() << "row " << row << ", column " << i / a.channels() << ", channel "
                                                     << i % a.channels() << ": " << +left[i] << " and " << +right[i];
            }
        }
    }
    return ::testing::AssertionSuccess();
}

}  // namespace detail

/// Compares two images of 8-bit, 16-bit or float channels bit for bit and names the first difference.
inline ::testing::AssertionResult sameBits(const cv::Mat& a, const cv::Mat& b) {
    if (a.size() != b.size() || a.type() != b.type()) {
        return ::testing::AssertionFailure() << "forms " << a.size() << " " << cv::typeToString(a.type()) << " and "
                                             << b.size() << " " << cv::typeToString(b.type());
    }
    switch (a.depth()) {
        case CV_8U:
            return detail::sameElements<uchar>(a, b);
        case CV_16U:
            return detail::sameElements<ushort>(a, b);
        case CV_32F:
            return detail::sameElements<float>(a, b);
        default:
            return ::testing::AssertionFailure() << "images of this depth are not compared";
    }
}

}  // namespace quorvel::test
