// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdint>

#include <opencv2/core.hpp>

#include "sim/geometry.h"

namespace quorvel::sim {

// Procedural materials. All of them are functions of a place alone, made of integer hashes and exactly rounded
// arithmetic, so that they look the same in every frame and on every platform. Colours are blue, green, red in 0 ... 1.

/// Rises smoothly from 0 at low to 1 at high (low < high): 3 t^2 - 2 t^3.
inline double smoothStep(double low, double high, double value) {
    const double t = std::clamp((value - low) / (high - low), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

/// Uniform in [0, 1), a function of the lattice point and the salt alone.
double hashNoise(std::int64_t x, std::int64_t y, std::uint32_t salt);

/// Smooth noise in [0, 1): hashNoise at the integer points, smoothly interpolated between them.
double valueNoise(double x, double y, std::uint32_t salt);

/// The surface: light boards along plane x with grain and seams. x, y: plane coordinates, mm.
cv::Vec3d boardColor(double x, double y);

/// Cardboard: the base colour with fibres. x, y: place on the face, mm.
cv::Vec3d cardboardColor(const cv::Vec3d& base, double x, double y, std::uint32_t salt);

}  // namespace quorvel::sim
