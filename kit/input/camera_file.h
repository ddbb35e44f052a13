// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "kit/input/camera.h"

namespace quorvel::kit {

/// Reads a camera file. The format is told by the content, not by the name:
/// - our JSON: an object with exactly fx, fy, cx, cy, width, height;
/// - an OpenCV calibration file (YAML, XML or JSON) with camera_matrix, image_width, image_height;
/// - camera-info YAML or JSON as robot software writes it: image_width, image_height (or width, height) and
///   camera_matrix.data or K or k, nine numbers row by row.
/// \throws InputError when the file cannot be read, has another format, or has a missing or impossible value
Camera readCameraFile(const std::string& path);

/// \return our JSON, ended by a line break
std::string cameraFileText(const Camera& camera);

}  // namespace quorvel::kit
