// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "kit/account/plane.h"
#include "kit/input/frame_reader.h"
#include "kit/input/region.h"
#include "kit/measure/measurement.h"

namespace quorvel::kit {

/// How to calibrate on the empty surface.
struct CalibrationSettings {
    /// Calibration region; without one the library's default, the 100 x 100 pixels in the middle.
    std::optional<Region> area;
    /// Added to the fitted distance of the plane, mm.
    double offset = 0.0;
};

/// What became of a calibration.
struct CalibrationOutcome {
    /// The plane as stored, the offset included; unusable when the fit failed.
    Plane plane;
    /// Calibration region, pixels.
    cv::Rect area;
    /// Pixels of the region with a depth.
    int measuredPixels = 0;
    /// Of these, the pixels within kNearPlane of the plane as fitted, before the offset.
    int pixelsNearPlane = 0;
    /// Why the fit failed, with numbers, and what was done about the files; empty when it succeeded.
    std::string problem;
    /// Absolute paths of the library's files.
    std::string planeFile;
    std::string depthFile;
    /// Duration of the library's calibration, ms.
    double milliseconds = 0.0;
};

/// A pixel counts as part of the surface within this distance of the plane, mm.
constexpr double kNearPlane = 5.0;

/// Calibrates the ruler on a frame of the empty surface, and stores the plane when the fit succeeded. After a failed
/// fit the library's files are as they were. \param ruler in KIOSK or GROUND_GROWING mode; keeps the frame and the
/// plane \param empty CV_8UC3 and CV_16UC1 of the ruler's size \throws InputError when the library's files cannot be
/// written
CalibrationOutcome calibrate(Ruler& ruler, const FramePair& empty, const CalibrationSettings& settings);

}  // namespace quorvel::kit
