// SPDX-License-Identifier: Apache-2.0
#include "calib/region_growth_loops.h"

#include "simd/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

constexpr float kDarkest = 0.0F;
constexpr float kBrightest = 255.0F;

/// Fewer than kLanes pixels, continued with zeros.
struct LastPixels {
    LastPixels(const float* from, int count) {
        for (int i = 0; i < 3 * count; ++i) {
            values[i] = from[i];
        }
    }
    float values[3 * kLanes] = {};
};

uint32_t lowBits(int count) {
    return (uint32_t{1} << count) - 1;
}

/// Sets the bits of a row by test(vectors).
template <typename Test>
inline void setBits(const float* pixels, int count, uint64_t* bits, Test test) {
    for (int word = 0; 64 * word < count; ++word) {
        bits[word] = 0;
    }
    int i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        putBits(bits, i, laneBits(test(loadVectors(pixels + 3 * i))));
    }
    if (i < count) {
        const LastPixels last(pixels + 3 * i, count - i);
        putBits(bits, i, laneBits(test(loadVectors(last.values))) & lowBits(count - i));
    }
}

/// NaN and numbers that do not fit int become the lowest int, which is then clamped to 0.
inline Floats roundedChannel(Floats channel) {
    return larger(smaller(toFloats(rounded(channel)), all(kBrightest)), all(kDarkest));
}

inline Mask inInterval(Floats channel, float low, float high) {
    const Floats value = roundedChannel(channel);
    return (value > all(low)) & (value < all(high));
}

void findOriented(const float* colours, int count, const float* low, const float* high, uint64_t* oriented) {
    setBits(colours, count, oriented, [low, high](const Vectors& colour) {
        return inInterval(colour.x, low[0], high[0]) & inInterval(colour.y, low[1], high[1]) &
               inInterval(colour.z, low[2], high[2]);
    });
}

void findPresent(const float* points, int count, uint64_t* present) {
    const Floats zero = all(0.0F);
    setBits(points, count, present,
            [zero](const Vectors& point) { return (point.x != zero) | (point.y != zero) | (point.z != zero); });
}

inline void copyPixels(const float* points, uint32_t chosen, float* copy) {
    const Vectors point = loadVectors(points);
    const Mask mask = lanesOf(chosen);
    storePoints(copy, valueWhere(mask, point.x), valueWhere(mask, point.y), valueWhere(mask, point.z));
}

void copyChosen(const float* points, int count, const uint64_t* chosen, float* copy) {
    const auto bitsFrom = [chosen](int i) { return static_cast<uint32_t>(chosen[i / 64] >> (i % 64)); };
    int i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        copyPixels(points + 3 * i, bitsFrom(i), copy + 3 * i);
    }
    if (i < count) {
        const LastPixels last(points + 3 * i, count - i);
        float copied[3 * kLanes];
        copyPixels(last.values, bitsFrom(i), copied);
        for (int k = 0; k < 3 * (count - i); ++k) {
            copy[3 * i + k] = copied[k];
        }
    }
}

}  // namespace

const RegionGrowthLoops regionGrowthLoops{findOriented, findPresent, copyChosen};

}  // namespace quorvel::internal::QUORVEL_VARIANT
