// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include "sim/view.h"

namespace quorvel::sim {

/// Direction towards the lamp in plane coordinates (x, y, up), a unit vector: from the upper left of the picture.
const cv::Vec3d& lampDirection();

/// Share of the lamp's light that reaches a place, 0 ... 1: soft shadows of all objects that rise above it.
/// @param place plane coordinates and height above the surface, mm
/// @param self index of the solid that the place lies on, which casts no shadow on itself; -1 for the surface
double lampShare(const View& view, const cv::Vec3d& place, int self);

/// Share of the light from all around that reaches a place of the surface, 0 ... 1: darker close to an object.
/// @param x, y plane coordinates, mm
double ambientShare(const View& view, double x, double y);

}  // namespace quorvel::sim
