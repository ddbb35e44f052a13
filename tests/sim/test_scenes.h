// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include <opencv2/core.hpp>

#include "sim/scene.h"

namespace quorvel::sim {

/// A bare surface seen by the default camera straight from above, without effects.
Scene flatScene(double distance = 1000.0);

/// A small picture of the default field of view: 64 x 48 pixels.
Camera smallCamera();

/// A scene of random tilt, distance and objects, without effects, seen by the small camera.
Scene randomScene(std::uint32_t seed);

/// \return the message of the std::runtime_error that a call throws; "accepted" when it throws none
template <typename Call>
std::string messageOf(Call call) {
    try {
        call();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "accepted";
}

/// How many pixels of two images of one size and type differ.
int countDifferent(const cv::Mat& a, const cv::Mat& b);

}  // namespace quorvel::sim
