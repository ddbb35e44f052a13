// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <quorvel/quorvel.h>

#include "measure_options.h"

namespace quorvel::command {

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
    /// Of every part that ran, after one that does not count.
    int repetitions = 0;
    /// All parts, in the order in which they run. The frame's intake includes the plane's re-fit of GROUND_TRACKING;
    /// measureOnce runs the stages before it and is timed by itself.
    std::vector<TimedPart> parts;
};

/// Repeats what a run did, part by part, on copies: neither the ruler nor a file in the working folder changes.
/// \param ruler as the measurement left it
/// \param input,options what the measurement was made with
/// \param planeFound whether there was a plane; without one a measurement ends before its stages and, except in
///        GROUND_TRACKING, before the frame is taken in
MeasureTiming timeMeasurement(const Quorvel& ruler, const MeasureInput& input, const MeasureOptions& options,
                              bool planeFound);

}  // namespace quorvel::command
