// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "support/members.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace detail {

/// Floats are compared bit for bit, everything else by its value.
template <typename Value>
::testing::AssertionResult sameValue(const Value& a, const Value& b) {
    if (a == b) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << a << " and " << b;
}
inline ::testing::AssertionResult sameValue(const float& a, const float& b) {
    return sameBits(std::vector<float>{a}, std::vector<float>{b});
}
inline ::testing::AssertionResult sameValue(const cv::Vec3f& a, const cv::Vec3f& b) {
    return sameBits(a, b);
}
inline ::testing::AssertionResult sameValue(const cv::Mat& a, const cv::Mat& b) {
    return sameBits(a, b);
}
inline ::testing::AssertionResult sameValue(const cv::Point2f& a, const cv::Point2f& b) {
    return sameBits(std::vector<float>{a.x, a.y}, std::vector<float>{b.x, b.y});
}
template <typename Entry>
::testing::AssertionResult sameValue(const std::vector<Entry>& a, const std::vector<Entry>& b) {
    if (a.size() != b.size()) {
        return ::testing::AssertionFailure() << a.size() << " and " << b.size() << " entries";
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        const ::testing::AssertionResult same = sameValue(a[i], b[i]);
        if (!same) {
            return ::testing::AssertionFailure() << "entry " << i << ": " << same.message();
        }
    }
    return ::testing::AssertionSuccess();
}
inline ::testing::AssertionResult sameValue(const cv::Point (&a)[3], const cv::Point (&b)[3]) {
    return sameValue(std::vector<cv::Point>(a, a + 3), std::vector<cv::Point>(b, b + 3));
}

}  // namespace detail

/// Compares two records bit for bit and names the field that differs.
inline ::testing::AssertionResult sameResult(const MeasureResult& a, const MeasureResult& b) {
    ::testing::AssertionResult all = ::testing::AssertionSuccess();
    forEachField([&](const char* name, auto field) {
        const ::testing::AssertionResult same = detail::sameValue(a.*field, b.*field);
        if (all && !same) {
            all = ::testing::AssertionFailure() << name << ": " << same.message();
        }
    });
    return all;
}

/// \return whether a record says that nothing was measured: no corners, zeros, both flags false
inline ::testing::AssertionResult isEmptyResult(const MeasureResult& result) {
    return sameResult(result, MeasureResult{});
}

/// What a measurement found before, to see it reset.
inline MeasureResult oldResult() {
    return {{{1, 2}, {3, 4}}, 5, 6, 7, true, true, 8};
}

}  // namespace quorvel::test
