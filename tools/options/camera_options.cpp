// SPDX-License-Identifier: Apache-2.0
#include "options/camera_options.h"

#include <vector>

#include "kit/input/camera_file.h"
#include "kit/input/input_error.h"
#include "kit/input/numbers.h"

namespace quorvel::command {

using namespace kit;

void addCameraOptions(CLI::App& app, CameraOptions& options) {
    app.add_option("--camera", options.file,
                   "camera file: JSON with fx, fy, cx, cy, width, height; an OpenCV calibration file; or camera-info "
                   "YAML")
        ->type_name("FILE");
    app.add_option("--intrinsics", options.intrinsics,
                   "instead of --camera: focal lengths and principal point in pixels; the size is the depth image's")
        ->type_name("FX,FY,CX,CY");
}

Camera resolveCamera(const CameraOptions& options, cv::Size depthSize) {
    if (options.file.empty() == options.intrinsics.empty()) {
        throw InputError(options.file.empty() ? "no camera is given; add --camera FILE or --intrinsics fx,fy,cx,cy"
                                              : "--camera and --intrinsics both give the camera; keep one of them");
    }
    if (!options.file.empty()) {
        return readCameraFile(options.file);
    }
    const std::vector<double> values = parseNumbers(options.intrinsics, "--intrinsics");
    if (values.size() != 4) {
        throw InputError("--intrinsics: \"" + options.intrinsics + "\" has " + std::to_string(values.size()) +
                         " numbers; give four, such as 525,525,319.5,239.5");
    }
    Camera camera;
    camera.fx = values[0];
    camera.fy = values[1];
    camera.cx = values[2];
    camera.cy = values[3];
    camera.width = depthSize.width;
    camera.height = depthSize.height;
    requireSensible(camera, "--intrinsics " + options.intrinsics);
    return camera;
}

std::string cameraSource(const CameraOptions& options) {
    return options.file.empty() ? "--intrinsics " + options.intrinsics : options.file;
}

}  // namespace quorvel::command
