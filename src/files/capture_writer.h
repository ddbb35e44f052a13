// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "files/capture_reader.h"

namespace quorvel::internal {

/// What a capture's res.txt holds.
struct CaptureReading {
    float width = 0.0F;  ///< mm
    float length = 0.0F;
    float height = 0.0F;
    std::vector<cv::Point2f> corners;  ///< image positions of the box, pixels
};

/// \return the lines of para.txt: one value a line in the order of CaptureParameters, floats have six decimals
std::string captureParametersText(const CaptureParameters& capture);

/// \return the lines of res.txt: width, length, height, then one line "x y" a corner, six decimals. Width stands before
///         length, unlike everywhere else; the flags and the side margin are not kept.
std::string captureReadingText(const CaptureReading& reading);

}  // namespace quorvel::internal
