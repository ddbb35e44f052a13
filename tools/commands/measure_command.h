// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/subcommand.h"
#include "kit/report/measure_report.h"
#include "options/measure_options.h"

namespace quorvel::command {

/// `quorvel measure`: measures the object in one frame or in a batch of frames, with a plane that is fitted first,
/// loaded, or fitted to the frame itself, and says why when nothing is measured. measure_report.h and batch_report.h
/// describe the output.
Subcommand addMeasureCommand(CLI::App& app);

/// Measures the one frame that the options name, with the plane that they choose.
/// \param ruler a fresh ruler for the input's camera; keeps the result and, when there was a plane, the frame
/// \param input the value of readMeasureInput()
/// \return the report without the duration of reading
kit::MeasureReport measureInput(kit::Ruler& ruler, const MeasureInput& input, const MeasureOptions& options);

}  // namespace quorvel::command
