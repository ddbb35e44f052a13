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
/// as a real number.
/// \param path its extension chooses XML, JSON or YAML; a question mark in it cannot be written
/// \return whether the file could be opened for writing
bool writeRulerParameters(const std::string& path, const RulerParameters& parameters);

/// Reads what is there: a region that is no sequence of four numbers becomes empty, a weight that is no number 0.
/// \param[out] parameters untouched when the file cannot be opened or read
/// \return whether the file could be opened for reading
/// \throws cv::Exception when the file is no document
bool readRulerParameters(const std::string& path, RulerParameters& parameters);

}  // namespace quorvel::internal
