// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "kit/input/camera.h"

namespace quorvel::command {

/// How the user names the camera: a camera file, or the four intrinsics with the size taken from the depth image.
struct CameraOptions {
    /// Path of a camera file; empty when the intrinsics are given.
    std::string file;
    /// "fx,fy,cx,cy" in pixels; empty when a file is given.
    std::string intrinsics;
};

/// Adds --camera and --intrinsics.
/// \param options filled by parsing; must outlive it
void addCameraOptions(CLI::App& app, CameraOptions& options);

/// \param depthSize size of the depth image, pixels; the camera's size when only intrinsics are given
/// \throws InputError when neither or both are given, or when the values cannot be right
kit::Camera resolveCamera(const CameraOptions& options, cv::Size depthSize);

/// \return the file's path or the option with its value, for messages and the report
std::string cameraSource(const CameraOptions& options);

}  // namespace quorvel::command
