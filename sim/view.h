// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "sim/geometry.h"
#include "sim/scene.h"

namespace quorvel::sim {

enum class Shape { Box, Cylinder };

/// An object made ready for casting. Its local frame stands in the middle of its footprint, x along its length.
struct Solid {
    Shape shape = Shape::Box;
    Pose pose;
    SinCos yaw{0.0, 1.0};
    double x = 0.0;           ///< middle of the footprint in plane coordinates, mm
    double y = 0.0;           ///< middle of the footprint in plane coordinates, mm
    double halfLength = 0.0;  ///< mm; a cylinder's radius
    double halfWidth = 0.0;   ///< mm; a cylinder's radius
    double height = 0.0;      ///< mm
    cv::Vec3d color;          ///< blue, green, red in 0 ... 1
    cv::Vec3d eye;            ///< the camera centre in the local frame, mm
    cv::Rect area;            ///< the part of the picture that can show the object; empty when none can
};

/// A scene made ready for casting and shading.
struct View {
    Camera camera;
    Pose surface;
    double distance = 0.0;      ///< of the surface, mm
    double halfExtent = 0.0;    ///< of the surface, mm; 0 = unbounded
    std::vector<Solid> solids;  ///< the boxes in scene order, then the cylinders
};

/// Throws std::invalid_argument with sceneProblem() for a scene that cannot be rendered.
View makeView(const Scene& scene);

/// Image positions, pixels, of the corners of the cuboid around an object: four ground corners in turn, then the top
/// corner above each; NaN for corners that do not lie in front of the camera.
std::vector<cv::Point2d> projectedCorners(const Camera& camera, const Solid& solid);

}  // namespace quorvel::sim
