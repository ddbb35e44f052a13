// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kit/report/measure_report.h"

namespace quorvel::kit {

// Parts of the reports for people.

/// Rows of a table: label and value.
using Rows = std::vector<std::pair<std::string, std::string>>;

/// Adds the plane, the settings, the times and the files written.
void addConditions(const MeasureReport& report, Rows& rows);

/// \return a heading and one row a part that ran
std::string timingText(const MeasureTiming& timing);

/// \return one paragraph a note
std::string notesText(const std::vector<std::string>& notes);

}  // namespace quorvel::kit
