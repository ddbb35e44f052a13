// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "calib/plane_model.h"

namespace quorvel::internal {

/// Writes the plane as one line "nx ny nz t", six decimals each, whole or not at all. A file that cannot be written is
/// skipped and keeps its old line.
void writeCalibrationFile(const std::string& path, const Plane& plane);

/// Reads nx, ny, nz and t. Reading stops at the first field that is no number; it and those behind it keep the values
/// they had. Of a longer file only the start is looked at.
/// \param[in,out] plane the plane to read into, mm
/// \return whether the file could be opened
bool readCalibrationFile(const std::string& path, Plane& plane);

}  // namespace quorvel::internal
