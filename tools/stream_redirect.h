// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iostream>
#include <sstream>

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

/// Holds back what the library prints with std::cout while it lives, and prints it on standard error at the end: the
/// library's own lines are kept while standard error is muted for those of others.
class HeldBackLibraryOutput {
public:
    HeldBackLibraryOutput() : original_(std::cout.rdbuf(&held_)) {}
    ~HeldBackLibraryOutput() {
        std::cout.rdbuf(original_);
        std::cerr << held_.str();
    }
    HeldBackLibraryOutput(const HeldBackLibraryOutput&) = delete;
    HeldBackLibraryOutput& operator=(const HeldBackLibraryOutput&) = delete;
    HeldBackLibraryOutput(HeldBackLibraryOutput&&) = delete;
    HeldBackLibraryOutput& operator=(HeldBackLibraryOutput&&) = delete;

private:
    std::stringbuf held_;
    std::streambuf* original_;
};

/// Lets nothing through std::cout while it lives, whichever thread writes: a failed stream drops what it is given
/// before it touches anything, so that several rulers may print at a time. The command itself writes to output().
class SilentLibrary {
public:
    SilentLibrary() : output_(std::cout.rdbuf()) { std::cout.setstate(std::ios::failbit); }
    ~SilentLibrary() { std::cout.clear(); }
    SilentLibrary(const SilentLibrary&) = delete;
    SilentLibrary& operator=(const SilentLibrary&) = delete;
    SilentLibrary(SilentLibrary&&) = delete;
    SilentLibrary& operator=(SilentLibrary&&) = delete;

    /// \return standard output
    std::ostream& output() { return output_; }

private:
    std::ostream output_;
};

}  // namespace quorvel::command
