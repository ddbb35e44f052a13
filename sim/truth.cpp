// SPDX-License-Identifier: Apache-2.0
#include "sim/truth.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "sim/view.h"

namespace quorvel::sim {

namespace {

/// The yaw of a side, which has no direction, in [0, 180).
double sideYaw(double degrees) {
    double yaw = std::fmod(degrees, 180.0);
    if (yaw < 0.0) {
        yaw += 180.0;
    }
    return yaw < 180.0 ? yaw : 0.0;
}

bool within(const cv::Point2d& position, const Camera& camera) {
    return position.x >= 0.0 && position.x <= camera.width && position.y >= 0.0 && position.y <= camera.height;
}

ObjectTruth truthOf(const Box& box) {
    const bool lengthLonger = box.length >= box.width;
    ObjectTruth truth;
    truth.shape = "box";
    truth.x = box.x;
    truth.y = box.y;
    truth.yawDeg = sideYaw(lengthLonger ? box.yawDeg : box.yawDeg + 90.0);
    truth.length = std::max(box.length, box.width);
    truth.width = std::min(box.length, box.width);
    truth.height = box.height;
    return truth;
}

ObjectTruth truthOf(const Cylinder& cylinder) {
    ObjectTruth truth;
    truth.shape = "cylinder";
    truth.x = cylinder.x;
    truth.y = cylinder.y;
    truth.length = cylinder.diameter;
    truth.width = cylinder.diameter;
    truth.height = cylinder.height;
    return truth;
}

}  // namespace

PlaneTruth planeTruth(const Scene& scene) {
    const View view = makeView(scene);
    return {-view.surface.up, view.distance};
}

std::vector<ObjectTruth> objectTruth(const Scene& scene) {
    const View view = makeView(scene);
    std::vector<ObjectTruth> truths;
    for (const Box& box : scene.boxes) {
        truths.push_back(truthOf(box));
    }
    for (const Cylinder& cylinder : scene.cylinders) {
        truths.push_back(truthOf(cylinder));
    }
    for (std::size_t i = 0; i < truths.size(); ++i) {
        ObjectTruth& truth = truths[i];
        truth.corners = projectedCorners(view.camera, view.solids[i]);
        truth.inView = std::all_of(truth.corners.begin(), truth.corners.end(),
                                   [&view](const cv::Point2d& corner) { return within(corner, view.camera); });
    }
    return truths;
}

int objectNearestMiddle(const Scene& scene) {
    const View view = makeView(scene);
    int nearest = -1;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < view.solids.size(); ++i) {
        const Solid& solid = view.solids[i];
        const cv::Point2d top = project(view.camera, solid.pose.pointToCamera({0.0, 0.0, solid.height}));
        const double dx = top.x - view.camera.width / 2.0;
        const double dy = top.y - view.camera.height / 2.0;
        const double distance = dx * dx + dy * dy;
        if (distance < least) {
            least = distance;
            nearest = static_cast<int>(i);
        }
    }
    return nearest;
}

}  // namespace quorvel::sim
