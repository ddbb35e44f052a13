// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// What a user tunes for one installation.
struct RulerParameters {
    cv::Rect calibrationArea;   ///< full-size pixels
    cv::Rect detectArea;        ///< full-size pixels
    float groundWeight = 0.0F;  ///< fraction of the camera distance
};

/// Writes the parameters as a document of OpenCV's file storage: two regions as sequences of four integers, the weight
/// as a real number, whole or not at all.
/// \param path its extension chooses XML, JSON or YAML; names with a question mark or ending in ".gz" mean more to
///             OpenCV and are not written
/// \return whether the file was written; else what was there is untouched
bool writeRulerParameters(const std::string& path, const RulerParameters& parameters);

/// Reads what is there: a region that is no sequence of four numbers becomes empty, a weight that is no number 0.
/// \param[out] parameters untouched when false is returned
/// \return whether the file could be opened for reading; false also for what is far from a parameter file and not given
///         to a parser: more than 64 KiB, lines of more than 1000 characters, more than 1000 brackets and tags
/// \throws cv::Exception when the file is no document
bool readRulerParameters(const std::string& path, RulerParameters& parameters);

}  // namespace quorvel::internal
