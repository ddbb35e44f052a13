// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <iostream>
#include <optional>

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

#include "calib/least_squares.h"
#include "calib/normal_map.h"
#include "calib/ransac_plane.h"
#include "calib/region_growth.h"
#include "geometry/plane_model.h"
#include "library/plain/footprint.h"
#include "measure/footprint.h"
#include "measure/height_cut.h"
#include "measure/object_chain.h"
#include "measure/object_component.h"
#include "ruler/measure_once.h"

/// \file fast_forms.h
/// The library's stages in the form of their plain ones: a status, out-values and the lines that the class prints. One
/// test drives both forms.

namespace quorvel::test::fast {

inline int cutAboveReferencePlane(cv::Mat& depth, const cv::Mat& cloud, const cv::Vec3f& normal, float offset,
                                  float minHeight, cv::Mat& mask) {
    const std::optional<int> marked = internal::cutAboveReferencePlane(depth, cloud, normal, offset, minHeight, mask);
    return marked ? 0 : 1;
}

inline int selectObjectComponent(const cv::Mat& depth, int minPixels, cv::Mat& mask) {
    internal::MeasureAccount account;
    account.searched = true;
    account.component = internal::selectObjectComponent(depth, minPixels, mask);
    internal::printSearch(account, false, &std::cout);
    return account.component.chosen ? 0 : 1;
}

inline internal::FootprintSettings footprintSettings(const plain::FootprintInput& in) {
    internal::FootprintSettings settings;
    settings.plane = {in.normal, in.offset};
    settings.camera = {in.cx, in.cy, in.fx, in.fy};
    settings.picture = internal::pictureSize(in.small, in.downScale);
    if (in.cameraTypeSet) {
        settings.sideBand = in.cameraType;
    }
    settings.detectionArea = in.effectiveRegion;
    return settings;
}

/// What the class makes of a footprint.
inline MeasureResult recordOf(const internal::Footprint& footprint) {
    internal::MeasureAccount account;
    account.footprint = footprint;
    MeasureResult result;
    internal::storeRecord(account, result);
    return result;
}

inline MeasureResult measureFootprint(const cv::Mat& cloud, const plain::FootprintInput& in) {
    return recordOf(internal::measureFootprint(cloud, footprintSettings(in)));
}

inline MeasureResult measureFootprintWithoutMargin(const cv::Mat& cloud, const plain::FootprintInput& in) {
    return recordOf(internal::measureFootprintWithoutMargin(cloud, footprintSettings(in)));
}

/// \param[out] result untouched without a record
inline int measureObject(const internal::FrameImages& frame, const internal::MeasureSettings& settings,
                         MeasureResult& result) {
    const internal::MeasureAccount account = internal::measureObject(frame, settings);
    internal::printSearch(account, false, &std::cout);
    if (!internal::hasRecord(account)) {
        return 1;
    }
    result = recordOf(account.footprint);
    return 0;
}

inline int ransacFitPlane(const cv::Mat& cloud, const cv::Mat& normalMap, const cv::Vec3f& bin, cv::Vec3f& normal,
                          float& offset) {
    const internal::SamplingFit fit = internal::ransacFitPlane(cloud, normalMap, bin);
    if (!fit.plane) {
        return 1;
    }
    normal = fit.plane->normal;
    offset = fit.plane->offset;
    return 0;
}

inline int fitPlaneLeastSquares(const cv::Mat& cloud, cv::Vec3f& normal, float& offset, float minPoints) {
    const internal::LeastSquaresFit fit = internal::fitPlaneLeastSquares(cloud, minPoints);
    if (!fit.plane) {
        return -1;
    }
    normal = fit.plane->normal;
    offset = fit.plane->offset;
    return 0;
}

inline int growPlaneRegion(const cv::Mat& fullCloud, const cv::Mat& normalMap, const cv::Vec3f& normal,
                           cv::Mat& seedCloud) {
    seedCloud = internal::growPlaneRegion(fullCloud, normalMap, normal, seedCloud);
    return 0;
}

inline int solve3x3(const std::array<float, 9>& a, const std::array<float, 3>& b, std::array<float, 3>& x) {
    const std::optional<std::array<float, 3>> solution = internal::solve3x3(a, b);
    x = solution.value_or(x);
    return solution ? 3 : 0;
}

}  // namespace quorvel::test::fast
