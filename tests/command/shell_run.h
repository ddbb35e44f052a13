// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "command_run.h"

namespace quorvel::command {

/// Runs a line of bash in the folder, with the program as $Q and nothing on standard input.
CommandRun runShell(const TemporaryFolder& folder, const std::string& line);

/// \return whether a program of this name is installed
bool isInstalled(const std::string& program);

}  // namespace quorvel::command
