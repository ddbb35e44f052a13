// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cmath>

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// Copies the points whose pixel lies strictly inside the rectangle spanned by two edges, by dot products with the
/// edges. Products and sums of pixel coordinates are exact in double wherever two sides could be confused.
/// \param corners top left, bottom left, top right
inline cv::Mat pointsInsideRegion(const cv::Mat& cloud, const std::array<cv::Point, 3>& corners) {
    const cv::Point2d topLeft(corners[0]);
    const cv::Point2d bottomLeft(corners[1]);
    const cv::Point2d topRight(corners[2]);
    const cv::Point2d e1 = bottomLeft - topLeft;
    const cv::Point2d e2 = topRight - topLeft;
    cv::Mat inside = cv::Mat::zeros(cloud.size(), CV_32FC3);
    for (int v = 0; v < cloud.rows; ++v) {
        for (int u = 0; u < cloud.cols; ++u) {
            const cv::Point2d pixel(u, v);
            const bool betweenRows = e1.dot(topLeft) < e1.dot(pixel) && e1.dot(pixel) < e1.dot(bottomLeft);
            const bool betweenColumns = e2.dot(topLeft) < e2.dot(pixel) && e2.dot(pixel) < e2.dot(topRight);
            const auto point = cloud.at<cv::Vec3f>(v, u);
            if (std::fabs(point[2]) > 0.0F && betweenRows && betweenColumns) {
                inside.at<cv::Vec3f>(v, u) = point;
            }
        }
    }
    return inside;
}

/// Half the area spanned by the two edges, lengths in double.
inline float halfRegionArea(const std::array<cv::Point, 3>& corners) {
    const cv::Point2d e1 = cv::Point2d(corners[1]) - cv::Point2d(corners[0]);
    const cv::Point2d e2 = cv::Point2d(corners[2]) - cv::Point2d(corners[0]);
    return static_cast<float>(std::sqrt(e1.x * e1.x + e1.y * e1.y) * std::sqrt(e2.x * e2.x + e2.y * e2.y) * 0.5);
}

}  // namespace quorvel::test::plain
