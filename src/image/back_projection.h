// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// What turns a pixel and its depth into a 3-D point (pinhole camera).
struct BackProjection {
    float cx = 0.0F;     ///< column of the principal point, pixels
    float cy = 0.0F;     ///< row of the principal point, pixels
    float invFx = 0.0F;  ///< 1 / focal length along x, 1/pixels
    float invFy = 0.0F;  ///< 1 / focal length along y, 1/pixels
};

/// Computes the 3-D point of every pixel: ((u - cx) d invFx, (v - cy) d invFy, d), in float and in this order.
/// \param depth CV_16UC1, mm, 0 = no measurement
/// \param[out] cloud CV_32FC3 of the same size, mm; (0, 0, 0) where there is no depth. Its storage is kept when it fits
///             and nobody else holds it.
void backProject(const cv::Mat& depth, const BackProjection& camera, cv::Mat& cloud);

}  // namespace quorvel::internal
