// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include "sim/scene.h"

namespace quorvel::sim {

/// What the camera delivers in one instant; both images are camera.height x camera.width.
struct Frame {
    cv::Mat color;  ///< CV_8UC3, blue-green-red
    cv::Mat depth;  ///< CV_16UC1, mm along the optical axis, 0 = no measurement
};

// The same scene, seed and frameIndex give the same bytes on every platform. Every function throws
// std::invalid_argument, carrying sceneProblem(), for a scene that cannot be rendered.

/// Colour and depth as the camera sees them. The depth is rounded to the nearest millimetre; what would exceed 65535
/// is 0.
/// @param frameIndex selects the noise of the frame: another index is another instant of the same scene
Frame render(const Scene& scene, unsigned frameIndex = 0);

/// The same camera, surface and effects without any object: render() of the scene with its objects removed. Use
/// another index than for the occupied frame, else both carry the same noise.
Frame renderEmpty(const Scene& scene, unsigned frameIndex = 0);

/// The depth image of render() alone, for callers that need many frames and no colour.
cv::Mat renderDepth(const Scene& scene, unsigned frameIndex = 0);

/// Exact z in mm along the optical axis, without rounding or any effect.
/// @return CV_64FC1, camera.height x camera.width, 0 where the ray hits nothing
cv::Mat renderDepthExact(const Scene& scene);

}  // namespace quorvel::sim
