// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <utility>

namespace quorvel::test::plain {

/// Gaussian elimination with partial pivoting over a 3 x 3 system, one step after the other.
/// \param a row-major, b right-hand side: both are overwritten; x is left alone when the system is singular
/// \return 3, or 0 when a pivot is below max|Aij| * 1e-12
inline int solve3x3(float a[9], float b[3], float x[3]) {
    float largestEntry = 0.0F;
    for (int i = 0; i < 9; ++i) {
        if (std::fabs(a[i]) > largestEntry) {
            largestEntry = std::fabs(a[i]);
        }
    }
    const auto eps = static_cast<float>(static_cast<double>(largestEntry) * 1e-12);
    for (int k = 0; k < 3; ++k) {
        int pivotRow = k;
        for (int i = k + 1; i < 3; ++i) {
            if (std::fabs(a[3 * i + k]) > std::fabs(a[3 * pivotRow + k])) {
                pivotRow = i;
            }
        }
        if (eps > std::fabs(a[3 * pivotRow + k])) {
            return 0;
        }
        if (pivotRow != k) {
            for (int j = 0; j < 3; ++j) {
                std::swap(a[3 * k + j], a[3 * pivotRow + j]);
            }
            std::swap(b[k], b[pivotRow]);
        }
        for (int i = k + 1; i < 3; ++i) {
            const float factor = -a[3 * i + k] / a[3 * k + k];
            for (int j = k + 1; j < 3; ++j) {
                a[3 * i + j] = a[3 * i + j] + factor * a[3 * k + j];
            }
            b[i] = b[i] + factor * b[k];
        }
    }
    for (int i = 2; i >= 0; --i) {
        float rest = b[i];
        for (int j = i + 1; j < 3; ++j) {
            rest = rest - a[3 * i + j] * x[j];
        }
        x[i] = rest / a[3 * i + i];
    }
    return 3;
}

}  // namespace quorvel::test::plain
