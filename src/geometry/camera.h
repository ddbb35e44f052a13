// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace quorvel::internal {

/// Pinhole projection of full-size images, pixels.
struct Projection {
    float cx = 0.0F;
    float cy = 0.0F;
    float fx = 0.0F;
    float fy = 0.0F;
};

}  // namespace quorvel::internal
