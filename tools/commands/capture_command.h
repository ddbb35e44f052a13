// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/subcommand.h"

namespace quorvel::command {

/// `quorvel capture`: measures one frame as `quorvel measure` does and keeps the ruler's state, the frame included, in
/// a capture folder under ./log. A frame in which nothing is measured is kept as well, and the exit code is 0.
/// --json prints the object of measure_report.h with one key more in front: capture, the folder.
Subcommand addCaptureCommand(CLI::App& app);

}  // namespace quorvel::command
