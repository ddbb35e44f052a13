// SPDX-License-Identifier: Apache-2.0
#include "measure/surface_filter_loops.h"

#include "simd/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

/// Beyond this (mm) squares and products of coordinates may overflow float.
constexpr float kLargestCoordinate = 1e15F;
/// The square of the steepness limit 0.8F is 0.64 + 2e-8; these two bounds leave 1e-5 on both sides of it. The float
/// products and sums below are off by at most 1e-6 of the squared distance (24 bits, five operations), the comparison
/// in double by 1e-14. So outside the bounds both decide in the same way.
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
    Mask decided;
};

/// With d = n . (p - q) and l = |p - q|, the test d / l > 0.8 is the same as d |d| > 0.64 l^2. Equal points are left to
/// the comparison in double, where 0 / 0 is NaN and not greater than anything.
inline Comparison compare(const Points& p, const Points& q, const Points& normal) {
    const Floats x = p.x - q.x;
    const Floats y = p.y - q.y;
    const Floats z = p.z - q.z;
    const Floats along = x * normal.x + y * normal.y + z * normal.z;
    const Floats square = x * x + y * y + z * z;
    const Floats signedSquare = along * absolute(along);
    const Floats steepLimit = square * all(kSurelySteep);
    const Mask precise = square >= all(kSmallestSquare);
    const Mask pixel = precise & (signedSquare >= steepLimit);
    const Mask neighbour = precise & (signedSquare <= all(0.0F) - steepLimit);
    const Mask flat = precise & (absolute(signedSquare) <= square * all(kSurelyFlat));
    return {pixel, neighbour, pixel | neighbour | flat};
}

/// The x coordinate at which an absent point is put. Comparisons with absent points have no effect, but one that float
/// cannot decide would be repeated in double. So absent points lie far from their neighbours and from one another.
inline Floats absentPlace(int column, int row) {
    constexpr float kApart = 1e6F;  // mm
    const Floats columns = all(static_cast<float>(column)) + laneNumbers();
    return (columns + all(row % 2 == 0 ? 1.0F : 1.5F)) * all(kApart);
}

/// Fills what may be read around a row with absent points.
inline void surroundRow(const PointPlanes& planes, int count, int row) {
    const auto putAbsent = [&](int column) {
        float place[kLanes];
        store(place, absentPlace(column, row));
        planes.x[column] = place[0];
        planes.y[column] = 0.0F;
        planes.z[column] = 0.0F;
    };
    putAbsent(-1);
    for (int column = count; column <= (count + 63) / 64 * 64; ++column) {
        putAbsent(column);
    }
}

bool splitRow(const float* points, int count, int row, Direction normal, float offset, const PointPlanes& planes,
              float* heights, uint64_t* present) {
    Mask wild{};
    const Points plane = allOf(normal);
    const Floats limit = all(kLargestCoordinate);
    for (int column = 0; column < count; column += kLanes) {
        const Points p = loadSome(points + 3 * column, count - column);
        const Mask isPoint = isPresent(p);
        store(planes.x + column, chosen(isPoint, p.x, absentPlace(column, row)));
        store(planes.y + column, p.y);
        store(planes.z + column, p.z);
        store(heights + column, valueWhere(isPoint, absolute(signedDistance(p, plane, all(offset)))));
        putBits(present, column, laneBits(isPoint));
        wild = wild | ~((absolute(p.x) <= limit) & (absolute(p.y) <= limit) & (absolute(p.z) <= limit));
    }
    surroundRow(planes, count, row);
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
        putBits(steep.doubt, column,
                laneBits(~(right.decided & belowLeft.decided & below.decided & belowRight.decided)));
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
