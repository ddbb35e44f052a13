// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
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

/// Guesses a bound that some more than a few of many values lie at or beyond, so that only those few have to be put in
/// order. Whoever finds too few beyond it looks at all values: a wrong guess costs time, not truth.
/// \param sample a part of the values, numbers all of them; put in another order
/// \param size of the sample
/// \param count of all values
/// \param wanted how many of the greatest are looked for
/// \param deviations how many standard deviations more than are expected among the sample, and as many values more
/// \return the bound; nothing when the sample is too small for one
std::optional<float> boundFromSample(float* sample, std::size_t size, std::size_t count, std::size_t wanted,
                                     double deviations);

}  // namespace quorvel::internal
