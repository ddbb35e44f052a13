// SPDX-License-Identifier: Apache-2.0
#include "calib/reference_fit.h"

#include <cmath>

#include "calib/least_squares.h"
#include "calib/normal_map.h"
#include "calib/ransac_plane.h"
#include "calib/region_growth.h"

namespace quorvel::internal {

FitAccount fitDominantPlane(const cv::Mat& cloud, const Plane& previous) {
    const cv::Mat normalMap = computeNormalMap(cloud);
    const SamplingFit fit = ransacFitPlane(cloud, normalMap, dominantNormalBin(normalMap));
    FitAccount account;
    account.oriented = fit.oriented;
    account.inliers = fit.inliers;
    account.rounds = fit.rounds;
    account.residual = fit.residual;
    account.plane = fit.plane.value_or(previous);
    if (fit.plane) {
        account.outcome = FitOutcome::Fitted;
    } else {
        account.outcome = fit.oriented <= kLeastOriented ? FitOutcome::TooFewOriented : FitOutcome::SampleRanDry;
    }
    return account;
}

FitAccount fitGrownPlane(const cv::Mat& fullCloud, const cv::Mat& regionCloud, float minPoints, const Plane& previous) {
    const LeastSquaresFit first = fitPlaneLeastSquares(regionCloud, minPoints);
    const Plane start = first.plane.value_or(previous);
    const cv::Mat grown = growPlaneRegion(fullCloud, computeNormalMap(fullCloud), start.normal, regionCloud);
    const LeastSquaresFit second = fitPlaneLeastSquares(grown, minPoints);
    FitAccount account;
    account.regionPoints = first.points;
    account.grownPoints = second.points;
    account.needed = std::ceil(minPoints);
    account.plane = second.plane.value_or(start);
    account.outcome = first.plane || second.plane ? FitOutcome::Fitted : FitOutcome::TooFewPoints;
    return account;
}

}  // namespace quorvel::internal
