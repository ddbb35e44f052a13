// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <quorvel/quorvel.h>

#include "kit/input/capture_files.h"
#include "kit/measure/measurement.h"

namespace quorvel::kit {

/// The settings for measuring captures again that a capture does not record.
struct ReplaySettings {
    MeasurementSettings measurement;
    /// Use the library's offline start, which ignores the settings above.
    bool asHost = false;
    /// Largest difference of a size that still counts as the same reading, mm.
    double tolerance = 0.0;
};

/// What became of one capture.
enum class ReplayStatus {
    Same,       ///< measured, within the tolerance
    Changed,    ///< a size differs by more than the tolerance, or only one of the two found an object
    Empty,      ///< nothing was recorded, and nothing is found now
    Unreadable  ///< could not be measured again
};

/// \return "same", "changed", "empty" or "unreadable"
std::string statusName(ReplayStatus status);

/// One capture beside its replay.
struct ReplayOutcome {
    std::string folder;
    ReplayStatus status = ReplayStatus::Unreadable;
    RecordedResult recorded;
    MeasureResult replayed;
    /// Largest difference of a size, mm, and distance between the two boxes' middles, pixels; only when both found one.
    double change = 0.0;
    double shift = 0.0;
    /// A remark of one sentence; may be empty.
    std::string note;

    bool isRecorded() const { return !recorded.corners.empty(); }
    bool isReplayed() const { return !replayed.corners.empty(); }
};

/// Measures a capture again and compares the reading with the recorded one. May run on several threads at a time; the
/// library's lines on standard output have to be silenced by the caller.
/// \param folder relative to the working directory, or absolute
/// \return the outcome, also for a capture that cannot be read; nothing is thrown
ReplayOutcome replayCapture(const std::string& folder, const ReplaySettings& settings);

}  // namespace quorvel::kit
