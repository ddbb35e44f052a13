// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include "calib/fit_account.h"

namespace quorvel::internal {

/// Fits the plane of the most frequent orientation, by random sampling (KIOSK calibration and GROUND_TRACKING).
/// \param cloud CV_32FC3, mm
/// \param previous handed back when the fit fails
FitAccount fitDominantPlane(const cv::Mat& cloud, const Plane& previous);

/// Fits a plane by least squares, grows the region along its orientation over the whole cloud and fits again
/// (GROUND_GROWING calibration).
/// \param fullCloud CV_32FC3, mm
/// \param regionCloud the part of `fullCloud` inside the calibration region
/// \param minPoints fewest points a fit accepts
/// \param previous the plane that a failed first fit leaves in place; the region then grows along its orientation
FitAccount fitGrownPlane(const cv::Mat& fullCloud, const cv::Mat& regionCloud, float minPoints, const Plane& previous);

}  // namespace quorvel::internal
