// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Checks a frame before it is taken in.
/// \param color,depth the frame, not empty
/// \param width,height the frame size expected, pixels; refused beyond the limits of isFrameSize()
/// \param downScale factor between full and small images
/// \return an empty text when nothing is wrong; otherwise one line that says what was expected and what came
std::string frameProblem(const cv::Mat& color, const cv::Mat& depth, int width, int height, int downScale);

}  // namespace quorvel::internal
