// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

namespace quorvel::internal {

/// Selects the k-th smallest value by Hoare's partitioning, in linear time on average.
///
/// Both scans stop at index k at the latest, because a[k] is the pivot until the partition passes k; so no value,
/// NaN included, leads out of the vector.
/// \param values worked on in place (a copy of the caller's)
/// \param n number of values to look at, 1 ... size
/// \param k index wanted, 0 ... n - 1
/// \return the value at index k of the ascending order of the first n values
float selectKth(std::vector<float> values, int n, int k);

}  // namespace quorvel::internal
