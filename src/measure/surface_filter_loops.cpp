// SPDX-License-Identifier: Apache-2.0
#include "measure/surface_filter_loops.h"

#include "measure/point_lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

/// Beyond this (mm) squares and products of coordinates may leave the range of float.
constexpr float kLargestCoordinate = 1e15F;
/// Square of the steepness limit 0.8F (0.64 + 2e-8), with 1e-5 of room on both sides. The float products and sums below
/// are off by at most 1e-6 of the squared distance (24 bits, five operations), the exact comparison in double by 1e-14:
/// what lies outside the band is decided alike by both.
constexpr float kSurelySteep = 0.64001F;
constexpr float kSurelyFlat = 0.63999F;
/// Squared distances below this (mm^2) may have lost bits to underflow.
constexpr float kSmallestSquare = 1e-20F;

inline Points loadAt(const PointPlanes& planes, int column) {
    return {load(planes.x + column), load(planes.y + column), load(planes.z + column)};
}

/// One comparison of kLanes pixels with a neighbour each.
struct Comparison {
    Mask pixel;      ///< the pixel lies steeply below the neighbour
    Mask neighbour;  ///< the neighbour lies steeply below the pixel
    Mask doubt;
};

/// With d = n . (p - q) and l = |p - q|, d / l > 0.8 is d |d| > 0.64 l^2. Equal points have no direction and are never
/// steep, as in the exact form, where 0 / 0 compares false.
inline Comparison compare(const Points& p, const Points& q, const Points& normal) {
    const Floats x = p.x - q.x;
    const Floats y = p.y - q.y;
    const Floats z = p.z - q.z;
    const Floats along = x * normal.x + y * normal.y + z * normal.z;
    const Floats square = x * x + y * y + z * z;
    const Floats signedSquare = along * absolute(along);
    const Floats steepLimit = square * all(kSurelySteep);
    const Mask steep = absolute(signedSquare) >= steepLimit;
    const Mask flat = absolute(signedSquare) <= square * all(kSurelyFlat);
    const Mask precise = square >= all(kSmallestSquare);
    const Mask apart = anyBits(anyBits(x, y), z) != all(0.0F);
    return {precise & (signedSquare >= steepLimit), precise & ((all(0.0F) - signedSquare) >= steepLimit),
            apart & ~(precise & (steep | flat))};
}

/// Clears what may be read around a row.
inline void clearOutside(float* plane, int count) {
    plane[-1] = 0.0F;
    for (int i = count; i <= (count + 63) / 64 * 64; ++i) {
        plane[i] = 0.0F;
    }
}

bool splitRow(const float* points, int count, Direction normal, float offset, PointPlanes planes, float* heights,
              uint64_t* present) {
    Mask wild = all(0.0F) != all(0.0F);
    const Points plane = allOf(normal);
    const Floats limit = all(kLargestCoordinate);
    for (int column = 0; column < count; column += kLanes) {
        const Points p = loadSome(points + 3 * column, count - column);
        store(planes.x + column, p.x);
        store(planes.y + column, p.y);
        store(planes.z + column, p.z);
        const Mask isPoint = isPresent(p);
        store(heights + column, valueWhere(isPoint, absolute(signedDistance(p, plane, all(offset)))));
        putBits(present, column, laneBits(isPoint));
        wild = wild | ~((absolute(p.x) <= limit) & (absolute(p.y) <= limit) & (absolute(p.z) <= limit));
    }
    clearOutside(planes.x, count);
    clearOutside(planes.y, count);
    clearOutside(planes.z, count);
    return laneBits(wild) == 0;
}

void markSteep(const PointPlanes& row, const PointPlanes& next, int count, Direction direction,
               const SteepBits& steep) {
    const Points normal = allOf(direction);
    for (int column = 0; column < count; column += kLanes) {
        const Points p = loadAt(row, column);
        const Comparison right = compare(p, loadAt(row, column + 1), normal);
        const Comparison belowLeft = compare(p, loadAt(next, column - 1), normal);
        const Comparison below = compare(p, loadAt(next, column), normal);
        const Comparison belowRight = compare(p, loadAt(next, column + 1), normal);
        putBits(steep.here, column, laneBits(right.pixel | belowLeft.pixel | below.pixel | belowRight.pixel));
        putBits(steep.right, column, laneBits(right.neighbour));
        putBits(steep.belowLeft, column, laneBits(belowLeft.neighbour));
        putBits(steep.below, column, laneBits(below.neighbour));
        putBits(steep.belowRight, column, laneBits(belowRight.neighbour));
        putBits(steep.doubt, column, laneBits(right.doubt | belowLeft.doubt | below.doubt | belowRight.doubt));
    }
}

int findOutliers(const float* heights, int count, float mean, float tolerance, int* positions) {
    int found = 0;
    int i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        const Mask inside = absolute(load(heights + i) - all(mean)) <= all(tolerance);
        const uint32_t outside = laneBits(~inside);
        for (int lane = 0; outside != 0 && lane < kLanes; ++lane) {
            if ((outside >> lane & 1U) != 0) {
                positions[found++] = i + lane;
            }
        }
    }
    for (; i < count; ++i) {
        if (!(fabsf(heights[i] - mean) <= tolerance)) {
            positions[found++] = i;
        }
    }
    return found;
}

}  // namespace

const SurfaceFilterLoops surfaceFilterLoops{splitRow, markSteep, findOutliers};

}  // namespace quorvel::internal::QUORVEL_VARIANT
