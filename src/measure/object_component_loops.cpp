// SPDX-License-Identifier: Apache-2.0
#include "measure/object_component_loops.h"

#include "simd/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

void findDepths(const uint16_t* depths, int count, uint64_t* bits) {
    int column = 0;
    for (; column + kLanes <= count; column += kLanes) {
        putBits(bits, column, laneBits(loadDepths(depths + column) > all(0.0F)));
    }
    for (; column < count; ++column) {
        putBits(bits, column, depths[column] != 0 ? 1U : 0U);
    }
}

void measureDistances(int middle, int dy, int count, float* distances) {
    const Floats rows = all(static_cast<float>(dy));
    for (int column = 0; column < count; column += kLanes) {
        const Floats columns = all(static_cast<float>(column - middle)) + laneNumbers();
        // Whole numbers are exact as floats, and adding 0 as the third square changes no bit of the sum.
        store(distances + column, lengthInDouble(columns, rows, all(0.0F)));
    }
}

}  // namespace

const ObjectComponentLoops objectComponentLoops{findDepths, measureDistances};

}  // namespace quorvel::internal::QUORVEL_VARIANT
