// SPDX-License-Identifier: Apache-2.0
#include "ruler/back_projection.h"

namespace quorvel::internal {

cv::Mat backProject(const cv::Mat& depth, const BackProjection& camera) {
    cv::Mat cloud = cv::Mat::zeros(depth.rows, depth.cols, CV_32FC3);
    for (int row = 0; row < depth.rows; ++row) {
        const auto* depths = depth.ptr<ushort>(row);
        auto* points = cloud.ptr<cv::Vec3f>(row);
        const float v = static_cast<float>(row) - camera.cy;
        for (int column = 0; column < depth.cols; ++column) {
            const auto z = static_cast<float>(depths[column]);
            if (z > 0.0F) {
                const float u = static_cast<float>(column) - camera.cx;
                points[column] = {u * z * camera.invFx, v * z * camera.invFy, z};
            }
        }
    }
    return cloud;
}

}  // namespace quorvel::internal
