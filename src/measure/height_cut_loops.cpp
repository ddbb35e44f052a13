// SPDX-License-Identifier: Apache-2.0
#include "measure/height_cut_loops.h"

#include "simd/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

void findHigh(const float* points, int count, Direction direction, float offset, float minHeight, uint64_t* high,
              uint64_t* doubt) {
    const Points normal = allOf(direction);
    for (int column = 0; column < count; column += kLanes) {
        const Points p = loadSome(points + 3 * column, count - column);
        // "Not above" instead of "at most": a pixel with a NaN distance stays a candidate.
        const Mask isHigh = ~(signedDistance(p, normal, all(offset)) > all(-minHeight));
        const Mask valid = isSurelyValid(p);
        putBits(high, column, laneBits(valid & isHigh));
        putBits(doubt, column, laneBits(~valid & isPresent(p)));
    }
}

}  // namespace

const HeightCutLoops heightCutLoops{findHigh};

}  // namespace quorvel::internal::QUORVEL_VARIANT
