// SPDX-License-Identifier: Apache-2.0
#include "measure/distance_bands.h"

#include <cmath>

namespace quorvel::internal {

float kioskMinHeight(float offset, float current) {
    if (std::isnan(offset)) {
        return current;
    }
    if (offset <= 800.0F) {
        return 3.0F;
    }
    if (offset <= 1000.0F) {
        return 5.0F;
    }
    return offset <= 1200.0F ? 8.0F : 10.0F;
}

float trackingHeightLowering(float offset) {
    if (std::isnan(offset)) {
        return 0.0F;
    }
    if (offset <= 550.0F) {
        return 1.0F;
    }
    if (offset <= 700.0F) {
        return 3.0F;
    }
    if (offset <= 900.0F) {
        return 5.0F;
    }
    return offset <= 1100.0F ? 7.0F : 8.0F;
}

}  // namespace quorvel::internal
