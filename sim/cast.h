// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include "sim/view.h"

namespace quorvel::sim {

/// What a ray meets. The four sides of a box are named by its local axes.
enum class Face : std::uint8_t { Nothing, Surface, Top, SideMinusX, SidePlusX, SideMinusY, SidePlusY, Round };

/// First meeting of a ray with the scene.
struct Hit {
    double z = 0.0;             ///< depth along the optical axis, mm; 0 for Face::Nothing
    std::int32_t solid = -1;    ///< index into View::solids; -1 for the surface and for nothing
    Face face = Face::Nothing;  ///< which face
};

/// The ray through image position (u, v), pixels, against the whole scene.
Hit castRay(const View& view, double u, double v);

/// One hit a pixel, row-major, camera.width x camera.height of them. Every object is tested within its area only.
std::vector<Hit> castImage(const View& view);

}  // namespace quorvel::sim
