// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

#include "calib/plane_model.h"
#include "measure/box_geometry.h"
#include "measure/stage_times.h"

namespace quorvel::internal {

/// The images of one frame that a measurement works on, in place.
struct FrameImages {
    cv::Mat& depthSmall;        ///< CV_16UC1, small, mm; left with the object candidates
    const cv::Mat& cloudSmall;  ///< CV_32FC3, small, mm
    cv::Mat& cloud;             ///< CV_32FC3, full size, mm; left with the object's surface points
};

/// Which footprint stage a mode measures with.
enum class FootprintVariant { General, WithoutMargin };

/// What a measurement needs to know besides the frame.
struct MeasureSettings {
    Plane plane;
    float minHeight = 0.0F;  ///< mm
    int minPixels = 0;       ///< small-image pixels
    Projection camera;       ///< full size
    int downScale = 0;
    bool cameraTypeSet = false;
    int cameraType = 0;  ///< mm
    cv::Rect effectiveRegion;
    FootprintVariant variant = FootprintVariant::General;
};

/// \return whether the images have the types above and pixels, the small ones one size and the full cloud a size of its
///         own, all of them within the limits of isFrameSize()
bool imagesFit(const FrameImages& frame, const cv::Size& fullSize);

/// Measures the object in one frame: height cut, object component, mask and cloud, surface filter, footprint.
/// \param frame images that fit together, ground already removed from the small depth
/// \param[out] result the record; untouched on failure
/// \param[out] times of the stages that ran; may be null
/// \return 0, or 1 without a plane, with one that cannot be measured from (planeProblem), or without an object
int measureObject(const FrameImages& frame, const MeasureSettings& settings, MeasureResult& result,
                  StageTimes* times = nullptr);

}  // namespace quorvel::internal
