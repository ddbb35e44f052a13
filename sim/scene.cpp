// SPDX-License-Identifier: Apache-2.0
#include "sim/scene.h"

#include <locale>
#include <sstream>

namespace quorvel::sim {

namespace {

/// Collects the first complaint about a scene's members.
class Check {
public:
    void above(const std::string& member, double value, double low, double high) {
        require(value > low && value <= high, member, value, "above ", low, " and at most ", high);
    }
    void within(const std::string& member, double value, double low, double high) {
        require(value >= low && value <= high, member, value, "from ", low, " to ", high);
    }
    void below(const std::string& member, double value, double low, double limit, const std::string& limitName) {
        require(value > low && value < limit, member, value, "above ", low, " and below " + limitName + ", ", limit);
    }
    const std::string& problem() const { return problem_; }

private:
    void require(bool good, const std::string& member, double value, const std::string& lowWords, double low,
                 const std::string& highWords, double high) {
        if (good || !problem_.empty()) {
            return;
        }
        std::ostringstream text;
        text.imbue(std::locale::classic());
        text << member << ": expected a number " << lowWords << low << highWords << high << ", found " << value;
        problem_ = text.str();
    }

    std::string problem_;
};

void checkCamera(Check& check, const Camera& camera) {
    check.above("camera.fx", camera.fx, 0.0, kMaxLength);
    check.above("camera.fy", camera.fy, 0.0, kMaxLength);
    check.within("camera.cx", camera.cx, -kMaxLength, kMaxLength);
    check.within("camera.cy", camera.cy, -kMaxLength, kMaxLength);
    check.within("camera.width", camera.width, 1.0, kMaxImageSide);
    check.within("camera.height", camera.height, 1.0, kMaxImageSide);
}

void checkSurface(Check& check, const Surface& surface) {
    check.above("surface.distance", surface.distance, 0.0, kMaxLength);
    check.within("surface.tiltXDeg", surface.tiltXDeg, -kMaxTiltDeg, kMaxTiltDeg);
    check.within("surface.tiltYDeg", surface.tiltYDeg, -kMaxTiltDeg, kMaxTiltDeg);
    check.within("surface.halfExtent", surface.halfExtent, 0.0, kMaxLength);
}

/// What boxes and cylinders have in common.
template <typename Object>
void checkStanding(Check& check, const std::string& where, const Object& object, const Surface& surface) {
    check.within(where + ".x", object.x, -kMaxLength, kMaxLength);
    check.within(where + ".y", object.y, -kMaxLength, kMaxLength);
    check.below(where + ".height", object.height, 0.0, surface.distance, "the surface's distance");
}

void checkEffects(Check& check, const SensorEffects& effects) {
    check.within("effects.flyingPixels", effects.flyingPixels, 0.0, 1.0);
    check.within("effects.edgeThreshold", effects.edgeThreshold, 0.0, kMaxLength);
    check.within("effects.axialNoise", effects.axialNoise, 0.0, kMaxLength);
    check.within("effects.jitter", effects.jitter, 0.0, kMaxLength);
    check.within("effects.quantisationStep", effects.quantisationStep, 0.0, kMaxLength);
    check.within("effects.dropout", effects.dropout, 0.0, 1.0);
    check.within("effects.holeCount", effects.holeCount, 0.0, kMaxHoleCount);
    check.within("effects.holeRadius", effects.holeRadius, 0.0, kMaxImageSide);
}

std::string element(const char* list, std::size_t index) {
    return std::string(list) + "[" + std::to_string(index) + "]";
}

}  // namespace

std::string sceneProblem(const Scene& scene) {
    Check check;
    checkCamera(check, scene.camera);
    checkSurface(check, scene.surface);
    for (std::size_t i = 0; i < scene.boxes.size(); ++i) {
        const Box& box = scene.boxes[i];
        const std::string where = element("boxes", i);
        checkStanding(check, where, box, scene.surface);
        check.within(where + ".yawDeg", box.yawDeg, -360.0, 360.0);
        check.above(where + ".length", box.length, 0.0, kMaxLength);
        check.above(where + ".width", box.width, 0.0, kMaxLength);
    }
    for (std::size_t i = 0; i < scene.cylinders.size(); ++i) {
        const std::string where = element("cylinders", i);
        checkStanding(check, where, scene.cylinders[i], scene.surface);
        check.above(where + ".diameter", scene.cylinders[i].diameter, 0.0, kMaxLength);
    }
    checkEffects(check, scene.effects);
    return check.problem();
}

}  // namespace quorvel::sim
