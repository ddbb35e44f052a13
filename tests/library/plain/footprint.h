// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

namespace quorvel::test::plain {

/// Everything a footprint needs besides the cloud; the form is the picture's size divided by `downScale`.
struct FootprintInput {
    cv::Size small;
    cv::Vec3f normal;
    float offset = 0.0F;
    float cx = 0.0F;
    float cy = 0.0F;
    float fx = 0.0F;
    float fy = 0.0F;
    int downScale = 1;
    bool cameraTypeSet = false;
    int cameraType = 0;
    cv::Rect effectiveRegion;
};

/// With a full sort of the heights and the plain detection-area test; see internal::measureFootprint.
MeasureResult measureFootprint(const cv::Mat& cloud, const FootprintInput& input);

/// The variant without side margin; `onTarget` and `sideMargin` stay unset.
MeasureResult measureFootprintWithoutMargin(const cv::Mat& cloud, const FootprintInput& input);

}  // namespace quorvel::test::plain
