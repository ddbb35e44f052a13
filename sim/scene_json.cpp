// SPDX-License-Identifier: Apache-2.0
#include "sim/scene_json.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "sim/color_text.h"
#include "sim/json_members.h"

namespace quorvel::sim {

namespace {

void readMembers(Members& members, Camera& camera) {
    members.read("fx", camera.fx);
    members.read("fy", camera.fy);
    members.read("cx", camera.cx);
    members.read("cy", camera.cy);
    members.read("width", camera.width);
    members.read("height", camera.height);
}

void readMembers(Members& members, Surface& surface) {
    members.read("distance", surface.distance);
    members.read("tiltXDeg", surface.tiltXDeg);
    members.read("tiltYDeg", surface.tiltYDeg);
    members.read("halfExtent", surface.halfExtent);
}

void readMembers(Members& members, Box& box) {
    members.read("x", box.x);
    members.read("y", box.y);
    members.read("yawDeg", box.yawDeg);
    members.readRequired("length", box.length);
    members.readRequired("width", box.width);
    members.readRequired("height", box.height);
    members.read("color", box.color);
}

void readMembers(Members& members, Cylinder& cylinder) {
    members.read("x", cylinder.x);
    members.read("y", cylinder.y);
    members.readRequired("diameter", cylinder.diameter);
    members.readRequired("height", cylinder.height);
    members.read("color", cylinder.color);
}

void readMembers(Members& members, SensorEffects& effects) {
    members.read("flyingPixels", effects.flyingPixels);
    members.read("edgeThreshold", effects.edgeThreshold);
    members.read("axialNoise", effects.axialNoise);
    members.read("jitter", effects.jitter);
    members.read("quantisationStep", effects.quantisationStep);
    members.read("dropout", effects.dropout);
    members.read("holeCount", effects.holeCount);
    members.read("holeRadius", effects.holeRadius);
}

template <typename Part>
void readPart(const Json& json, const std::string& where, Part& part) {
    Members members(json, where);
    readMembers(members, part);
    members.finish();
}

template <typename Part>
void readPart(Members& scene, const std::string& name, Part& part) {
    if (const Json* json = scene.find(name)) {
        readPart(*json, name, part);
    }
}

template <typename Object>
void readList(Members& scene, const std::string& name, std::vector<Object>& objects) {
    const Json* list = scene.find(name);
    if (list == nullptr) {
        return;
    }
    if (!list->is_array()) {
        refuse(name, "expected a list [ ... ], found " + shown(*list));
    }
    for (std::size_t i = 0; i < list->size(); ++i) {
        Object object;
        readPart((*list)[i], name + "[" + std::to_string(i) + "]", object);
        objects.push_back(object);
    }
}

Json toJson(const Camera& camera) {
    return {{"fx", camera.fx}, {"fy", camera.fy},       {"cx", camera.cx},
            {"cy", camera.cy}, {"width", camera.width}, {"height", camera.height}};
}

Json toJson(const Surface& surface) {
    return {{"distance", surface.distance},
            {"tiltXDeg", surface.tiltXDeg},
            {"tiltYDeg", surface.tiltYDeg},
            {"halfExtent", surface.halfExtent}};
}

Json toJson(const Box& box) {
    return {{"x", box.x},         {"y", box.y},           {"yawDeg", box.yawDeg},           {"length", box.length},
            {"width", box.width}, {"height", box.height}, {"color", colorToText(box.color)}};
}

Json toJson(const Cylinder& cylinder) {
    return {{"x", cylinder.x},
            {"y", cylinder.y},
            {"diameter", cylinder.diameter},
            {"height", cylinder.height},
            {"color", colorToText(cylinder.color)}};
}

Json toJson(const SensorEffects& effects) {
    return {{"flyingPixels", effects.flyingPixels},
            {"edgeThreshold", effects.edgeThreshold},
            {"axialNoise", effects.axialNoise},
            {"jitter", effects.jitter},
            {"quantisationStep", effects.quantisationStep},
            {"dropout", effects.dropout},
            {"holeCount", effects.holeCount},
            {"holeRadius", effects.holeRadius}};
}

template <typename Object>
Json toJson(const std::vector<Object>& objects) {
    Json list = Json::array();
    for (const Object& object : objects) {
        list.push_back(toJson(object));
    }
    return list;
}

/// Line and column of a byte of a text, both counted from 1.
std::string placeOf(const std::string& text, std::size_t byte) {
    const std::string before = text.substr(0, byte == 0 ? 0 : byte - 1);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::size_t lineStart = before.rfind('\n') == std::string::npos ? 0 : before.rfind('\n') + 1;
    return "line " + std::to_string(line) + ", column " + std::to_string(before.size() - lineStart + 1);
}

Json parse(const std::string& text) {
    try {
        return Json::parse(text);
    } catch (const Json::parse_error& error) {
        refuse(placeOf(text, error.byte), "not valid JSON; look for a missing comma, quote or bracket");
    } catch (const Json::out_of_range&) {
        refuse("scene", "a number is too large to be read; give sizes in mm");
    }
}

}  // namespace

Scene sceneFromJson(const std::string& text) {
    const Json json = parse(text);
    Scene scene;
    Members members(json, "");
    members.read("name", scene.name);
    members.read("seed", scene.seed);
    readPart(members, "camera", scene.camera);
    readPart(members, "surface", scene.surface);
    readList(members, "boxes", scene.boxes);
    readList(members, "cylinders", scene.cylinders);
    readPart(members, "effects", scene.effects);
    members.finish();
    const std::string problem = sceneProblem(scene);
    if (!problem.empty()) {
        throw std::runtime_error(problem);
    }
    return scene;
}

std::string sceneToJson(const Scene& scene) {
    const std::string problem = sceneProblem(scene);
    if (!problem.empty()) {
        throw std::invalid_argument(problem);
    }
    Json json;
    json["name"] = scene.name;
    json["seed"] = scene.seed;
    json["camera"] = toJson(scene.camera);
    json["surface"] = toJson(scene.surface);
    json["boxes"] = toJson(scene.boxes);
    json["cylinders"] = toJson(scene.cylinders);
    json["effects"] = toJson(scene.effects);
    try {
        return json.dump(2) + "\n";
    } catch (const Json::type_error&) {
        throw std::invalid_argument("name: expected UTF-8 text");
    }
}

}  // namespace quorvel::sim
