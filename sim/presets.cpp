// SPDX-License-Identifier: Apache-2.0
#include "sim/presets.h"

#include <algorithm>
#include <stdexcept>

namespace quorvel::sim {

namespace {

const cv::Vec3b kKraft(98, 146, 186);
const cv::Vec3b kPale(138, 178, 206);
const cv::Vec3b kWhite(214, 222, 226);
const cv::Vec3b kBlue(150, 112, 62);
const cv::Vec3b kGreen(104, 138, 84);
const cv::Vec3b kRed(70, 74, 176);

/// A good close-range depth camera.
SensorEffects mildEffects() {
    SensorEffects effects;
    effects.flyingPixels = 0.3;
    effects.axialNoise = 1.0;
    effects.jitter = 0.2;
    effects.dropout = 0.002;
    return effects;
}

Scene sceneWith(double distance, std::uint32_t seed) {
    Scene scene;
    scene.surface.distance = distance;
    scene.effects = mildEffects();
    scene.seed = seed;
    return scene;
}

Box makeBox(double x, double y, double yawDeg, const cv::Vec3d& size, const cv::Vec3b& color = kKraft) {
    return {x, y, yawDeg, size[0], size[1], size[2], color};
}

Scene parcel() {
    Scene scene = sceneWith(1000.0, 1);
    scene.boxes = {makeBox(-15.0, 10.0, 12.0, {300.0, 200.0, 150.0})};
    return scene;
}

Scene smallBox() {
    Scene scene = sceneWith(700.0, 2);
    scene.boxes = {makeBox(10.0, -5.0, 25.0, {80.0, 60.0, 50.0}, kPale)};
    return scene;
}

Scene flatBox() {
    Scene scene = sceneWith(900.0, 3);
    scene.boxes = {makeBox(5.0, 0.0, -8.0, {300.0, 220.0, 25.0}, kWhite)};
    return scene;
}

Scene tallBox() {
    Scene scene = sceneWith(1300.0, 4);
    scene.boxes = {makeBox(25.0, 15.0, 15.0, {150.0, 120.0, 400.0})};
    return scene;
}

Scene diagonal() {
    Scene scene = sceneWith(1100.0, 5);
    scene.boxes = {makeBox(0.0, 0.0, 45.0, {280.0, 180.0, 120.0})};
    return scene;
}

Scene cylinder() {
    Scene scene = sceneWith(900.0, 6);
    scene.cylinders = {{20.0, 10.0, 160.0, 130.0, kBlue}};
    return scene;
}

Scene clutter() {
    Scene scene = sceneWith(1200.0, 7);
    scene.boxes = {
        makeBox(0.0, 10.0, 20.0, {240.0, 170.0, 120.0}), makeBox(-360.0, -230.0, -30.0, {180.0, 120.0, 70.0}, kPale),
        makeBox(330.0, 210.0, 65.0, {260.0, 150.0, 160.0}), makeBox(-380.0, 200.0, 5.0, {160.0, 160.0, 40.0}, kWhite)};
    scene.cylinders = {{340.0, -210.0, 120.0, 150.0, kGreen}, {20.0, -290.0, 90.0, 60.0, kRed}};
    return scene;
}

Scene tiltedCamera() {
    Scene scene = sceneWith(1000.0, 8);
    scene.surface.tiltXDeg = 12.0;
    scene.boxes = {makeBox(0.0, 20.0, 18.0, {260.0, 180.0, 140.0})};
    return scene;
}

Scene partlyOutOfView() {
    Scene scene = sceneWith(1000.0, 9);
    scene.boxes = {makeBox(-290.0, 25.0, 4.0, {640.0, 180.0, 110.0})};
    return scene;
}

struct Preset {
    const char* name;
    const char* description;
    Scene (*build)();
};

const std::vector<Preset>& presets() {
    static const std::vector<Preset> kPresets{
        {"parcel", "a 300 x 200 x 150 mm parcel, a little turned, 1 m below the camera", parcel},
        {"small-box", "an 80 x 60 x 50 mm box seen from 700 mm", smallBox},
        {"flat-box", "a 300 x 220 mm box only 25 mm high", flatBox},
        {"tall-box", "a 150 x 120 mm box 400 mm high", tallBox},
        {"diagonal", "a 280 x 180 x 120 mm box at 45 degrees", diagonal},
        {"cylinder", "a tin of 160 mm diameter, 130 mm high", cylinder},
        {"clutter", "a box in the middle among three other boxes and two tins", clutter},
        {"tilted-camera", "a 260 x 180 x 140 mm box seen by a camera tilted by 12 degrees", tiltedCamera},
        {"partly-out-of-view", "a long box that reaches beyond the left edge of the picture", partlyOutOfView},
    };
    return kPresets;
}

const Preset& find(const std::string& name) {
    const auto found = std::find_if(presets().begin(), presets().end(),
                                    [&name](const Preset& candidate) { return candidate.name == name; });
    if (found != presets().end()) {
        return *found;
    }
    std::string known;
    for (const Preset& candidate : presets()) {
        known += (known.empty() ? "" : ", ") + std::string(candidate.name);
    }
    throw std::invalid_argument("unknown preset '" + name + "'; known are " + known);
}

}  // namespace

std::vector<std::string> presetNames() {
    std::vector<std::string> names;
    for (const Preset& candidate : presets()) {
        names.emplace_back(candidate.name);
    }
    return names;
}

std::string presetDescription(const std::string& name) {
    return find(name).description;
}

Scene preset(const std::string& name) {
    const Preset& found = find(name);
    Scene scene = found.build();
    scene.name = found.name;
    return scene;
}

}  // namespace quorvel::sim
