// SPDX-License-Identifier: Apache-2.0
#include "library/plain/back_projection.h"

namespace quorvel::test::plain {

cv::Mat backProject(const cv::Mat& depth, float cx, float cy, float invFx, float invFy) {
    cv::Mat cloud(depth.rows, depth.cols, CV_32FC3, cv::Scalar::all(0));
    for (int row = 0; row < depth.rows; ++row) {
        for (int column = 0; column < depth.cols; ++column) {
            const auto z = static_cast<float>(depth.at<ushort>(row, column));
            if (z > 0.0F) {
                const float x = (static_cast<float>(column) - cx) * z * invFx;
                const float y = (static_cast<float>(row) - cy) * z * invFy;
                cloud.at<cv::Vec3f>(row, column) = cv::Vec3f(x, y, z);
            }
        }
    }
    return cloud;
}

}  // namespace quorvel::test::plain
