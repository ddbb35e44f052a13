// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// What a user tunes for one installation.
struct RulerParameters {
    cv::Rect calibrationArea;   ///< full-size pixels
    cv::Rect detectArea;        ///< full-size pixels
    float groundWeight = 0.0F;  ///< fraction of the camera distance
};

/// \param name of a file; its extension chooses XML, JSON or YAML
/// \return the parameters as a document of OpenCV's file storage: two regions as sequences of four integers, the weight
///         as a real number; a line feed at the end of each line
std::string rulerParametersText(const std::string& name, const RulerParameters& parameters);

/// Writes the parameters as such a document, whole or not at all.
/// \param path its extension chooses the format. Paths with a question mark or the ending ".gz" are refused, because
///             OpenCV reads options from them.
/// \return whether the file was written; if not, an old file is unchanged
bool writeRulerParameters(const std::string& path, const RulerParameters& parameters);

/// Reads the parameters. A region that is missing or not a sequence of four numbers becomes empty; a weight that is
/// missing or not a number becomes 0.
/// \return nothing when the file cannot be opened, or cannot be a parameter file and is therefore not parsed: more than
///         64 KiB, lines of more than 1000 characters, more than 1000 brackets and tags
/// \throws cv::Exception when the file is not a valid document
std::optional<RulerParameters> readRulerParameters(const std::string& path);

}  // namespace quorvel::internal
