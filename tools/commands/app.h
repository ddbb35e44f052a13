// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace quorvel::command {

/// The `quorvel` program: parses the command line, runs the chosen subcommand, and turns every error into one line on
/// standard error.
/// \return exit code, see exit_code.h
int runProgram(int argc, const char* const* argv);

}  // namespace quorvel::command
