// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

namespace quorvel::command {

/// What a ruler parameter file holds.
struct RulerParams {
    cv::Rect calibrationArea;   ///< full-size pixels
    cv::Rect detectArea;        ///< full-size pixels
    float groundWeight = 0.0F;  ///< fraction of the camera distance
};

/// Reads a ruler parameter file more strictly than the library, which takes what is missing as zero.
/// \param path YAML, XML or JSON
/// \throws InputError when the file is missing or no document, or when a value is missing or malformed
RulerParams readRulerParams(const std::string& path);

/// \return what is wrong with the parameters for a picture of this size, one sentence each; empty when nothing is.
///         An area has to lie inside the picture and to hold a pixel, the weight has to be finite.
std::vector<std::string> rulerParamProblems(const RulerParams& params, cv::Size picture);

/// Writes a ruler parameter file with the library.
/// \param path its extension chooses XML, JSON or YAML
/// \throws InputError when it cannot be written
void writeRulerParams(const std::string& path, const RulerParams& params);

}  // namespace quorvel::command
