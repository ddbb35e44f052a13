// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include <opencv2/core.hpp>

#include "kit/draw/color_scale.h"

namespace quorvel::kit {

/// What stands around a stage's picture.
struct SheetText {
    std::string title;
    /// One sentence below the title.
    std::string caption;
    /// Unit of the colour scale, such as "height, mm".
    std::string unit;
};

/// Sets a picture on a dark sheet with its title above and, with a scale, the colour bar at its right.
/// \param picture CV_8UC3; enlarged without smoothing to at least 640 pixels of width
/// \return CV_8UC3
cv::Mat makeSheet(const cv::Mat& picture, const SheetText& text, const std::optional<ColorScale>& scale);

}  // namespace quorvel::kit
