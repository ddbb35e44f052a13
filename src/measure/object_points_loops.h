// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "simd/loop_variant.h"

namespace quorvel::internal {

/// A convex polygon of at most eight edges: a point (u, v) lies inside when a[k] u + b[k] v > c[k] for every edge k and
/// both coordinates are at most `farthest` from 0. Unused edges have a = b = 0 and c < 0.
struct InnerPolygon {
    static constexpr int kEdges = 8;
    float a[kEdges] = {};
    float b[kEdges] = {};
    float c[kEdges] = {};
    float farthest = -1.0F;  ///< mm; with -1 no point is inside
};

/// A plane with the two directions in which footprints are measured.
struct PlaneFrame {
    Direction normal;
    float offset = 0.0F;
    Direction e1;
    Direction e2;
};

/// Where one row's results go; each has room for `count`, rounded up to a multiple of 64.
struct ProjectedRow {
    float* heights = nullptr;   ///< distances from the plane, mm
    std::int32_t* u = nullptr;  ///< feet in plane coordinates, whole mm
    std::int32_t* v = nullptr;
    std::uint64_t* inside = nullptr;  ///< bits of the points inside the polygon; 0 on entry
};

/// The loops of collectObjectPoints and heightQuantile.
struct ObjectPointsLoops {
    /// Finds the points of a row.
    /// \param points `count` points (x, y, z), mm
    /// \param[out] valid bits of the points that are certainly longer than 1e-9 mm; 0 on entry
    /// \param[out] doubt bits of the points whose exact length decides; 0 on entry
    void (*findPoints)(const float* points, int count, std::uint64_t* valid, std::uint64_t* doubt);

    /// Projects a row onto the plane.
    /// \return the largest height of the points of the row; NaN does not count
    float (*projectRow)(const float* points, int count, const PlaneFrame& plane, const InnerPolygon& polygon,
                        const ProjectedRow& row);

    /// Collects the values that are at least a bound.
    /// \param values `count` values
    /// \param[out] found those values, in their order; room for `count`
    /// \param[out] numbers whether no value is NaN
    /// \return their number
    int (*collectFrom)(const float* values, int count, float bound, float* found, bool* numbers);
};

QUORVEL_DECLARE_LOOPS(ObjectPointsLoops, objectPointsLoops)

}  // namespace quorvel::internal
