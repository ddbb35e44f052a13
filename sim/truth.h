// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include "sim/scene.h"

namespace quorvel::sim {

/// The reference surface in camera coordinates: the points p with normal . p = offset.
struct PlaneTruth {
    cv::Vec3d normal;     ///< unit vector, positive z: away from the camera
    double offset = 0.0;  ///< perpendicular distance from the camera centre, mm
};

/// True plane of the scene's surface.
PlaneTruth planeTruth(const Scene& scene);

/// One object's true place and size.
struct ObjectTruth {
    std::string shape;    ///< "box" or "cylinder"
    double x = 0.0;       ///< middle of the footprint in plane coordinates, mm
    double y = 0.0;       ///< middle of the footprint in plane coordinates, mm
    double yawDeg = 0.0;  ///< turn of the longer side from plane x towards plane y, degrees in [0, 180); cylinder: 0
    double length = 0.0;  ///< longer side of the footprint, mm; cylinder: the diameter
    double width = 0.0;   ///< shorter side of the footprint, mm; cylinder: the diameter
    double height = 0.0;  ///< mm
    /// Eight image positions, pixels: four ground corners in turn, then the top corner above each (k and k + 4). A
    /// cylinder has those of its bounding square at yaw 0. Not finite when a corner does not lie in front of the
    /// camera.
    std::vector<cv::Point2d> corners;
    bool inView = false;  ///< all corners lie in front of the camera and within [0, width] x [0, height]
};

/// Truth of every object: the boxes in scene order, then the cylinders.
std::vector<ObjectTruth> objectTruth(const Scene& scene);

/// Index into objectTruth() of the object whose top face has its projected middle nearest to the picture's middle
/// (width / 2, height / 2); the first of equals; -1 when no object's top middle lies in front of the camera.
int objectNearestMiddle(const Scene& scene);

}  // namespace quorvel::sim
