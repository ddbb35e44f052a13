// SPDX-License-Identifier: Apache-2.0
#include "calib/select_kth.h"

#include <cstddef>
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

}  // namespace quorvel::internal
