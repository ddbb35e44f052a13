// SPDX-License-Identifier: Apache-2.0
#include "calib/normal_map.h"

#include <cmath>

namespace quorvel::internal {

namespace {

cv::Vec3f crossProduct(const cv::Vec3f& a, const cv::Vec3f& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

float lengthInDouble(const cv::Vec3f& v) {
    const double x = v[0];
    const double y = v[1];
    const double z = v[2];
    return static_cast<float>(std::sqrt(x * x + y * y + z * z));
}

float channelOf(float component, float length) {
    return static_cast<float>(static_cast<double>(component / length + 1.0F) * 127.5);
}

}  // namespace

cv::Mat computeNormalMap(const cv::Mat& cloud) {
    cv::Mat map = cv::Mat::zeros(cloud.rows, cloud.cols, CV_32FC3);
    for (int row = 1; row < cloud.rows - 1; ++row) {
        const auto* points = cloud.ptr<cv::Vec3f>(row);
        const auto* below = cloud.ptr<cv::Vec3f>(row + 1);
        auto* colours = map.ptr<cv::Vec3f>(row);
        for (int column = 1; column < cloud.cols - 1; ++column) {
            const cv::Vec3f normal = crossProduct(points[column + 1] - points[column], below[column] - points[column]);
            const float length = lengthInDouble(normal);
            if (length != 0.0F) {
                colours[column] = {channelOf(normal[0], length), channelOf(normal[1], length),
                                   channelOf(normal[2], length)};
            }
        }
    }
    return map;
}

}  // namespace quorvel::internal
