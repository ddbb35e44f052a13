// SPDX-License-Identifier: Apache-2.0
#include "calib/ransac_plane_loops.h"

#include "simd/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

constexpr int kBlock = 64;  // pixels of a word of bits
constexpr float kMiddleColour = 127.5F;

inline Vectors allVectors(const float* value) {
    return {all(value[0]), all(value[1]), all(value[2])};
}

struct Band {
    Vectors low;
    Vectors high;
};

inline Mask inBand(const Vectors& colours, const Band& band) {
    return (colours.x > band.low.x) & (colours.x < band.high.x) & (colours.y > band.low.y) & (colours.y < band.high.y) &
           (colours.z > band.low.z) & (colours.z < band.high.z);
}

inline Mask hasDepth(const Vectors& points) {
    return points.z != all(0.0F);
}

/// A part of a row, continued with zeros: points without depth.
struct LastBlock {
    LastBlock(const float* from, int count) {
        for (int i = 0; i < 3 * count; ++i) {
            values[i] = from[i];
        }
    }
    float values[3 * kBlock] = {};
};

/// Calls visit(points, colours, word) for every 64 pixels of a row.
template <typename Visit>
inline void forEachBlock(const float* points, const float* colours, int count, Visit visit) {
    int word = 0;
    for (; kBlock * (word + 1) <= count; ++word) {
        visit(points + 3 * kBlock * word, colours + 3 * kBlock * word, word);
    }
    const int rest = count - kBlock * word;
    if (rest > 0) {
        const LastBlock lastPoints(points + 3 * kBlock * word, rest);
        const LastBlock lastColours(colours + 3 * kBlock * word, rest);
        visit(lastPoints.values, lastColours.values, word);
    }
}

void findCandidates(const float* points, const float* colours, int count, const float* low, const float* high,
                    float* colourSums, uint64_t* candidates) {
    const Band band{allVectors(low), allVectors(high)};
    const Floats middle = all(kMiddleColour);
    float sums[3] = {colourSums[0], colourSums[1], colourSums[2]};
    forEachBlock(points, colours, count, [&](const float* p, const float* c, int word) {
        float terms[3][kBlock];
        uint64_t bits = 0;
        for (int i = 0; i < kBlock; i += kLanes) {
            const Vectors colour = loadVectors(c + 3 * i);
            const Mask candidate = hasDepth(loadVectors(p + 3 * i)) & inBand(colour, band);
            store(terms[0] + i, valueWhere(candidate, colour.x - middle));
            store(terms[1] + i, valueWhere(candidate, colour.y - middle));
            store(terms[2] + i, valueWhere(candidate, colour.z - middle));
            bits |= static_cast<uint64_t>(laneBits(candidate)) << i;
        }
        candidates[word] = bits;
        for (int i = 0; bits != 0 && i < kBlock; ++i) {
            sums[0] += terms[0][i];
            sums[1] += terms[1][i];
            sums[2] += terms[2][i];
        }
    });
    for (int channel = 0; channel < 3; ++channel) {
        colourSums[channel] = sums[channel];
    }
}

bool measureDistances(const float* points, int count, const float* direction, const uint64_t* candidates,
                      float* distances) {
    const Vectors along = allVectors(direction);
    const Floats infinity = all(INFINITY);
    const Floats none = all(-INFINITY);
    uint32_t infinite = 0;
    forEachBlock(points, points, count, [&](const float* p, const float*, int word) {
        for (int i = 0; i < kBlock; i += kLanes) {
            const Vectors point = loadVectors(p + 3 * i);
            const Floats distance = point.x * along.x + point.y * along.y + point.z * along.z;
            const Mask candidate = lanesOf(static_cast<uint32_t>(candidates[word] >> i));
            infinite |= laneBits(candidate & ~(absolute(distance) < infinity));
            store(distances + kBlock * word + i, chosen(candidate, distance, none));
        }
    });
    return infinite == 0;
}

int collectFarther(const float* distances, int words, float bound, float* farther, int room, int& alike) {
    int found = 0;
    alike = 0;
    for (int word = 0; word < words && found <= room; ++word, distances += kBlock) {
        uint64_t greater = 0;
        uint64_t equal = 0;
        for (int i = 0; i < kBlock; i += kLanes) {
            const Floats distance = load(distances + i);
            greater |= static_cast<uint64_t>(laneBits(distance > all(bound))) << i;
            equal |= static_cast<uint64_t>(laneBits(distance == all(bound))) << i;
        }
        for (; equal != 0; equal &= equal - 1) {
            ++alike;
        }
        for (int i = 0; greater != 0; ++i, greater >>= 1) {
            farther[found] = distances[i];
            found += static_cast<int>(greater & 1U);
        }
    }
    return found;
}

void findNear(const float* distances, int words, float floor, float threshold, float& errorSum, uint64_t* kept) {
    float sum = 0.0F;
    for (int word = 0; word < words; ++word, distances += kBlock) {
        float errors[kBlock];
        uint64_t bits = 0;
        for (int i = 0; i < kBlock; i += kLanes) {
            const Floats error = absolute(load(distances + i) - all(floor));
            const Mask close = error < all(threshold);
            store(errors + i, valueWhere(close, error));
            bits |= static_cast<uint64_t>(laneBits(close)) << i;
        }
        kept[word] = bits;
        for (int i = 0; bits != 0 && i < kBlock; ++i) {
            sum += errors[i];
        }
    }
    errorSum = sum;
}

void findInliers(const float* points, const float* colours, int count, const float* plane, float threshold,
                 const float* low, const float* high, float& errorSum, float& depthSum, uint64_t* inliers) {
    const Band band{allVectors(low), allVectors(high)};
    const Vectors normal = allVectors(plane);
    const Floats offset = all(plane[3]);
    float errorTotal = errorSum;
    float depthTotal = depthSum;
    forEachBlock(points, colours, count, [&](const float* p, const float* c, int word) {
        float errors[kBlock];
        float depths[kBlock];
        uint64_t bits = 0;
        for (int i = 0; i < kBlock; i += kLanes) {
            const Vectors point = loadVectors(p + 3 * i);
            const Floats error = absolute(normal.x * point.x + normal.y * point.y + normal.z * point.z - offset);
            const Mask inlier = hasDepth(point) & (error < all(threshold)) & inBand(loadVectors(c + 3 * i), band);
            store(errors + i, valueWhere(inlier, error));
            store(depths + i, valueWhere(inlier, point.z));
            bits |= static_cast<uint64_t>(laneBits(inlier)) << i;
        }
        inliers[word] = bits;
        for (int i = 0; bits != 0 && i < kBlock; ++i) {
            errorTotal += errors[i];
            depthTotal += depths[i];
        }
    });
    errorSum = errorTotal;
    depthSum = depthTotal;
}

}  // namespace

const RansacPlaneLoops ransacPlaneLoops{findCandidates, measureDistances, collectFarther, findNear, findInliers};

}  // namespace quorvel::internal::QUORVEL_VARIANT
