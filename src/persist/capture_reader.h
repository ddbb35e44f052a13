// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "calib/plane_model.h"

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

/// Reads the parameters of a capture.
/// \param path of para.txt
/// \param[out] capture the values; only complete when true is returned
/// \return false when the file cannot be opened, is short or holds something that is no number
bool readCaptureParameters(const std::string& path, CaptureParameters& capture);

}  // namespace quorvel::internal
