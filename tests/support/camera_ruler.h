// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quorvel/quorvel.h>

#include "sim/scene.h"

namespace quorvel::test {

/// \return a ruler for a simulated camera, in its normal start
inline Quorvel rulerOf(const sim::Camera& camera) {
    return {static_cast<float>(camera.fx),
            static_cast<float>(camera.fy),
            static_cast<float>(camera.cx),
            static_cast<float>(camera.cy),
            camera.width,
            camera.height,
            false,
            ""};
}

}  // namespace quorvel::test
