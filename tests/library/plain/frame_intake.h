// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

namespace quorvel::test::plain {

/// Takes a good frame in over the ruler's public members: every image is a fresh clone or a fresh matrix; in
/// GROUND_TRACKING the plane is fitted anew in its plain form. The frame must have the ruler's form, and the ruler must
/// not be offline.
/// \param color CV_8UC3
/// \param depth CV_16UC1, mm
void takeFrame(Quorvel& ruler, const cv::Mat& color, const cv::Mat& depth);

}  // namespace quorvel::test::plain
