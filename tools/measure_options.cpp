// SPDX-License-Identifier: Apache-2.0
#include "measure_options.h"

#include <cmath>

#include "input_error.h"
#include "mode_option.h"

namespace quorvel::command {

namespace {

/// Refuses options that would silently do nothing.
void requireEffect(const MeasureOptions& options, ProductType mode) {
    const bool calibrates = !options.emptyDepth.empty();
    if (calibrates && mode == GROUND_TRACKING) {
        throw InputError(
            "--empty-depth: ground-tracking fits the plane on every frame and uses no empty one; leave it "
            "out, or choose kiosk or ground-growing");
    }
    if (!calibrates && !options.emptyColor.empty()) {
        throw InputError("--empty-color: calibrating first needs the depth of the empty surface; add --empty-depth");
    }
    if (!calibrates && (!options.calibration.area.empty() || options.calibration.offset != 0.0)) {
        throw InputError(
            "--calibration-area and --offset only serve a calibration; add --empty-depth, or give them to "
            "quorvel calibrate");
    }
    if (options.minHeight && mode == KIOSK) {
        throw InputError(
            "--min-height: kiosk chooses the minimum height by the camera distance itself; leave it out, "
            "or choose another mode");
    }
    if (options.sideBand && mode == GROUND_GROWING) {
        throw InputError("--side-band: ground-growing has no side band; leave it out, or choose another mode");
    }
}

void requireSensible(const MeasureOptions& options) {
    if (options.filterWeight && !std::isfinite(*options.filterWeight)) {
        throw InputError("--filter-weight: must be a finite number, such as 0.005 or -1");
    }
    if (options.minHeight && !(std::isfinite(*options.minHeight) && *options.minHeight > 0.0F)) {
        throw InputError("--min-height: must be above 0 mm");
    }
    if (options.sideBand && *options.sideBand < 0) {
        throw InputError("--side-band: must be 0 mm or more");
    }
}

}  // namespace

void addMeasureOptions(CLI::App& parser, MeasureOptions& options) {
    addFrameOptions(parser, options.frame);
    parser.add_option("--mode", options.mode, "kiosk, ground-tracking or ground-growing")
        ->type_name("MODE")
        ->required();
    parser
        .add_option("--empty-depth", options.emptyDepth,
                    "depth of the empty surface: calibrate on it first (kiosk, ground-growing); without it the plane "
                    "is loaded from ./param/cal.txt")
        ->type_name("FILE");
    parser.add_option("--empty-color", options.emptyColor, "colour image of the empty surface")->type_name("FILE");
    addCalibrationOptions(parser, options.calibration);
    parser
        .add_option("--area", options.area,
                    "where an object is measured: centred share of the picture's width and height, or a rectangle in "
                    "pixels (default: the mode's own, which the report names)")
        ->type_name("RATIO|X,Y,W,H");
    parser
        .add_option("--filter-weight", options.filterWeight,
                    "depths beyond (1 - W) times the plane's distance count as ground (default 0); a tilted camera "
                    "needs a negative weight, such as -1")
        ->type_name("W");
    parser
        .add_option("--side-band", options.sideBand,
                    "camera type value: width of the band at the left and right edge that the box must keep clear")
        ->type_name("MM");
    parser
        .add_option("--min-height", options.minHeight,
                    "least height above the plane of an object (default 10; kiosk chooses it by distance)")
        ->type_name("MM");
    parser.add_flag("--json", options.json, "one JSON object on standard output instead of the table");
    parser.add_option("--overlay", options.overlay, "write the colour image with the box drawn on it")
        ->type_name("FILE");
    parser.add_option("--stages", options.stages, "write a picture of every stage into a folder")->type_name("DIR");
    parser.add_flag("--debug", options.debug, "the library's diagnostic lines on standard error");
}

MeasureInput readMeasureInput(const MeasureOptions& options) {
    MeasureInput input;
    input.settings.mode = modeFromName(options.mode);
    requireEffect(options, input.settings.mode);
    requireSensible(options);
    input.settings.filterWeight = options.filterWeight;
    input.settings.sideBand = options.sideBand;
    input.settings.minHeight = options.minHeight;
    input.settings.debug = options.debug;

    input.cameraFrame = readCameraFrame(options.frame);
    const cv::Size picture = input.cameraFrame.camera.size();
    if (!options.area.empty()) {
        input.settings.area = parseRegion(options.area, "--area");
        requireInside(*input.settings.area, picture, "--area");
    }
    input.calibration = calibrationSettings(options.calibration, picture);
    if (!options.emptyDepth.empty()) {
        input.empty = readFrame(options.emptyColor, options.emptyDepth, options.frame.millimetresPerUnit);
        requireSize(*input.empty, picture, options.emptyDepth);
    }
    return input;
}

}  // namespace quorvel::command
