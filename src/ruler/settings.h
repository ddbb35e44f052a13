// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>

#include <quorvel/quorvel.h>

namespace quorvel::internal {

/// Sets the detection area as given and, in debug mode, says so.
/// \param lines nothing is printed when it is null
void chooseDetectionArea(Quorvel& ruler, const cv::Rect& area, std::ostream* lines);

/// Sets the filter weight as given and, in debug mode, says so.
/// \param lines nothing is printed when it is null
void chooseFilterWeight(Quorvel& ruler, float weight, std::ostream* lines);

}  // namespace quorvel::internal
