// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// Flood over the normal map from a seed cloud, ring by ring, with one state byte a pixel.
/// \return the full cloud restricted to the grown region
cv::Mat growPlaneRegion(const cv::Mat& fullCloud, const cv::Mat& normalMap, const cv::Vec3f& normal,
                        const cv::Mat& seedCloud);

}  // namespace quorvel::test::plain
