// SPDX-License-Identifier: Apache-2.0
#include "geometry/plane_model.h"

#include <cmath>

#include "geometry/vec3.h"
#include "image/numbers.h"

namespace quorvel::internal {

namespace {

constexpr float kBandHalfWidth = 64.0F;
constexpr float kObjectEdge = 50.0F;  // mm

/// A normal of six decimals from a file has a length that is off by 1e-6, one of two decimals typed by hand by 1e-2.
/// With a larger error the heights are wrong by percents.
constexpr double kLengthTolerance = 0.01;

bool isFinite(const Plane& plane) {
    return std::isfinite(plane.normal[0]) && std::isfinite(plane.normal[1]) && std::isfinite(plane.normal[2]) &&
           std::isfinite(plane.offset);
}

}  // namespace

std::string planeProblem(const Plane& plane) {
    if (!isFinite(plane)) {
        return "it is not four finite numbers";
    }
    if (std::fabs(lengthOf(plane.normal) - 1.0) > kLengthTolerance) {
        return "the length of its normal is not 1";
    }
    if (!(plane.offset > 0.0F)) {
        return "its distance from the camera is not positive";
    }
    if (plane.normal[0] == 0.0F && plane.normal[1] == 0.0F && plane.normal[2] != 1.0F) {
        return "a normal along the optical axis has to be exactly 0 0 1";
    }
    return {};
}

bool hasPlane(const cv::Vec3f& normal) {
    return !(normal[0] == 0.0F && normal[1] == 0.0F && normal[2] == 0.0F);
}

Plane planeFromSlopes(float a, float b, float c) {
    const auto length = static_cast<float>(lengthOf(cv::Vec3d(a, b, 1.0)));
    return {cv::Vec3f(-a / length, -b / length, 1.0F / length), c / length};
}

float normalColour(float component) {
    return static_cast<float>(static_cast<double>(component) * 127.5) + 127.5F;
}

NormalBand::NormalBand(const cv::Vec3f& center)
    : low_(center[0] - kBandHalfWidth, center[1] - kBandHalfWidth, center[2] - kBandHalfWidth),
      high_(center[0] + kBandHalfWidth, center[1] + kBandHalfWidth, center[2] + kBandHalfWidth) {}

int objectPixelMinimum(float offset, float fxSmall) {
    const float edge = kObjectEdge / offset * fxSmall;
    return truncateToInt(std::pow(static_cast<double>(edge), 2.0));
}

}  // namespace quorvel::internal
