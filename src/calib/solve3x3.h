// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

namespace quorvel::internal {

/// Solves A x = b by Gaussian elimination with partial pivoting, in float.
///
/// A column whose largest entry is below max|Aij| * 1e-12 makes the system singular. With an all-zero matrix that
/// threshold is 0, nothing counts as singular and the solution is NaN.
/// \param a 3 x 3 matrix, row-major
/// \param b right-hand side
/// \param[out] x the solution; left as it was when the system is singular
/// \return 3, or 0 when the system is singular
int solve3x3(std::array<float, 9> a, std::array<float, 3> b, std::array<float, 3>& x);

}  // namespace quorvel::internal
