// SPDX-License-Identifier: Apache-2.0
#include "calib/reference_fit.h"

#include <opencv2/imgproc.hpp>

#include "calib/dominant_normal.h"
#include "calib/least_squares.h"
#include "calib/normal_map.h"
#include "calib/ransac_plane.h"
#include "calib/region_growth.h"

namespace quorvel::internal {

cv::Mat smoothDepth(const cv::Mat& depth) {
    constexpr int kPasses = 2;
    const cv::Size kernel(5, 5);
    cv::Mat smoothed = depth.clone();
    for (int pass = 0; pass < kPasses; ++pass) {
        cv::GaussianBlur(smoothed, smoothed, kernel, 0.0, 0.0, cv::BORDER_REFLECT_101);
    }
    return smoothed;
}

Plane fitDominantPlane(const cv::Mat& cloud, const Plane& previous) {
    const cv::Mat normalMap = computeNormalMap(cloud);
    cv::Vec3f bin;
    dominantNormalBin(normalMap, bin);
    Plane plane = previous;
    ransacFitPlane(cloud, normalMap, bin, plane.normal, plane.offset);
    return plane;
}

Plane fitGrownPlane(const cv::Mat& fullCloud, const cv::Mat& regionCloud, float minPoints, const Plane& previous) {
    Plane plane = previous;
    fitPlaneLeastSquares(regionCloud, plane.normal, plane.offset, minPoints);
    cv::Mat grownCloud = regionCloud.clone();
    growPlaneRegion(fullCloud, computeNormalMap(fullCloud), plane.normal, grownCloud);
    fitPlaneLeastSquares(grownCloud, plane.normal, plane.offset, minPoints);
    return plane;
}

}  // namespace quorvel::internal
