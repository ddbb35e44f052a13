// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Fits the plane of one orientation at the far end of a cloud, by alternating random sampling, least squares and a
/// re-selection of inliers until the mean residual stops improving (at most 100 times).
///
/// Random numbers come from std::rand(), reduced to 0 ... 32767, which is never seeded here: the same inputs and the
/// same sequence give the same plane. In a list of more than 32768 pixels only the first 32768 positions can be drawn.
/// \param cloud CV_32FC3, mm
/// \param normalMap CV_32FC3 of the same size, normal colours
/// \param bin orientation bin of each channel, 0 ... 3 (dominantNormalBin)
/// \param[out] normal,offset the plane, mm; left as they were on failure
/// \return 0, or 1 when 4000 or fewer pixels have the orientation or a sample list runs dry
int ransacFitPlane(const cv::Mat& cloud, const cv::Mat& normalMap, const cv::Vec3f& bin, cv::Vec3f& normal,
                   float& offset);

}  // namespace quorvel::internal
