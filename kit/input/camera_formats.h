// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "kit/input/camera.h"

/// \file camera_formats.h
/// The readers of the camera-file formats, each over a file that is known to be of its format. All of them throw
/// InputError with one line that names `path`.

namespace quorvel::kit {

/// \param document object with exactly fx, fy, cx, cy, width, height
Camera cameraFromOwnJson(const nlohmann::json& document, const std::string& path);

/// \param text content of a file that OpenCV's file storage wrote: camera_matrix (3 x 3), image_width,
///        image_height, and perhaps distortion_coefficients
Camera cameraFromFileStorage(const std::string& text, const std::string& path);

/// \param text camera-info YAML: image_width, image_height (or width, height), and camera_matrix.data or K or k
Camera cameraFromCameraInfo(const std::string& text, const std::string& path);

}  // namespace quorvel::kit
