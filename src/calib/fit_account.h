// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

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

}  // namespace quorvel::internal
