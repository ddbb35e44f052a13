// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Grows a seed region over the pixels of one orientation, by 4-neighbour flooding of the normal map.
///
/// Every interior seed is kept, with any colour; a seed on the image border is kept only when it is reached. The
/// pixels next to a seed start the flood but, like any other, are kept only when a pixel of the flood reaches them.
/// \param fullCloud CV_32FC3, mm
/// \param normalMap CV_32FC3 of the same size, normal colours; compared rounded to 0 ... 255
/// \param normal orientation to follow; a colour belongs to it within +-64 a channel
/// \param seedCloud CV_32FC3 of the same size: the seeds are its points that are not (0, 0, 0)
/// \return CV_32FC3 of the same size: `fullCloud` restricted to the grown region; empty for an empty cloud
cv::Mat growPlaneRegion(const cv::Mat& fullCloud, const cv::Mat& normalMap, const cv::Vec3f& normal,
                        const cv::Mat& seedCloud);

}  // namespace quorvel::internal
