// SPDX-License-Identifier: Apache-2.0
#include "library/plain/height_cut.h"

#include <cmath>

namespace quorvel::test::plain {

int cutAboveReferencePlane(cv::Mat& depth, const cv::Mat& cloud, const cv::Vec3f& normal, float offset, float minHeight,
                           cv::Mat& mask) {
    if (normal[0] == 0.0F && normal[1] == 0.0F && normal[2] == 0.0F) {
        return 1;
    }
    for (int row = 0; row < cloud.rows; ++row) {
        for (int column = 0; column < cloud.cols; ++column) {
            const auto& p = cloud.at<cv::Vec3f>(row, column);
            const double px = p[0];
            const double py = p[1];
            const double pz = p[2];
            const bool valid = !(std::sqrt(px * px + py * py + pz * pz) < 1e-9);
            const float d = p[0] * normal[0] + p[1] * normal[1] + p[2] * normal[2] - offset;
            if (valid && !(d > -minHeight)) {
                mask.at<uchar>(row, column) = 255;
            } else {
                depth.at<ushort>(row, column) = 0;
            }
        }
    }
    return 0;
}

void removeGround(cv::Mat& depth, float weight, float offset) {
    const float threshold = (1.0F - weight) * offset;
    for (int row = 0; row < depth.rows; ++row) {
        for (int column = 0; column < depth.cols; ++column) {
            if (static_cast<float>(depth.at<ushort>(row, column)) > threshold) {
                depth.at<ushort>(row, column) = 0;
            }
        }
    }
}

}  // namespace quorvel::test::plain
