// SPDX-License-Identifier: Apache-2.0
#include "measure/height_cut.h"

#include "calib/plane_model.h"
#include "measure/points.h"

namespace quorvel::internal {

int cutAboveReferencePlane(cv::Mat& depth, const cv::Mat& cloud, const cv::Vec3f& normal, float offset, float minHeight,
                           cv::Mat& mask) {
    if (!hasPlane(normal)) {
        return 1;
    }
    for (int row = 0; row < cloud.rows; ++row) {
        const auto* points = cloud.ptr<cv::Vec3f>(row);
        auto* depths = depth.ptr<ushort>(row);
        auto* marks = mask.ptr<uchar>(row);
        for (int column = 0; column < cloud.cols; ++column) {
            const cv::Vec3f& point = points[column];
            // Not "at most -minHeight": a NaN distance stays a candidate.
            if (isValidPoint(point) && !(signedDistance(point, normal, offset) > -minHeight)) {
                marks[column] = 255;
            } else {
                depths[column] = 0;
            }
        }
    }
    return 0;
}

}  // namespace quorvel::internal
