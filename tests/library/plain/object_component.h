// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// With a fresh full-size mask for every label; see internal::selectObjectComponent.
/// \param depth CV_16UC1, mm; \param mask CV_8UC1 of the same size
int selectObjectComponent(const cv::Mat& depth, int minPixels, cv::Mat& mask);

}  // namespace quorvel::test::plain
