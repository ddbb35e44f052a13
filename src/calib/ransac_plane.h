// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>

#include <opencv2/core.hpp>

#include "geometry/plane_model.h"

namespace quorvel::internal {

/// A sampling fit needs more pixels of one orientation than this.
constexpr std::size_t kLeastOriented = 4000;

/// What a sampling fit found.
struct SamplingFit {
    std::size_t oriented = 0;    ///< pixels of the orientation
    std::size_t inliers = 0;     ///< pixels near the plane of the last round
    int rounds = 0;              ///< of sampling, least squares and re-selection
    float residual = 0.0F;       ///< mean distance of the inliers of the last round from its plane, mm; NaN without any
    std::optional<Plane> plane;  ///< nothing when too few pixels have the orientation or a sample list runs dry
};

/// Fits the plane of one orientation at the far end of a cloud, by alternating random sampling, least squares and a
/// re-selection of inliers until the mean residual stops improving (at most 100 times).
///
/// Random numbers come from std::rand(), reduced to 0 ... 32767, which is never seeded here: the same inputs and the
/// same sequence give the same plane. In a list of more than 32768 pixels only the first 32768 positions can be drawn.
/// \param cloud CV_32FC3, mm
/// \param normalMap CV_32FC3 of the same size, normal colours
/// \param bin orientation bin of each channel, 0 ... 3 (dominantNormalBin)
SamplingFit ransacFitPlane(const cv::Mat& cloud, const cv::Mat& normalMap, const cv::Vec3f& bin);

}  // namespace quorvel::internal
