// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "geometry/plane_model.h"

namespace quorvel::internal {

/// What a capture's para.txt holds, in the file's order; one value a line.
struct CaptureParameters {
    int downScale = 0;
    float minObjectHeight = 0.0F;  ///< mm
    float cx = 0.0F;               ///< pixels, as fx, cy and fy
    float cy = 0.0F;
    float fx = 0.0F;
    float fy = 0.0F;
    float invFx = 0.0F;  ///< 1/pixels, the six decimals as printed
    float invFy = 0.0F;
    Plane plane;
    int imageWidth = 0;  ///< pixels
    int imageHeight = 0;
};

/// Why the parameters of a capture could not be read.
struct CaptureProblem {
    bool opened = false;  ///< there is a file that can be read
    std::string field;    ///< the first value that is missing or not a number, in words; empty when not opened
    std::string found;    ///< the word in its place; empty at the end of the file
};

/// Reads the parameters of a capture.
/// \param path of para.txt
/// \param[out] problem filled in when nothing is returned; may be null
/// \return nothing when the file cannot be opened, ends too early or has a field that is not a number
std::optional<CaptureParameters> readCaptureParameters(const std::string& path, CaptureProblem* problem = nullptr);

}  // namespace quorvel::internal
