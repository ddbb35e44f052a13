// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "kit/input/batch_files.h"
#include "kit/measure/batch_measurement.h"
#include "kit/measure/measurement.h"
#include "options/calibration_options.h"
#include "options/frame_options.h"

namespace quorvel::command {

/// Options of `quorvel measure` as typed.
struct MeasureOptions {
    FrameListOptions frames;
    /// Folder of a batch; empty when the frames are listed.
    std::string batch;
    /// "L,W,H" in mm; empty for a single shot.
    std::string tolerance;
    std::string mode;
    std::string emptyColor;
    std::string emptyDepth;
    CalibrationOptions calibration;
    std::string area;
    std::optional<float> filterWeight;
    /// Ruler parameter file; empty when none was given.
    std::string params;
    std::optional<int> sideBand;
    std::optional<float> minHeight;
    bool json = false;
    std::string overlay;
    std::string stages;
    bool timing = false;
    bool debug = false;
};

/// Adds the options to the parser.
/// \param options filled by parsing; must outlive it
void addMeasureOptions(CLI::App& parser, MeasureOptions& options);

/// The input of a measurement: the checked options and the content of their files.
struct MeasureInput {
    kit::Camera camera;
    /// At least one; more than one is a batch.
    std::vector<kit::FrameFiles> files;
    /// The frames in the files, all of the camera's size.
    std::vector<kit::FramePair> frames;
    /// Set when the frames are a batch.
    std::optional<kit::Sizes> tolerance;
    kit::MeasurementSettings settings;
    /// The frame to calibrate on first, if one is given.
    std::optional<kit::FramePair> empty;
    kit::CalibrationSettings calibration;
};

/// \throws InputError when an option has a wrong value or no effect in the mode, or a file cannot be used
MeasureInput readMeasureInput(const MeasureOptions& options);

}  // namespace quorvel::command
