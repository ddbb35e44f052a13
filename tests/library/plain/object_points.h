// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// Two directions that span a plane.
struct Basis {
    cv::Vec3f e1;
    cv::Vec3f e2;
};

/// What a footprint needs of a cloud's points, in scan order: mm, whole mm, mm.
struct Points {
    std::vector<float> heights;
    std::vector<cv::Point> footprint;
    float largest = 0.0F;
};

/// e1 = (ny, -nx, 0) / |(nx, ny)|, or (1, 0, 0) for the normal (0, 0, 1); e2 = normal x e1.
Basis planeBasis(const cv::Vec3f& normal);

/// \param cloud CV_32FC3, mm
Points collectObjectPoints(const cv::Mat& cloud, const cv::Vec3f& normal, float offset, const Basis& basis);

/// Sorts all heights (NaN last) and takes the one at trunc(0.99 n).
float heightQuantile(std::vector<float> heights);

/// A plain conversion to int where int holds the value, INT_MIN elsewhere.
int truncatedToInt(float value);

}  // namespace quorvel::test::plain
