// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <limits>

namespace quorvel::internal {

namespace detail {

/// Bounds of int as doubles: both are exact, so the comparisons below decide every double and float.
constexpr double kIntLowest = static_cast<double>(std::numeric_limits<int>::min());
constexpr double kIntHighest = static_cast<double>(std::numeric_limits<int>::max());

}  // namespace detail

/// Converts to int, truncating toward zero.
///
/// A plain conversion of a value that int cannot hold is undefined; here such a value, NaN included, gives INT_MIN,
/// which is also what the x86 conversion instruction delivers.
/// \param value any double (a float converts exactly)
inline int truncateToInt(double value) {
    const double whole = std::trunc(value);
    if (whole >= detail::kIntLowest && whole <= detail::kIntHighest) {
        return static_cast<int>(whole);
    }
    return std::numeric_limits<int>::min();
}

/// Converts to the nearest int, ties to even; INT_MIN for NaN and for values that int cannot hold.
/// \param value any double (a float converts exactly)
inline int roundToInt(double value) {
    return truncateToInt(std::nearbyint(value));
}

}  // namespace quorvel::internal
