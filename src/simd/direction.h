// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace quorvel::internal {

/// A direction or the normal of a plane, for the pixel loops.
struct Direction {
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;
};

}  // namespace quorvel::internal
