// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include <opencv2/core.hpp>

#include "sim/scene.h"

namespace quorvel::sim {

/// Applies the sensor effects of SensorEffects to the exact depth.
/// @param exact CV_64FC1, z in mm, 0 = nothing hit
/// @param seed of the scene; each effect draws from its own sequence, so that switching one on leaves the others alone
/// @param frameIndex selects everything that changes from frame to frame
/// @return CV_16UC1 of the same size, mm rounded to the nearest; 0 = no measurement, also for what lies beyond 65535
cv::Mat applyEffects(const cv::Mat& exact, const SensorEffects& effects, std::uint32_t seed, unsigned frameIndex);

}  // namespace quorvel::sim
