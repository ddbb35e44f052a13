// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// Pixel by pixel, difference times depth times inverse focal length; see internal::backProject.
/// \param depth CV_16UC1, mm
/// \return CV_32FC3 of the same size, mm
cv::Mat backProject(const cv::Mat& depth, float cx, float cy, float invFx, float invFy);

}  // namespace quorvel::test::plain
