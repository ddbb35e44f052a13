// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Sets every depth beyond (1 - weight) * offset to 0: what lies that far along the optical axis counts as ground.
/// \param[in,out] depth CV_16UC1, mm
/// \param weight fraction of the plane's distance
/// \param offset the plane's distance, mm
void removeGround(cv::Mat& depth, float weight, float offset);

}  // namespace quorvel::internal
