// SPDX-License-Identifier: Apache-2.0
#include "measure/ground_removal.h"

namespace quorvel::internal {

float groundDepth(float weight, float offset) {
    return (1.0F - weight) * offset;
}

void removeGround(cv::Mat& depth, float weight, float offset) {
    const float threshold = groundDepth(weight, offset);
    for (int row = 0; row < depth.rows; ++row) {
        auto* depths = depth.ptr<ushort>(row);
        for (int column = 0; column < depth.cols; ++column) {
            if (static_cast<float>(depths[column]) > threshold) {
                depths[column] = 0;
            }
        }
    }
}

}  // namespace quorvel::internal
