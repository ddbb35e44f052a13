// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>
#include <vector>

namespace quorvel::test::plain {

/// Partitioning around the value at index k until the value at index k is in its place, every move spelled out.
/// \param a works on this copy; the caller's values stay
inline float selectKth(std::vector<float> a, int n, int k) {
    const auto at = [&a](int index) -> float& { return a.at(static_cast<std::size_t>(index)); };
    int l = 0;
    int m = n - 1;
    while (l < m) {
        const float x = at(k);
        int i = l;
        int j = m;
        int i0 = 0;
        do {
            while (x > at(i)) {
                i += 1;
            }
            i0 = i;
            while (at(j) > x) {
                j -= 1;
            }
            std::swap(at(i), at(j));
            i += 1;
            j -= 1;
        } while (i0 < k && j >= k);
        if (j < k) {
            l = i;
        }
        if (i > k) {
            m = j;
        }
    }
    return at(k);
}

}  // namespace quorvel::test::plain
