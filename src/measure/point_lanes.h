// SPDX-License-Identifier: Apache-2.0
// Points side by side, for the pixel loops; see simd/lanes.h.
#pragma once

#include "simd/direction.h"
#include "simd/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {  // NOLINT(cert-dcl59-cpp): see simd/lanes.h

/// An entry shorter than 1e-9 mm is not a point. With a coordinate of at least this size (mm) an entry is longer than
/// that, also after the rounding of its length.
constexpr float kSurelyAPoint = 1e-8F;  // NOLINT(misc-definitions-in-headers)

using Points = Vectors;

[[maybe_unused]] inline Points allOf(Direction direction) {
    return {all(direction.x), all(direction.y), all(direction.z)};
}

/// Takes up to kLanes points; what is missing is (0, 0, 0).
[[maybe_unused]] inline Points loadSome(const float* from, int count) {
    if (count >= kLanes) {
        return loadVectors(from);
    }
    float rest[3 * kLanes] = {};
    for (int i = 0; i < 3 * count; ++i) {
        rest[i] = from[i];
    }
    return loadVectors(rest);
}

/// Whether not all three coordinates are 0; NaN is not 0.
[[maybe_unused]] inline Mask isPresent(const Points& p) {
    return anyBits(anyBits(p.x, p.y), p.z) != all(0.0F);
}

/// Whether the entry is certainly a point. For another entry that is present its exact length decides.
[[maybe_unused]] inline Mask isSurelyValid(const Points& p) {
    const Floats limit = all(kSurelyAPoint);
    return (absolute(p.x) >= limit) | (absolute(p.y) >= limit) | (absolute(p.z) >= limit);
}

/// n . p - offset, left to right.
[[maybe_unused]] inline Floats signedDistance(const Points& p, const Points& normal, Floats offset) {
    return normal.x * p.x + normal.y * p.y + normal.z * p.z - offset;
}

}  // namespace

}  // namespace quorvel::internal::QUORVEL_VARIANT
