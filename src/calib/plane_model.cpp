// SPDX-License-Identifier: Apache-2.0
#include "calib/plane_model.h"

#include <cmath>

#include "common/numbers.h"

namespace quorvel::internal {

namespace {

constexpr float kBandHalfWidth = 64.0F;
constexpr float kObjectEdge = 50.0F;  // mm

}  // namespace

bool hasPlane(const cv::Vec3f& normal) {
    return !(normal[0] == 0.0F && normal[1] == 0.0F && normal[2] == 0.0F);
}

Plane planeFromSlopes(float a, float b, float c) {
    const double wideA = a;
    const double wideB = b;
    const auto length = static_cast<float>(std::sqrt(wideA * wideA + wideB * wideB + 1.0));
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
