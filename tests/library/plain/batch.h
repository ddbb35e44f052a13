// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

namespace quorvel::test::plain {

/// Takes a batch of good frames in: fills the seven buffers frame by frame and makes the first frame the current one.
/// Every frame must have the ruler's form; the plain refit is used in GROUND_TRACKING.
/// \param colors CV_8UC3, as many as depths and at least one
/// \param depths CV_16UC1, mm
void takeBatch(Quorvel& ruler, const std::vector<cv::Mat>& colors, const std::vector<cv::Mat>& depths);

/// The batch driver over the ruler's public members, with the plain chain. The images must fit together.
int measureMultiple(Quorvel& ruler, float lengthTolerance, float widthTolerance, float heightTolerance);

}  // namespace quorvel::test::plain
