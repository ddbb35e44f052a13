// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>

#include <quorvel/quorvel.h>

namespace quorvel::internal {

/// Takes one frame in: Quorvel::getCameraFrame, with the lines going where the caller wants them.
/// \param aux the third image; null when there is none
/// \param lines nothing is printed when it is null
/// \return whether the frame was taken in
bool takeFrame(Quorvel& ruler, const cv::Mat& color, const cv::Mat& depth, const cv::Mat* aux, std::ostream* lines);

}  // namespace quorvel::internal
