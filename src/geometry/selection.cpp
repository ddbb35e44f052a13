// SPDX-License-Identifier: Apache-2.0
#include "geometry/selection.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace quorvel::internal {

float selectKth(std::vector<float> values, int n, int k) {
    float* const a = values.data();
    int low = 0;
    int high = n - 1;
    while (low < high) {
        const float pivot = a[k];
        int i = low;
        int j = high;
        int swapped = 0;
        do {
            while (pivot > a[i]) {
                ++i;
            }
            swapped = i;
            while (a[j] > pivot) {
                --j;
            }
            std::swap(a[i], a[j]);
            ++i;
            --j;
        } while (swapped < k && j >= k);
        if (j < k) {
            low = i;
        }
        if (i > k) {
            high = j;
        }
    }
    return a[k];
}

std::optional<float> boundFromSample(float* sample, std::size_t size, std::size_t count, std::size_t wanted,
                                     double deviations) {
    const double expected = static_cast<double>(wanted) * static_cast<double>(size) / static_cast<double>(count);
    const auto rank = static_cast<std::size_t>(expected + deviations * std::sqrt(expected) + deviations);
    if (rank >= size) {
        return std::nullopt;
    }
    std::nth_element(sample, sample + rank, sample + size, std::greater<>());
    return sample[rank];
}

}  // namespace quorvel::internal
