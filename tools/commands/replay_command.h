// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/subcommand.h"

namespace quorvel::command {

/// `quorvel replay`: measures captures again and compares the readings with the recorded ones. replay_output.h
/// describes the output.
Subcommand addReplayCommand(CLI::App& app);

}  // namespace quorvel::command
