// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "kit/input/camera.h"
#include "kit/measure/calibration.h"
#include "kit/measure/measure_timing.h"
#include "kit/measure/measurement.h"

namespace quorvel::kit {

/// Everything that `quorvel measure` reports.
struct MeasureReport {
    std::string version;
    ProductType mode = KIOSK;
    Camera camera;
    /// Where the camera's values come from.
    std::string cameraSource;
    Measurement measurement;
    /// The calibration made first, if one was.
    std::optional<CalibrationOutcome> calibration;
    /// The user chose the detection area.
    bool areaGiven = false;
    /// Pictures that were asked for: the overlay's file and the folder of the stages; empty when not.
    std::string overlay;
    std::string stages;
    /// Duration of reading the files, ms.
    double readMilliseconds = 0.0;
    /// The durations of the stages, if they were asked for.
    std::optional<MeasureTiming> timing;
};

/// \return "measured", "out_of_view" (a box was found, but leaves the usable picture), "empty" (no box was found) or
///         "no_plane"
std::string statusOf(const Measurement& measurement);

/// The report as one JSON object. Keys, always all of them:
/// - version: string, the library's
/// - status: string, as statusOf() gives it
/// - reason: null when measured, else {code: string (see reasonCode()), message: string, numbers: {name: number}}
/// - notes: array of strings, warnings
/// - mode: string
/// - length_mm, width_mm, height_mm: number, null unless measured
/// - in_view: bool; on_target: bool, null in ground-growing, which does not tell
/// - side_margin_px: number
/// - corners: array of eight {x, y} in pixels, four of the ground and the four above them; empty without a box
/// - surface_points: integer, points that the sizes were taken from
/// - plane: null, or {normal: [x, y, z], offset_mm, tilt_deg}
/// - camera: {fx, fy, cx, cy, width, height, source}
/// - areas: {detection: {x, y, width, height}, calibration: the same, or null without a calibration first}
/// - calibration: null, or {measured_pixels, pixels_near_plane, plane_file, depth_file}
/// - filter_weight, min_height_mm: number; min_object_pixels: integer
/// - timings_ms: {read, calibrate, frame, measure}: numbers, calibrate null without a calibration first
/// - timing: null unless asked for, else {repetitions: integer, and the median of every part in ms: reading,
///   calibrating, frameIntake, planeRefit, groundRemoval, heightCut, objectComponent, objectWindow, surfaceFilter,
///   footprint, measureOnce: numbers, null for a part that did not run}
/// Numbers that are not finite are null.
/// \return the object, indented, ended by a line break
std::string reportJson(const MeasureReport& report);

/// The report for people: an aligned table with units.
std::string reportTable(const MeasureReport& report);

}  // namespace quorvel::kit
