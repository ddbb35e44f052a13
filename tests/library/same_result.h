// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "support/same_bits.h"

namespace quorvel::test {

/// Compares two records bit for bit and names the field that differs.
inline ::testing::AssertionResult sameResult(const MeasureResult& a, const MeasureResult& b) {
    const auto flat = [](const MeasureResult& result) {
        std::vector<float> values{result.length, result.width, result.height, result.sideMargin};
        for (const cv::Point2f& corner : result.corners) {
            values.push_back(corner.x);
            values.push_back(corner.y);
        }
        return values;
    };
    if (a.inView != b.inView || a.onTarget != b.onTarget) {
        return ::testing::AssertionFailure()
               << "inView " << a.inView << " and " << b.inView << ", onTarget " << a.onTarget << " and " << b.onTarget;
    }
    const ::testing::AssertionResult same = sameBits(flat(a), flat(b));
    return same ? same
                : ::testing::AssertionFailure() << "of length, width, height, sideMargin, corners: " << same.message();
}

/// \return whether a record says that nothing was measured: no corners, zeros, both flags false
inline ::testing::AssertionResult isEmptyResult(const MeasureResult& result) {
    return sameResult(result, MeasureResult{});
}

}  // namespace quorvel::test
