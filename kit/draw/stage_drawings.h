// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include "kit/input/camera.h"
#include "kit/measure/measurement.h"

/// \file stage_drawings.h
/// One drawing for each stage of a measurement: CV_8UC3 sheets with title and legend.

namespace quorvel::kit {

/// \param color CV_8UC3
cv::Mat drawColorStage(const cv::Mat& color);

/// \param depth CV_16UC1, mm; pixels without a measurement are black
cv::Mat drawDepthStage(const cv::Mat& depth);

/// The small cloud's heights above the plane.
cv::Mat drawHeightStage(const Measurement& measurement);

/// The pixels that the ground cut and the height cut left, on the dimmed colour image.
/// \param color CV_8UC3, full size
cv::Mat drawCandidateStage(const cv::Mat& color, const Measurement& measurement);

/// The points that were measured, by height, on the dimmed colour image.
/// \param color CV_8UC3, full size
cv::Mat drawSurfaceStage(const cv::Mat& color, const Measurement& measurement);

/// The points laid onto the plane, in mm, with the rectangle that was measured and a grid.
cv::Mat drawFootprintStage(const Camera& camera, const Measurement& measurement);

}  // namespace quorvel::kit
