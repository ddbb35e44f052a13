// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace quorvel::kit {

/// Pinhole intrinsics of a depth camera, pixels.
struct Camera {
    double fx = 0.0;
    double fy = 0.0;
    double cx = 0.0;
    double cy = 0.0;
    int width = 0;
    int height = 0;
    /// The file also gives lens distortion, which the library does not use: it expects rectified images.
    bool distorted = false;

    /// \return frame size, pixels
    cv::Size size() const { return {width, height}; }
};

/// Checks that a frame can be measured with the camera: finite values, positive focal lengths, and a size between
/// the smallest picture that can be scaled down and the largest that a depth camera of any kind has.
/// \param source file or option, for the message
/// \throws InputError when a value cannot be right
void requireSensible(const Camera& camera, const std::string& source);

}  // namespace quorvel::kit
