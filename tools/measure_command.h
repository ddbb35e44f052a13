// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "subcommand.h"

namespace quorvel::command {

/// `quorvel measure`: measures the object in one frame, with a plane that is fitted first, loaded, or fitted to the
/// frame itself, and says why when nothing is measured. measure_report.h describes the output.
Subcommand addMeasureCommand(CLI::App& app);

}  // namespace quorvel::command
