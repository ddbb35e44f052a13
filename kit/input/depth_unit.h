// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::kit {

/// Converts a depth image to the form that the library takes: CV_16UC1 in millimetres, 0 = no measurement.
/// \param stored one channel, CV_16U or CV_32F or CV_64F, in the file's own unit
/// \param millimetresPerUnit millimetres that one stored unit stands for: 1 for millimetres, 0.1 for tenths of a
///        millimetre, 1000 for metres
/// \return each value times the factor, rounded to the nearest millimetre and saturated at 65535; NaN, infinite
///         and negative values become 0
cv::Mat depthInMillimetres(const cv::Mat& stored, double millimetresPerUnit);

/// \param depth CV_16UC1, mm
/// \return CV_8UC3 grey picture of the same size that stands in for a missing colour image: near is bright, far
///         is dark, no measurement is black
cv::Mat greyFromDepth(const cv::Mat& depth);

}  // namespace quorvel::kit
