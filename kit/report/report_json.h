// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "kit/report/measure_report.h"

namespace quorvel::kit {

// Parts of the JSON reports; measure_report.h names and explains the keys.

using Json = nlohmann::ordered_json;

/// \return null when there are sizes, else code, message and numbers
Json reasonJson(const Diagnosis& diagnosis);

/// \return length_mm, width_mm, height_mm, in_view, on_target, side_margin_px and corners
Json resultJson(const Measurement& measurement, ProductType mode);

/// \return plane, camera, areas, calibration, filter_weight, min_height_mm, min_object_pixels and timings_ms
Json conditionsJson(const MeasureReport& report);

/// \return null without a timing, else repetitions and the parts
Json timingJson(const std::optional<MeasureTiming>& timing);

/// \return the document, indented, ended by a line break
std::string documentText(const Json& document);

}  // namespace quorvel::kit
