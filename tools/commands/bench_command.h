// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/subcommand.h"

namespace quorvel::command {

/// `quorvel bench`: measures a simulated parcel again and again at some picture sizes and prints how fast this machine
/// does it. With --json one object:
/// - version, mode, seconds: as used; opencv_threads: that OpenCV may use
/// - rows: array of {width, height, frames, intake_ms, measure_ms, both_ms, frames_per_second}
Subcommand addBenchCommand(CLI::App& app);

}  // namespace quorvel::command
