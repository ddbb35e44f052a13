// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

#include "camera.h"
#include "frame_reader.h"
#include "measurement.h"
#include "output_file.h"

namespace quorvel::command {

/// Adds one picture for each stage that the measurement reached: 01_color, 02_depth, 03_height_above_plane,
/// 04_candidates, 05_surface_points, 06_footprint, 07_overlay, all PNG. Pictures of the same names from an earlier
/// measurement go when there is no new one.
/// \param folder made when it is missing
/// \throws InputError when the folder or a file cannot be written
void addStagePictures(OutputFiles& outputs, const std::filesystem::path& folder, const FramePair& frame,
                      const Camera& camera, const Measurement& measurement);

}  // namespace quorvel::command
