// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iostream>

namespace quorvel::command {

/// Sends standard output to standard error while it lives. The library prints its diagnostic lines with
/// std::cout; around its calls this keeps them out of the command's own output.
class LibraryOutputToStderr {
public:
    LibraryOutputToStderr() : original_(std::cout.rdbuf(std::cerr.rdbuf())) {}
    ~LibraryOutputToStderr() { std::cout.rdbuf(original_); }
    LibraryOutputToStderr(const LibraryOutputToStderr&) = delete;
    LibraryOutputToStderr& operator=(const LibraryOutputToStderr&) = delete;
    LibraryOutputToStderr(LibraryOutputToStderr&&) = delete;
    LibraryOutputToStderr& operator=(LibraryOutputToStderr&&) = delete;

private:
    std::streambuf* original_;
};

}  // namespace quorvel::command
