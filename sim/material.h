// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include <opencv2/core.hpp>

#include "sim/cast.h"
#include "sim/view.h"

namespace quorvel::sim {

// Colours are blue, green, red in 0 ... 1, before any light falls on them.

/// A box of cardboard: a strip of parcel tape along the top and down both ends, a printed label when there is room.
/// @param local place on the box in its own frame, mm
/// @param salt makes boxes of one scene differ
cv::Vec3d boxColor(const Solid& box, Face face, const cv::Vec3d& local, std::uint32_t salt);

/// A tin: smooth side with a paper band, a lid with a rim.
/// @param local place on the cylinder in its own frame, mm
cv::Vec3d cylinderColor(const Solid& cylinder, Face face, const cv::Vec3d& local);

}  // namespace quorvel::sim
