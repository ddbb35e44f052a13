// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

#include <opencv2/core.hpp>

#include "geometry/camera.h"
#include "geometry/plane_model.h"
#include "measure/account.h"

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
    float filterWeight = 0.0F;    ///< of the ground cut: fraction of the plane's distance
    float minHeight = 0.0F;       ///< mm
    int minPixels = 0;            ///< small-image pixels
    Projection camera;            ///< full size
    int downScale = 0;            ///< factor between full and small images
    std::optional<int> sideBand;  ///< width of the band that is kept clear at the left and right edge, mm
    cv::Rect detectionArea;       ///< full-size pixels
    FootprintVariant variant = FootprintVariant::General;
};

/// \return whether the images have the types above and pixels, the small ones one size and the full cloud a size of its
///         own, all of them within the limits of isFrameSize()
bool imagesFit(const FrameImages& frame, const cv::Size& fullSize);

/// \return an account of a measurement that has not begun: what it is measured with, and an outcome that says why not
MeasureAccount accountWithoutSearch(Outcome outcome, const MeasureSettings& settings);

/// Measures one frame: removes the ground, then as measureObject.
/// \param frame images as they were taken in
/// \param fullSize size of the full images, pixels; images that do not fit end with NoFrame and stay untouched
MeasureAccount measureFrame(const FrameImages& frame, const cv::Size& fullSize, const MeasureSettings& settings,
                            const AccountDetail& detail = {});

/// Measures the object in one frame: height cut, object component, mask and cloud, surface filter, footprint.
/// \param frame images that fit together, ground already removed from the small depth
MeasureAccount measureObject(const FrameImages& frame, const MeasureSettings& settings,
                             const AccountDetail& detail = {});

}  // namespace quorvel::internal
