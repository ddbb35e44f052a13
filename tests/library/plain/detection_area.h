// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// With two images of the whole picture, their blend, a threshold and a search for contours; see
/// internal::topFaceMeetsRegion. Slow or undefined for corners very far out.
bool topFaceMeetsRegion(const std::array<cv::Point2f, 4>& topFace, const cv::Rect& region, const cv::Size& image);

}  // namespace quorvel::test::plain
