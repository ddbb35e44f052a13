// SPDX-License-Identifier: Apache-2.0
#include "sim/shadow.h"

#include <algorithm>
#include <cmath>

#include "sim/grain.h"

namespace quorvel::sim {

namespace {

// Unnormalised direction towards the lamp; its z is 1, so that x and y are the drift of a light ray per mm of height.
constexpr double kLampX = -0.42;
constexpr double kLampY = -0.55;

/// Half-width of the shadow's soft edge per mm of height between the caster and the shaded place: a wide lamp.
constexpr double kPenumbra = 0.24;

/// How far a shadow reaches per mm of height: at least the length of (kLampX, kLampY) and the soft edge.
constexpr double kShadowReach = 0.94;

/// How far, per mm of an object's height, the surface around it is darkened, and at most, mm.
constexpr double kContactReach = 0.45;
constexpr double kMaxContactReach = 80.0;

/// Cheap test that a place lies too far from a solid to be darkened by it, by the circle around its footprint.
bool outOfReach(const Solid& solid, double x, double y) {
    const double reach = solid.halfLength + solid.halfWidth + kShadowReach * solid.height + 10.0;
    const double dx = x - solid.x;
    const double dy = y - solid.y;
    return dx * dx + dy * dy > reach * reach;
}

/// Where a place of the surface lies by a solid's footprint; both numbers are the same for a round one.
struct FootprintPlace {
    double beyondX;  ///< mm beyond the footprint along the solid's x; negative within its length
    double beyondY;  ///< mm beyond the footprint along the solid's y; negative within its width
};

FootprintPlace placeBy(const Solid& solid, double x, double y) {
    const double dx = x - solid.x;
    const double dy = y - solid.y;
    if (solid.shape == Shape::Cylinder) {
        const double radial = std::sqrt(dx * dx + dy * dy) - solid.halfLength;
        return {radial, radial};
    }
    return {std::abs(solid.yaw.cos * dx + solid.yaw.sin * dy) - solid.halfLength,
            std::abs(solid.yaw.cos * dy - solid.yaw.sin * dx) - solid.halfWidth};
}

/// Distance of a place from a solid's footprint, mm; not positive inside.
double footprintDistance(const Solid& solid, double x, double y) {
    const FootprintPlace place = placeBy(solid, x, y);
    if (solid.shape == Shape::Box && place.beyondX > 0.0 && place.beyondY > 0.0) {
        return std::sqrt(place.beyondX * place.beyondX + place.beyondY * place.beyondY);
    }
    return std::max(place.beyondX, place.beyondY);
}

/// 1 well inside a solid's footprint, 0 well outside, with an edge of the given half-width, mm.
double footprintCoverage(const Solid& solid, double x, double y, double softness) {
    const FootprintPlace place = placeBy(solid, x, y);
    const double alongX = 1.0 - smoothStep(-softness, softness, place.beyondX);
    return solid.shape == Shape::Cylinder ? alongX : alongX * (1.0 - smoothStep(-softness, softness, place.beyondY));
}

/// Share of the lamp that one solid hides: the light ray is tried at some heights up to the solid's top.
/// @param distance of the place from the solid's footprint, mm
double hiddenShare(const Solid& solid, const cv::Vec3d& place, double distance) {
    constexpr int kSteps = 8;
    constexpr double kSharpest = 2.0;  // mm, half-width of the soft edge at the caster itself
    const double rise = solid.height - place[2];
    if (rise <= 0.0 || distance > kShadowReach * rise + kSharpest) {
        return 0.0;
    }
    double hidden = 0.0;
    for (int i = 1; i <= kSteps; ++i) {
        const double step = rise * i / kSteps;
        const double softness = kSharpest + kPenumbra * step;
        const double coverage = footprintCoverage(solid, place[0] + kLampX * step, place[1] + kLampY * step, softness);
        hidden = std::max(hidden, coverage);
    }
    return hidden;
}

}  // namespace

const cv::Vec3d& lampDirection() {
    static const double length = std::sqrt(kLampX * kLampX + kLampY * kLampY + 1.0);
    static const cv::Vec3d direction(kLampX / length, kLampY / length, 1.0 / length);
    return direction;
}

double lampShare(const View& view, const cv::Vec3d& place, int self) {
    double share = 1.0;
    for (std::size_t i = 0; i < view.solids.size(); ++i) {
        const Solid& solid = view.solids[i];
        if (static_cast<int>(i) != self && !outOfReach(solid, place[0], place[1])) {
            share *= 1.0 - hiddenShare(solid, place, footprintDistance(solid, place[0], place[1]));
        }
    }
    return share;
}

double ambientShare(const View& view, double x, double y) {
    double share = 1.0;
    for (const Solid& solid : view.solids) {
        if (outOfReach(solid, x, y)) {
            continue;
        }
        const double reach = std::min(8.0 + kContactReach * solid.height, kMaxContactReach);
        share *= 0.5 + 0.5 * smoothStep(-0.3 * reach, reach, footprintDistance(solid, x, y));
    }
    return share;
}

}  // namespace quorvel::sim
