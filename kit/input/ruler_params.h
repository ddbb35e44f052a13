// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "files/parameter_file.h"

namespace quorvel::kit {

/// What a ruler parameter file holds.
using RulerParams = internal::RulerParameters;

/// Reads a ruler parameter file more strictly than the library, which takes missing values as zero.
/// \param path YAML, XML or JSON
/// \throws InputError when the file is missing or not a valid document, or when a value is missing or malformed
RulerParams readRulerParams(const std::string& path);

/// \return what is wrong with the parameters for a picture of this size, one sentence each; empty when nothing is.
///         An area has to lie inside the picture and to hold a pixel, the weight has to be finite.
std::vector<std::string> rulerParamProblems(const RulerParams& params, cv::Size picture);
}  // namespace quorvel::kit
