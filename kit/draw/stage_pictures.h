// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

#include "kit/input/camera.h"
#include "kit/input/frame_reader.h"
#include "kit/measure/measurement.h"
#include "kit/output/output_file.h"

namespace quorvel::kit {

/// Adds one picture for each stage that the measurement reached: 01_color, 02_depth, 03_height_above_plane,
/// 04_candidates, 05_surface_points, 06_footprint, 07_overlay, all PNG. A picture of an
/// earlier measurement is removed when this measurement did not reach its stage.
/// \param folder made when it is missing
/// \throws InputError when the folder or a file cannot be written
void addStagePictures(OutputFiles& outputs, const std::filesystem::path& folder, const FramePair& frame,
                      const Camera& camera, const Measurement& measurement);

}  // namespace quorvel::kit
