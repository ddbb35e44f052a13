// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "kit/input/frame_reader.h"
#include "options/camera_options.h"

namespace quorvel::command {

/// Options that name the camera, one frame and the unit of its depth.
struct FrameOptions {
    CameraOptions camera;
    std::string color;
    std::string depth;
    double millimetresPerUnit = 1.0;
};

/// Adds --camera, --intrinsics, --color, --depth and --depth-scale.
/// \param options filled by parsing; must outlive it
void addFrameOptions(CLI::App& app, FrameOptions& options);

/// Options that name the camera, any number of frames and the unit of their depth.
struct FrameListOptions {
    CameraOptions camera;
    /// Empty, or as many as `depths`: the k-th belongs to the k-th depth.
    std::vector<std::string> colors;
    std::vector<std::string> depths;
    double millimetresPerUnit = 1.0;
};

/// The same options as addFrameOptions() adds, with --color and --depth taking several files and --depth not required.
/// \param options filled by parsing; must outlive it
void addFrameListOptions(CLI::App& app, FrameListOptions& options);

/// A frame and the camera that took it; the sizes agree.
struct CameraFrame {
    kit::Camera camera;
    kit::FramePair frame;
};

/// \throws InputError when an option or a file cannot be used
CameraFrame readCameraFrame(const FrameOptions& options);

}  // namespace quorvel::command
