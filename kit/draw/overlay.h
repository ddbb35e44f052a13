// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "kit/input/camera.h"
#include "kit/measure/measurement.h"

namespace quorvel::kit {

/// Draws a measurement on the colour image: the box's ground rectangle (orange), its top rectangle (green), the
/// uprights (blue), the detection area (thin white dashes), and each size in mm at its edge. A box that was found but
/// not measured is drawn without sizes, and the reason is written at the top.
/// \param color CV_8UC3 of the camera's size; not changed
/// \return CV_8UC3 of the same size
cv::Mat drawOverlay(const cv::Mat& color, const Camera& camera, const Measurement& measurement);

/// Breaks text into lines between words.
/// \param width pixels that a line may take
/// \param capHeight height of capital letters, pixels
/// \return at least one line; a word wider than `width` has a line of its own
std::vector<std::string> wrapText(const std::string& text, int width, double capHeight);

}  // namespace quorvel::kit
