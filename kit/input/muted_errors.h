// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace quorvel::kit {

/// Keeps standard error quiet while it lives, for all threads: the picture decoders print lines of their own there
/// about a damaged file, on top of the one line that the command prints. Several may live at a time.
class MutedErrors {
public:
    MutedErrors();
    ~MutedErrors();
    MutedErrors(const MutedErrors&) = delete;
    MutedErrors& operator=(const MutedErrors&) = delete;
    MutedErrors(MutedErrors&&) = delete;
    MutedErrors& operator=(MutedErrors&&) = delete;
};

/// Prints on standard error, also while another thread has muted it.
void printPastMuting(const std::string& text);

}  // namespace quorvel::kit
