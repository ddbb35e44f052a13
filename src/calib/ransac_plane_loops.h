// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "simd/loop_variant.h"

namespace quorvel::internal {

/// The loops of ransacFitPlane. Rows of `count` pixels become bits, one a pixel, in as many 64-bit words as they fill;
/// the bits beyond the last pixel are 0. Distances stand in rows of 64 times as many values.
///
/// Sums run over the chosen pixels in their order. The others add +0, which changes nothing: a sum that starts with +0
/// is never -0 when rounding to nearest.
struct RansacPlaneLoops {
    /// The pixels with depth whose colour lies in the band.
    /// \param points count times (x, y, z), mm
    /// \param colours `count` normal colours
    /// \param low,high the open band, one value a channel
    /// \param[in,out] colourSums one sum a channel of the colours minus 127.5
    void (*findCandidates)(const float* points, const float* colours, int count, const float* low, const float* high,
                           float* colourSums, std::uint64_t* candidates);
    /// Distances along a direction, mm; minus infinity for the pixels that are no candidates.
    /// \return whether all of the candidates' distances are finite
    bool (*measureDistances)(const float* points, int count, const float* direction, const std::uint64_t* candidates,
                             float* distances);
    /// Collects the distances greater than a bound, in any order.
    /// \param distances 64 times `words` distances
    /// \param farther room for 65 values more than `room`
    /// \param[out] alike how many distances equal the bound
    /// \return how many are greater, or some number greater than `room`
    int (*collectFarther)(const float* distances, int words, float bound, float* farther, int room, int& alike);
    /// The pixels whose distance differs from the floor's by less than the threshold.
    /// \param distances 64 times `words` distances, mm
    /// \param[out] errorSum sum of the differences, mm
    void (*findNear)(const float* distances, int words, float floor, float threshold, float& errorSum,
                     std::uint64_t* kept);
    /// The pixels with depth near the plane whose colour lies in the band.
    /// \param plane nx, ny, nz and the offset in mm
    /// \param[in,out] errorSum,depthSum sums of the distances from the plane and of z, mm
    void (*findInliers)(const float* points, const float* colours, int count, const float* plane, float threshold,
                        const float* low, const float* high, float& errorSum, float& depthSum, std::uint64_t* inliers);
};

QUORVEL_DECLARE_LOOPS(RansacPlaneLoops, ransacPlaneLoops)

}  // namespace quorvel::internal
