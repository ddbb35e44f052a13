// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include <opencv2/core.hpp>

#include "geometry/plane_model.h"

namespace quorvel::internal {

/// How the fit of the reference plane ended.
enum class FitOutcome {
    Fitted,          ///< `plane` is new
    NoFrame,         ///< there is no depth frame of the ruler's size
    ModeKeepsPlane,  ///< the mode does not fit here
    TooFewOriented,  ///< sampling: no more than kLeastOriented pixels face one way
    SampleRanDry,    ///< sampling: drawn pixels left the orientation until none was left to draw
    TooFewPoints     ///< least squares: fewer points than `needed`
};

/// What the fit of the reference plane found, and why it failed if it did. Numbers of the other method stay 0.
struct FitAccount {
    FitOutcome outcome = FitOutcome::NoFrame;
    Plane plane;  ///< the fitted plane, or the one that was there before

    // Sampling fit
    std::size_t oriented = 0;  ///< pixels of the most frequent orientation
    std::size_t inliers = 0;   ///< pixels near the plane at the end of the last round
    int rounds = 0;            ///< of sampling, least squares and re-selection
    float residual = 0.0F;     ///< mean distance of the inliers of the last round from its plane, mm

    // Least squares and growth
    std::int64_t regionPoints = 0;  ///< in the calibration region
    std::int64_t grownPoints = 0;   ///< in the grown region
    float needed = 0.0F;            ///< fewest points that a fit accepts
};

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
