// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/subcommand.h"

namespace quorvel::command {

/// `quorvel calibrate`: fits the reference plane to a frame of the empty surface and leaves the library's files,
/// ./param/cal.txt and ./param/depth.tif. After a failed fit the old files stay, and the exit code is 1.
Subcommand addCalibrateCommand(CLI::App& app);

}  // namespace quorvel::command
