// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "geometry/plane_model.h"

namespace quorvel::internal {

/// Writes the plane as one line "nx ny nz t", six decimals each, whole or not at all. A file that cannot be written
/// keeps its old line.
/// \return whether it was written
bool writeCalibrationFile(const std::string& path, const Plane& plane);

/// Reads nx, ny, nz and t. Reading stops at the first field that is not a number; that field and those after it keep
/// their values. What follows the four numbers is ignored.
/// \param previous the values that fields keep, mm
/// \return the plane; nothing when the file cannot be opened
std::optional<Plane> readCalibrationFile(const std::string& path, const Plane& previous);

}  // namespace quorvel::internal
