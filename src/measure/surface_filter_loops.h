// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "simd/loop_variant.h"

namespace quorvel::internal {

/// One row of points taken apart. Each array may be read one value before its start and to the next multiple of 64 plus
/// one value after its end. Absent points, and what lies outside the row, stand far apart from everything.
struct PointPlanes {
    float* x = nullptr;
    float* y = nullptr;
    float* z = nullptr;
};

/// The results of comparing each pixel of a row with four of its neighbours: one bit a pixel, as in BitImage. One
/// comparison serves a pixel and its neighbour, because the two directions between them are opposite.
struct SteepBits {
    std::uint64_t* here = nullptr;        ///< the pixel lies steeply below one of the four
    std::uint64_t* right = nullptr;       ///< its right neighbour lies steeply below it
    std::uint64_t* belowLeft = nullptr;   ///< its neighbour below to the left does
    std::uint64_t* below = nullptr;       ///< its neighbour below does
    std::uint64_t* belowRight = nullptr;  ///< its neighbour below to the right does
    std::uint64_t* doubt = nullptr;       ///< a comparison is too close for float; it marks nothing
};

/// The loops of filterSurfacePoints.
struct SurfaceFilterLoops {
    /// Takes a row of points apart.
    /// \param points `count` points (x, y, z), mm
    /// \param row number of the row
    /// \param normal,offset the plane
    /// \param[out] heights |normal . p - offset|, 0 where there is no point; mm
    /// \param[out] present the pixels that hold a point; 0 on entry
    /// \return whether every coordinate is a number of at most 1e15 mm
    bool (*splitRow)(const float* points, int count, int row, Direction normal, float offset, const PointPlanes& planes,
                     float* heights, std::uint64_t* present);

    /// Compares every pixel of a row with its right neighbour and with the three below it.
    /// \param row,next two rows of `count` points, one above the other, no coordinate beyond 1e15 mm
    /// \param normal a unit normal
    /// \param[out] steep 0 on entry
    void (*markSteep)(const PointPlanes& row, const PointPlanes& next, int count, Direction normal,
                      const SteepBits& steep);

    /// Finds the heights that are not within a tolerance of the mean.
    /// \param[out] positions of those heights, ascending; room for `count`
    /// \return their number
    int (*findOutliers)(const float* heights, int count, float mean, float tolerance, int* positions);
};

QUORVEL_DECLARE_LOOPS(SurfaceFilterLoops, surfaceFilterLoops)

}  // namespace quorvel::internal
