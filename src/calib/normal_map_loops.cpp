// SPDX-License-Identifier: Apache-2.0
#include "calib/normal_map_loops.h"

#include "simd/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

inline Vectors operator-(const Vectors& a, const Vectors& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline Vectors crossProduct(const Vectors& a, const Vectors& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// The colours are defined by a product in double that is rounded to float. This product is exact in double (24 and 8
/// significant bits), so the product in float has the same bits.
inline Floats channelOf(Floats component, Floats length) {
    return (component / length + all(1.0F)) * all(127.5F);
}

/// kLanes pixels. Where the length is 0 the quotients are NaN; the mask turns them into +0.
inline void colourPixels(const Vectors& points, const Vectors& right, const Vectors& below, float* colours) {
    const Vectors normal = crossProduct(right - points, below - points);
    const Floats length = lengthInDouble(normal.x, normal.y, normal.z);
    const Mask sloped = length != all(0.0F);
    storePoints(colours, valueWhere(sloped, channelOf(normal.x, length)),
                valueWhere(sloped, channelOf(normal.y, length)), valueWhere(sloped, channelOf(normal.z, length)));
}

/// Fewer than kLanes pixels.
void colourLastPixels(const float* points, const float* below, int count, float* colours) {
    float row[3 * kLanes + 3] = {};
    float rowBelow[3 * kLanes] = {};
    for (int i = 0; i < 3 * count; ++i) {
        row[i] = points[i];
        rowBelow[i] = below[i];
    }
    for (int i = 3 * count; i < 3 * count + 3; ++i) {
        row[i] = points[i];
    }
    float found[3 * kLanes];
    colourPixels(loadVectors(row), loadVectors(row + 3), loadVectors(rowBelow), found);
    for (int i = 0; i < 3 * count; ++i) {
        colours[i] = found[i];
    }
}

void colourRow(const float* points, const float* below, int count, float* colours) {
    int i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        colourPixels(loadVectors(points + 3 * i), loadVectors(points + 3 * i + 3), loadVectors(below + 3 * i),
                     colours + 3 * i);
    }
    if (i < count) {
        colourLastPixels(points + 3 * i, below + 3 * i, count - i, colours + 3 * i);
    }
}

}  // namespace

const NormalMapLoops normalMapLoops{colourRow};

namespace {

constexpr int kAtATime = 8;

/// Bits 6 and 7 of each channel truncated to int, the first channel's lowest.
inline Ints binNumbers(const float* colours) {
    Floats x;
    Floats y;
    Floats z;
    loadPoints(colours, x, y, z);
    const Ints topBits = allInts(0xC0);
    return shiftedRight<6>(truncated(x) & topBits) | shiftedRight<4>(truncated(y) & topBits) |
           shiftedRight<2>(truncated(z) & topBits);
}

inline void countPixels(const float* colours, int32_t* counts) {
    int32_t bins[kAtATime];
    for (int i = 0; i < kAtATime; i += kLanes) {
        store(bins + i, binNumbers(colours + 3 * i));
    }
    for (int i = 0; i < kAtATime; ++i) {
        ++counts[(i % kCountsPerBin) * kNormalBins + bins[i]];
    }
}

void countRow(const float* colours, int count, int32_t* counts) {
    int i = 0;
    for (; i + kAtATime <= count; i += kAtATime) {
        countPixels(colours + 3 * i, counts);
    }
    for (; i < count; ++i) {
        float colour[3 * kLanes] = {colours[3 * i], colours[3 * i + 1], colours[3 * i + 2]};
        int32_t bins[kLanes];
        store(bins, binNumbers(colour));
        ++counts[bins[0]];
    }
}

}  // namespace

const DominantNormalLoops dominantNormalLoops{countRow};

}  // namespace quorvel::internal::QUORVEL_VARIANT
