// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/subcommand.h"

namespace quorvel::command {

/// `quorvel param`: shows a ruler parameter file, or edits it in its own format.
///
/// `show --json` prints one object: file; calibration_area and detect_area, each {x, y, width, height} in pixels;
/// ground_weight; picture, {width, height} or null without a picture size; problems, an array of strings, or null
/// without a picture size. The exit code is 1 when there are problems.
Subcommand addParamCommand(CLI::App& app);

}  // namespace quorvel::command
