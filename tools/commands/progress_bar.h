// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace quorvel::command {

/// \return whether standard error goes to a terminal
bool standardErrorIsTerminal();

/// \param width of the bar itself, characters
/// \return "[####......] 400 of 1000, 38/s, 16 s left", at most 79 characters for counts below a million
std::string progressText(std::size_t done, std::size_t total, double seconds, int width);

/// A line at the bottom of a terminal that shows the progress of a run of known length. It is written to standard
/// error, and only when that is a terminal.
class ProgressBar {
public:
    explicit ProgressBar(std::size_t total);
    ~ProgressBar() { hide(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ProgressBar(ProgressBar&&) = delete;
    ProgressBar& operator=(ProgressBar&&) = delete;

    /// Takes the line away, so that something else can be written.
    void hide();
    /// Shows the line again, with `done` pieces done.
    void show(std::size_t done);

private:
    using Clock = std::chrono::steady_clock;

    std::size_t total_;
    bool visible_;
    std::size_t shown_ = 0;  ///< characters on the terminal
    Clock::time_point start_ = Clock::now();
};

}  // namespace quorvel::command
