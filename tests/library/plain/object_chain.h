// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

#include "library/plain/footprint.h"

namespace quorvel::test::plain {

/// One frame's images, owned by the caller: depth CV_16UC1 and cloud CV_32FC3 at small size, cloud CV_32FC3 at
/// full size; mm.
struct ChainFrame {
    cv::Mat depthSmall;
    cv::Mat cloudSmall;
    cv::Mat cloud;
};

/// Height cut, component, mask scaled up, cloud cleared, filter, footprint, all in their plain forms.
/// \param general which footprint variant
/// \param[out] result untouched on failure
/// \return 0, or 1 without plane or object
int measureObject(ChainFrame& frame, float minHeight, int minPixels, const FootprintInput& input, bool general,
                  MeasureResult& result);

/// \return what the footprint stage needs of the ruler's public members
/// \param small size of the small images, pixels
FootprintInput footprintInput(const Quorvel& ruler, const cv::Size& small);

/// Chooses the KIOSK mode's minimum height by the plane's distance.
void chooseMinHeight(Quorvel& ruler);

/// The single-shot driver over the ruler's public members, with the plain chain. The images must fit together.
int measureOnce(Quorvel& ruler);

}  // namespace quorvel::test::plain
