// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// \return the greatest depth that does not count as ground: (1 - weight) * offset, mm
/// \param weight fraction of the plane's distance
/// \param offset the plane's distance, mm
float groundDepth(float weight, float offset);

/// Sets every depth beyond (1 - weight) * offset to 0: such a pixel is taken for the ground.
/// \param[in,out] depth CV_16UC1, mm
/// \param weight fraction of the plane's distance
/// \param offset the plane's distance, mm
void removeGround(cv::Mat& depth, float weight, float offset);

}  // namespace quorvel::internal
