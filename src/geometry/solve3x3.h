// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <optional>

namespace quorvel::internal {

/// Solves A x = b by Gaussian elimination with partial pivoting, in float.
///
/// The system is singular when the largest entry of a column is below max|Aij| * 1e-12. An all-zero matrix has the
/// threshold 0; it is not found singular, and its solution is NaN.
/// \param a 3 x 3 matrix, row-major
/// \param b right-hand side
/// \return the solution; nothing when the system is singular
std::optional<std::array<float, 3>> solve3x3(std::array<float, 9> a, std::array<float, 3> b);

}  // namespace quorvel::internal
