// SPDX-License-Identifier: Apache-2.0
#include "library/plain/reference_fit.h"

#include <climits>
#include <cmath>

#include "library/plain/dominant_normal.h"
#include "library/plain/least_squares.h"
#include "library/plain/normal_map.h"
#include "library/plain/ransac_plane.h"
#include "library/plain/region_growth.h"

namespace quorvel::test::plain {

void fitDominantPlane(const cv::Mat& cloud, cv::Vec3f& normal, float& t) {
    const cv::Mat map = computeNormalMap(cloud);
    ransacFitPlane(cloud, map, dominantNormalBin(map), normal, t);
}

void fitGrownPlane(const cv::Mat& fullCloud, const cv::Mat& regionCloud, float minPoints, cv::Vec3f& normal, float& t) {
    fitPlaneLeastSquares(regionCloud, normal.val, t, minPoints);
    const cv::Mat grown = growPlaneRegion(fullCloud, computeNormalMap(fullCloud), normal, regionCloud);
    fitPlaneLeastSquares(grown, normal.val, t, minPoints);
}

int objectPixelMinimum(float t, float fxSmall) {
    const float edge = 50.0F / t * fxSmall;
    const double area = std::pow(static_cast<double>(edge), 2.0);
    return area < 2147483648.0 ? static_cast<int>(area) : INT_MIN;
}

}  // namespace quorvel::test::plain
