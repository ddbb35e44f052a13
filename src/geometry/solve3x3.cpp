// SPDX-License-Identifier: Apache-2.0
#include "geometry/solve3x3.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace quorvel::internal {

namespace {

constexpr std::size_t kSize = 3;
constexpr double kSingularRatio = 1e-12;

using Matrix = std::array<float, kSize * kSize>;
using Vector = std::array<float, kSize>;

float singularThreshold(const Matrix& a) {
    float largest = 0.0F;
    for (const float entry : a) {
        largest = std::max(largest, std::fabs(entry));
    }
    return static_cast<float>(static_cast<double>(largest) * kSingularRatio);
}

// The first row at or below the diagonal with the largest entry of the column.
std::size_t pivotRow(const Matrix& a, std::size_t column) {
    std::size_t best = column;
    for (std::size_t row = column + 1; row < kSize; ++row) {
        if (std::fabs(a[row * kSize + column]) > std::fabs(a[best * kSize + column])) {
            best = row;
        }
    }
    return best;
}

void swapRows(Matrix& a, Vector& b, std::size_t first, std::size_t second) {
    if (first == second) {
        return;
    }
    for (std::size_t column = 0; column < kSize; ++column) {
        std::swap(a[first * kSize + column], a[second * kSize + column]);
    }
    std::swap(b[first], b[second]);
}

void eliminateBelow(Matrix& a, Vector& b, std::size_t pivot) {
    for (std::size_t row = pivot + 1; row < kSize; ++row) {
        const float factor = -a[row * kSize + pivot] / a[pivot * kSize + pivot];
        for (std::size_t column = pivot + 1; column < kSize; ++column) {
            a[row * kSize + column] += factor * a[pivot * kSize + column];
        }
        b[row] += factor * b[pivot];
    }
}

}  // namespace

std::optional<std::array<float, 3>> solve3x3(std::array<float, 9> a, std::array<float, 3> b) {
    const float threshold = singularThreshold(a);
    for (std::size_t k = 0; k < kSize; ++k) {
        const std::size_t row = pivotRow(a, k);
        if (threshold > std::fabs(a[row * kSize + k])) {
            return std::nullopt;
        }
        swapRows(a, b, k, row);
        eliminateBelow(a, b, k);
    }
    Vector x{};
    for (std::size_t row = kSize; row > 0; --row) {
        const std::size_t i = row - 1;
        float rest = b[i];
        for (std::size_t j = i + 1; j < kSize; ++j) {
            rest -= a[i * kSize + j] * x[j];
        }
        x[i] = rest / a[i * kSize + i];
    }
    return x;
}

}  // namespace quorvel::internal
