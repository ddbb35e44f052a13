// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "batch_files.h"
#include "batch_measurement.h"
#include "calibration_options.h"
#include "frame_options.h"
#include "measurement.h"

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
    /// Ruler parameter file; empty when there is none.
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

/// What is measured with: the options, checked, and the files they name.
struct MeasureInput {
    Camera camera;
    /// At least one; more than one is a batch.
    std::vector<FrameFiles> files;
    /// What the files hold, all of the camera's size.
    std::vector<FramePair> frames;
    /// Set when the frames are a batch.
    std::optional<Sizes> tolerance;
    MeasurementSettings settings;
    /// The frame to calibrate on first, if one is given.
    std::optional<FramePair> empty;
    CalibrationSettings calibration;
};

/// \throws InputError when an option has a wrong value or no effect in the mode, or a file cannot be used
MeasureInput readMeasureInput(const MeasureOptions& options);

}  // namespace quorvel::command
