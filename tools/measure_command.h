// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quorvel/quorvel.h>

#include "measure_options.h"
#include "measure_report.h"
#include "subcommand.h"

namespace quorvel::command {

/// `quorvel measure`: measures the object in one frame or in a batch of frames, with a plane that is fitted first,
/// loaded, or fitted to the frame itself, and says why when nothing is measured. measure_report.h and batch_report.h
/// describe the output.
Subcommand addMeasureCommand(CLI::App& app);

/// Measures the one frame that the options name, with the plane that they choose.
/// \param ruler fresh, for the input's camera; keeps the result and, unless a plane was missing before it, the frame
/// \param input as readMeasureInput() made it of the options
/// \return all but the duration of reading
MeasureReport measureInput(Quorvel& ruler, const MeasureInput& input, const MeasureOptions& options);

}  // namespace quorvel::command
