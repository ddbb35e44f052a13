// SPDX-License-Identifier: Apache-2.0
#include "image/back_projection.h"

#include "image/back_projection_loops.h"
#include "image/image_form.h"

namespace quorvel::internal {

void backProject(const cv::Mat& depth, const BackProjection& camera, cv::Mat& cloud) {
    createExclusive(cloud, depth.size(), CV_32FC3);
    const BackProjectionLoops& loops = backProjectionLoops();
    for (int row = 0; row < depth.rows; ++row) {
        const float v = static_cast<float>(row) - camera.cy;
        loops.projectRow(depth.ptr<ushort>(row), depth.cols, camera.cx, camera.invFx, v, camera.invFy,
                         cloud.ptr<float>(row));
    }
}

}  // namespace quorvel::internal
