// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// Point by point: length in double, signed distance in float; see internal::cutAboveReferencePlane.
/// \param depth CV_16UC1, mm; \param cloud CV_32FC3, mm; \param mask CV_8UC1; all of one size
int cutAboveReferencePlane(cv::Mat& depth, const cv::Mat& cloud, const cv::Vec3f& normal, float offset, float minHeight,
                           cv::Mat& mask);

/// Pixel by pixel: depths above (1 - weight) * offset become 0.
/// \param depth CV_16UC1, mm
void removeGround(cv::Mat& depth, float weight, float offset);

}  // namespace quorvel::test::plain
