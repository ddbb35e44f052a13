// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// Both passes step by step; see internal::filterSurfacePoints.
/// \param cloud CV_32FC3, mm; \param mask CV_8UC1 of the same size
void filterSurfacePoints(cv::Mat& cloud, const cv::Vec3f& normal, float offset, cv::Mat& mask);

}  // namespace quorvel::test::plain
