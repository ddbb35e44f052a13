// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "kit/measure/calibration.h"

namespace quorvel::command {

/// Options of a calibration as typed.
struct CalibrationOptions {
    /// "RATIO" or "X,Y,W,H"; empty for the library's default.
    std::string area;
    double offset = 0.0;
};

/// Adds --calibration-area and --offset.
/// \param options filled by parsing; must outlive it
void addCalibrationOptions(CLI::App& app, CalibrationOptions& options);

/// \param picture frame size, pixels
/// \throws InputError when a value cannot be used
kit::CalibrationSettings calibrationSettings(const CalibrationOptions& options, cv::Size picture);

}  // namespace quorvel::command
