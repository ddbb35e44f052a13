// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/subcommand.h"

namespace quorvel::command {

/// `quorvel simulate`: renders a scene into a folder, as empty and occupied frames with the truth beside them:
/// empty_color.png, empty_depth.png, color.png, depth.png (16-bit, mm), camera.json, scene.json, and truth.json with
/// - scene: name; seed, frame: what the noise was drawn from
/// - plane: {normal: [x, y, z], offset_mm, tilt_deg}
/// - objects: array of {shape, x_mm, y_mm, yaw_deg, length_mm, width_mm, height_mm, in_view, corners: [{x, y}]}
/// - nearest_middle: index into objects of the one a measurement picks, or null
Subcommand addSimulateCommand(CLI::App& app);

}  // namespace quorvel::command
