// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

#include "kit/replay/replay.h"

namespace quorvel::kit {

/// How replays are reported: for reading, for a spreadsheet, or one JSON object a line for other tools.
enum class ReplayFormat { Table, Csv, JsonLines };

/// \return the line above the rows, with its line end; empty for JSON lines
std::string replayHeader(ReplayFormat format);

/// \return the line of one capture, with its line end
std::string replayRow(ReplayFormat format, const ReplayOutcome& outcome);

/// Counts over all captures of a run.
struct ReplaySummary {
    std::size_t same = 0;
    std::size_t changed = 0;
    std::size_t empty = 0;
    std::size_t unreadable = 0;
    /// Largest difference of a size among the captures that were measured both times, mm.
    double largestChange = 0.0;

    void add(const ReplayOutcome& outcome);
    std::size_t total() const { return same + changed + empty + unreadable; }
};

/// \param tolerance the run's, mm
/// \return one line, with its line end
std::string summaryText(const ReplaySummary& summary, double tolerance);

}  // namespace quorvel::kit
