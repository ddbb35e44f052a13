// SPDX-License-Identifier: Apache-2.0
#include "image/back_projection_loops.h"

#include "simd/lanes.h"

namespace quorvel::internal::QUORVEL_VARIANT {

namespace {

/// kLanes pixels from `column` on: (column - cx) times z times invFx and so on, in the order of the plain form. For a
/// pixel without depth this gives -0, or NaN when the intrinsics are infinite or NaN; the mask turns both into +0.
inline void projectPixels(const uint16_t* depths, float column, float cx, float invFx, float v, float invFy,
                          float* points) {
    const Floats z = loadDepths(depths);
    const Mask present = z > all(0.0F);
    const Floats u = (all(column) + laneNumbers()) - all(cx);
    storePoints(points, valueWhere(present, u * z * all(invFx)), valueWhere(present, all(v) * z * all(invFy)), z);
}

void projectRow(const uint16_t* depths, int count, float cx, float invFx, float v, float invFy, float* points) {
    int i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        projectPixels(depths + i, static_cast<float>(i), cx, invFx, v, invFy, points + 3 * i);
    }
    for (; i < count; ++i) {
        uint16_t depth[kLanes] = {depths[i]};
        float point[3 * kLanes];
        projectPixels(depth, static_cast<float>(i), cx, invFx, v, invFy, point);
        points[3 * i] = point[0];
        points[3 * i + 1] = point[1];
        points[3 * i + 2] = point[2];
    }
}

}  // namespace

const BackProjectionLoops backProjectionLoops{projectRow};

}  // namespace quorvel::internal::QUORVEL_VARIANT
