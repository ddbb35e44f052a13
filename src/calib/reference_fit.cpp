// SPDX-License-Identifier: Apache-2.0
#include "calib/reference_fit.h"

#include "calib/dominant_normal.h"
#include "calib/least_squares.h"
#include "calib/normal_map.h"
#include "calib/ransac_plane.h"
#include "calib/region_growth.h"

namespace quorvel::internal {

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
    cv::Mat grownCloud = regionCloud;
    growPlaneRegion(fullCloud, computeNormalMap(fullCloud), plane.normal, grownCloud);
    fitPlaneLeastSquares(grownCloud, plane.normal, plane.offset, minPoints);
    return plane;
}

}  // namespace quorvel::internal
