// SPDX-License-Identifier: Apache-2.0
#include "sim/view.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

namespace quorvel::sim {

namespace {

cv::Vec3d unitColor(const cv::Vec3b& color) {
    return {color[0] / 255.0, color[1] / 255.0, color[2] / 255.0};
}

/// The smallest part of the picture that holds the positions, one pixel wider on every side because of rounding. An
/// object that reaches behind the camera's image plane (a NaN position) may appear anywhere, so it gets the whole
/// picture.
cv::Rect areaOf(const std::vector<cv::Point2d>& positions, const Camera& camera) {
    double left = camera.width;
    double right = -1.0;
    double top = camera.height;
    double bottom = -1.0;
    for (const cv::Point2d& position : positions) {
        if (std::isnan(position.x)) {
            return {0, 0, camera.width, camera.height};
        }
        left = std::min(left, position.x);
        right = std::max(right, position.x);
        top = std::min(top, position.y);
        bottom = std::max(bottom, position.y);
    }
    const auto inside = [](double value, int size) {
        return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(size)));
    };
    const cv::Point from(inside(std::floor(left) - 1.0, camera.width), inside(std::floor(top) - 1.0, camera.height));
    const cv::Point to(inside(std::ceil(right) + 2.0, camera.width), inside(std::ceil(bottom) + 2.0, camera.height));
    return {from, to};
}

void finish(Solid& solid, const View& view) {
    solid.pose = standingPose(view.surface, solid.x, solid.y, solid.yaw);
    solid.eye = solid.pose.pointToLocal({0.0, 0.0, 0.0});
    solid.area = areaOf(projectedCorners(view.camera, solid), view.camera);
}

Solid solidOf(const Box& box) {
    Solid solid;
    solid.shape = Shape::Box;
    solid.yaw = sinCosDeg(box.yawDeg);
    solid.x = box.x;
    solid.y = box.y;
    solid.halfLength = box.length / 2.0;
    solid.halfWidth = box.width / 2.0;
    solid.height = box.height;
    solid.color = unitColor(box.color);
    return solid;
}

Solid solidOf(const Cylinder& cylinder) {
    Solid solid;
    solid.shape = Shape::Cylinder;
    solid.x = cylinder.x;
    solid.y = cylinder.y;
    solid.halfLength = cylinder.diameter / 2.0;
    solid.halfWidth = cylinder.diameter / 2.0;
    solid.height = cylinder.height;
    solid.color = unitColor(cylinder.color);
    return solid;
}

}  // namespace

View makeView(const Scene& scene) {
    const std::string problem = sceneProblem(scene);
    if (!problem.empty()) {
        throw std::invalid_argument(problem);
    }
    View view;
    view.camera = scene.camera;
    view.surface = surfacePose(scene.surface);
    view.distance = scene.surface.distance;
    view.halfExtent = scene.surface.halfExtent;
    for (const Box& box : scene.boxes) {
        view.solids.push_back(solidOf(box));
    }
    for (const Cylinder& cylinder : scene.cylinders) {
        view.solids.push_back(solidOf(cylinder));
    }
    for (Solid& solid : view.solids) {
        finish(solid, view);
    }
    return view;
}

std::vector<cv::Point2d> projectedCorners(const Camera& camera, const Solid& solid) {
    struct Sign {
        double x;
        double y;
    };
    constexpr std::array<Sign, 4> kAround{{{-1.0, -1.0}, {1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}}};
    std::vector<cv::Point2d> corners;
    for (const double height : {0.0, solid.height}) {
        for (const Sign& sign : kAround) {
            const cv::Vec3d local(sign.x * solid.halfLength, sign.y * solid.halfWidth, height);
            corners.push_back(project(camera, solid.pose.pointToCamera(local)));
        }
    }
    return corners;
}

}  // namespace quorvel::sim
