// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include "library/plain/footprint.h"

namespace quorvel::bench {

/// The input of each measuring stage when the parcel is measured at 640 x 480 in KIOSK mode; made by the plain stages.
/// The images must not be changed: clone them.
struct MeasureInput {
    cv::Vec3f normal;
    float offset = 0.0F;     ///< mm
    float minHeight = 0.0F;  ///< mm
    int minPixels = 0;
    cv::Mat depth;                          ///< CV_16UC1, full size, mm
    cv::Mat depthSmall;                     ///< CV_16UC1, as taken in
    cv::Mat cloudSmall;                     ///< CV_32FC3, mm
    cv::Mat cutDepth;                       ///< CV_16UC1 behind the height cut
    cv::Mat cutMask;                        ///< CV_8UC1 behind the height cut
    cv::Mat objectCloud;                    ///< CV_32FC3, full size, cleared outside the object's mask
    cv::Mat surfaceCloud;                   ///< CV_32FC3, full size, behind the surface filter
    test::plain::FootprintInput footprint;  ///< what the footprint stage needs besides the cloud
};

/// Made once.
const MeasureInput& measureInput();

/// The input of the fits in a calibration of 80 % of the empty picture at 640 x 480. The images must not be changed:
/// clone them.
struct FitInput {
    cv::Mat fullCloud;    ///< CV_32FC3, mm
    cv::Mat regionCloud;  ///< CV_32FC3, (0, 0, 0) outside the calibration region
    cv::Mat fullMap;      ///< CV_32FC3, normal colours of the full cloud
    cv::Mat regionMap;    ///< CV_32FC3, normal colours of the region's cloud
    cv::Vec3f bin;        ///< of the region's most frequent orientation
    float minPoints = 0.0F;
};

/// Made once.
const FitInput& fitInput();

}  // namespace quorvel::bench
