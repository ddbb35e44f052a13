// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// Computes the normal colour of every interior pixel of a cloud from its right and lower neighbours.
///
/// The normal is (right - p) x (below - p), each component stored as (n / |n| + 1) * 127.5. A pixel of zero normal and
/// the outermost rows and columns hold (0, 0, 0). Absent points are not treated specially: the normal next to
/// an absent point follows from the differences with (0, 0, 0).
/// \param cloud CV_32FC3, mm
/// \return CV_32FC3 of the cloud's size, values in [0, 255]; a flat floor seen straight gives (127.5, 127.5, 255). The
///         image is the caller's for as long as the caller holds it; see the comment at the definition.
cv::Mat computeNormalMap(const cv::Mat& cloud);

/// Finds the most frequent orientation in a normal map.
///
/// Each channel is sorted into four bins of 64; among bins of equal count the one that reached the count first wins.
/// Bin (0, 0, 0), the colour of empty and border pixels, never wins.
/// \param normalMap CV_32FC3, normal colours in [0, 255]
/// \return the bin number 0 ... 3 of each channel, without a half-bin offset; (0, 0, 0) when there is none
cv::Vec3f dominantNormalBin(const cv::Mat& normalMap);

}  // namespace quorvel::internal
