// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <quorvel/quorvel.h>

#include "persist/capture_reader.h"

namespace quorvel::internal {

/// \return the lines of para.txt: one value a line in the order of CaptureParameters, six decimals but for the whole
///         numbers
std::string captureParametersText(const CaptureParameters& capture);

/// \return the lines of res.txt: width, length, height, then one line "x y" a corner, six decimals. Width stands before
///         length, unlike everywhere else; the flags and the side margin are not kept.
std::string captureResultText(const MeasureResult& result);

}  // namespace quorvel::internal
