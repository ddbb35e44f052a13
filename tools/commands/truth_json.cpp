// SPDX-License-Identifier: Apache-2.0
#include "commands/truth_json.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "sim/truth.h"

namespace quorvel::command {

namespace {

using Json = nlohmann::ordered_json;

Json objectJson(const sim::ObjectTruth& object) {
    Json corners = Json::array();
    for (const cv::Point2d& corner : object.corners) {
        corners.push_back({{"x", corner.x}, {"y", corner.y}});
    }
    return {{"shape", object.shape},      {"x_mm", object.x},           {"y_mm", object.y},
            {"yaw_deg", object.yawDeg},   {"length_mm", object.length}, {"width_mm", object.width},
            {"height_mm", object.height}, {"in_view", object.inView},   {"corners", corners}};
}

}  // namespace

std::string truthJson(const sim::Scene& scene, unsigned frameIndex) {
    const sim::PlaneTruth plane = sim::planeTruth(scene);
    const Json normal = Json::array({plane.normal[0], plane.normal[1], plane.normal[2]});
    Json objects = Json::array();
    for (const sim::ObjectTruth& object : sim::objectTruth(scene)) {
        objects.push_back(objectJson(object));
    }
    const int nearest = sim::objectNearestMiddle(scene);
    const Json document{{"scene", scene.name},
                        {"seed", scene.seed},
                        {"frame", frameIndex},
                        {"plane",
                         {{"normal", normal},
                          {"offset_mm", plane.offset},
                          {"tilt_deg", std::acos(std::min(1.0, plane.normal[2])) * 180.0 / CV_PI}}},
                        {"objects", objects},
                        {"nearest_middle", nearest < 0 ? Json() : Json(nearest)}};
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace quorvel::command
