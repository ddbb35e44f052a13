// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

#include <CLI/CLI.hpp>

namespace quorvel::command {

/// A subcommand of the program: its parser, and what runs when it was chosen.
struct Subcommand {
    CLI::App* parser = nullptr;
    /// \return the exit code
    std::function<int()> run;
};

}  // namespace quorvel::command
