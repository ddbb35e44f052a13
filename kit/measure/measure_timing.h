// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kit/input/frame_reader.h"
#include "kit/measure/measurement.h"

namespace quorvel::kit {

/// One part of a run of `quorvel measure`.
struct TimedPart {
    std::string name;
    /// The name in camelCase, for JSON.
    std::string key;
    /// Median; absent when the part did not run.
    std::optional<double> milliseconds;
};

/// How long the parts of a run of `quorvel measure` take.
struct MeasureTiming {
    /// Repetitions of every part that ran, after one that is not counted.
    int repetitions = 0;
    /// All parts, in the order in which they run. The frame's intake includes the plane's re-fit of GROUND_TRACKING;
    /// measureOnce runs the stages before it and is timed by itself.
    std::vector<TimedPart> parts;
};

/// A run of `quorvel measure` that is to be repeated.
struct TimedRun {
    /// Reads the input files again.
    std::function<void()> read;
    /// The frame that was calibrated on first, if one was; null otherwise.
    const FramePair* empty = nullptr;
    /// Added to the fitted distance of the plane, mm.
    double offset = 0.0;
    FramePair frame;
    /// Whether there was a plane; without one a measurement ends before its stages and, except in GROUND_TRACKING,
    /// before the frame is taken in.
    bool planeFound = false;
};

/// Repeats what a run did, part by part, on copies: neither the ruler nor a file in the working folder changes.
/// \param ruler as the measurement left it
MeasureTiming timeMeasurement(const Ruler& ruler, const TimedRun& run);

}  // namespace quorvel::kit
