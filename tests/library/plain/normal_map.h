// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// Normal colours of the interior pixels of a cloud, one pixel after the other.
inline cv::Mat computeNormalMap(const cv::Mat& cloud) {
    cv::Mat map = cv::Mat::zeros(cloud.size(), CV_32FC3);
    for (int r = 1; r <= cloud.rows - 2; ++r) {
        for (int c = 1; c <= cloud.cols - 2; ++c) {
            const auto p = cloud.at<cv::Vec3f>(r, c);
            const auto right = cloud.at<cv::Vec3f>(r, c + 1);
            const auto below = cloud.at<cv::Vec3f>(r + 1, c);
            const float ax = right[0] - p[0];
            const float ay = right[1] - p[1];
            const float az = right[2] - p[2];
            const float bx = below[0] - p[0];
            const float by = below[1] - p[1];
            const float bz = below[2] - p[2];
            const float n[3] = {ay * bz - az * by, az * bx - ax * bz, ax * by - ay * bx};
            double squared = 0.0;
            for (const float component : n) {
                squared += static_cast<double>(component) * static_cast<double>(component);
            }
            const auto length = static_cast<float>(std::sqrt(squared));
            if (length == 0.0F) {
                continue;
            }
            for (int k = 0; k < 3; ++k) {
                const float raised = n[k] / length + 1.0F;
                map.at<cv::Vec3f>(r, c)[k] = static_cast<float>(static_cast<double>(raised) * 127.5);
            }
        }
    }
    return map;
}

}  // namespace quorvel::test::plain
