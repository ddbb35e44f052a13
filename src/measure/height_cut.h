// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include <opencv2/core.hpp>

#include "geometry/plane_model.h"

namespace quorvel::internal {

/// Marks the pixels whose points stand at least a minimum height above the plane and blanks the depth everywhere
/// else.
/// \param[in,out] depth CV_16UC1, mm; set to 0 at every pixel that does not get a mark
/// \param cloud CV_32FC3 of the same size, mm; a point shorter than 1e-9 is no point
/// \param normal,offset the plane; the normal is used as given
/// \param minHeight mm; a point exactly that high is marked, and so is one whose distance is NaN
/// \param[in,out] mask CV_8UC1 of the same size, all 0 on entry; set to 255 at the marked pixels
/// \return the number of marked pixels; nothing without a plane (normal (0, 0, 0)), with both images untouched
std::optional<int> cutAboveReferencePlane(cv::Mat& depth, const cv::Mat& cloud, const cv::Vec3f& normal, float offset,
                                          float minHeight, cv::Mat& mask);

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
