// SPDX-License-Identifier: Apache-2.0
#include "options/calibration_options.h"

#include <cmath>

#include "kit/input/input_error.h"

namespace quorvel::command {

using namespace kit;

void addCalibrationOptions(CLI::App& app, CalibrationOptions& options) {
    app.add_option("--calibration-area", options.area,
                   "where the plane is fitted: centred share of the picture's width and height, or a rectangle in "
                   "pixels (default: the 100 x 100 pixels in the middle)")
        ->type_name("RATIO|X,Y,W,H");
    app.add_option("--offset", options.offset, "added to the fitted distance of the plane (default 0)")
        ->type_name("MM");
}

CalibrationSettings calibrationSettings(const CalibrationOptions& options, cv::Size picture) {
    constexpr double kDeepest = 65535.0;  // mm, of a depth image
    if (!(std::abs(options.offset) <= kDeepest)) {
        throw InputError("--offset: must be a finite number of millimetres, from -65535 to 65535");
    }
    CalibrationSettings settings;
    settings.offset = options.offset;
    if (!options.area.empty()) {
        settings.area = parseRegion(options.area, "--calibration-area");
        requireInside(*settings.area, picture, "--calibration-area");
    }
    return settings;
}

}  // namespace quorvel::command
