// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "kit/input/batch_files.h"
#include "kit/measure/batch_measurement.h"
#include "kit/report/measure_report.h"

namespace quorvel::kit {

/// Everything that `quorvel measure` reports on a batch.
struct BatchReport {
    /// The same fields as for a single shot; the measurement is that of the whole batch.
    MeasureReport whole;
    BatchMeasurement batch;
    /// One a frame.
    std::vector<FrameFiles> files;
    /// Largest difference between any two frames that counts as agreement, mm.
    Sizes tolerance;
};

/// The report as one JSON object. The keys of a single shot mean the same here, with these differences:
/// - status: "agreed", "refused" or "no_plane"
/// - reason: null when agreed, else {code, message, numbers, dimension}; the code is "frames_disagree", or that of the
///   first frame that was not measured; dimension is "height", "width" or "length" when the frames disagree, else null
/// - length_mm, width_mm, height_mm: mean of the frames, null unless they agreed; in_view, on_target, side_margin_px,
///   corners: of the last frame when they agreed
/// - surface_points is left out
/// - timings_ms: frame is taking the whole batch in, measure is measuring it
/// and these additional keys:
/// - tolerance_mm: {length, width, height}
/// - spread_mm: {length, width, height}, largest difference between any two frames; null unless all were measured
/// - frames: array, one {color, depth, status, reason, length_mm, width_mm, height_mm, in_view, on_target,
///   side_margin_px, corners} a frame, color null when there was no colour image; empty without a plane
/// \return the object, indented, ended by a line break
std::string batchJson(const BatchReport& report);

/// The report for people: a row a frame, then the aligned table of a single shot.
std::string batchTable(const BatchReport& report);

}  // namespace quorvel::kit
