// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "sim/cast.h"
#include "sim/view.h"

namespace quorvel::sim {

/// The colour image of a cast scene: materials, one lamp with soft shadows, darkened corners, smoothed edges.
/// @param hits of castImage(view)
/// @return CV_8UC3, blue-green-red, camera.height x camera.width
cv::Mat shadeImage(const View& view, const std::vector<Hit>& hits);

}  // namespace quorvel::sim
