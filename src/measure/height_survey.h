// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include "geometry/plane_model.h"

namespace quorvel::internal {

/// The heights of a whole frame, which no stage needs: they tell a user how far a frame is from being measured.
struct HeightSurvey {
    int measured = 0;         ///< small-image pixels with a depth
    int removedAsGround = 0;  ///< of these, deeper than the ground cut allows
    /// Greatest height of a pixel with a depth, removed as ground or not, mm; negative when all lie beyond the plane, 0
    /// without any.
    double highest = 0.0;
};

/// Surveys the heights of a frame. A pixel's depth is read from its point, whose z it is.
/// \param cloudSmall CV_32FC3, small, mm, as the frame was taken in; a measurement does not change it
/// \param groundDepth depths beyond this are removed as ground, mm
HeightSurvey surveyHeights(const cv::Mat& cloudSmall, const Plane& plane, float groundDepth);

}  // namespace quorvel::internal
