// SPDX-License-Identifier: Apache-2.0
#include "commands/calibrate_command.h"

#include <iostream>
#include <memory>

#include "commands/exit_code.h"
#include "kit/account/notes.h"
#include "kit/account/text_format.h"
#include "kit/input/input_error.h"
#include "kit/input/mode_name.h"
#include "kit/measure/calibration.h"
#include "kit/measure/measurement.h"
#include "options/calibration_options.h"
#include "options/frame_options.h"

namespace quorvel::command {

using namespace kit;

namespace {

struct CalibrateOptions {
    FrameOptions frame;
    CalibrationOptions calibration;
    std::string mode;
    bool debug = false;
};

ProductType calibrationMode(const std::string& name) {
    const ProductType mode = modeFromName(name);
    if (mode == GROUND_TRACKING) {
        throw InputError(
            "--mode: ground-tracking fits the plane on every frame and needs no calibration; choose kiosk "
            "or ground-growing, or measure at once");
    }
    return mode;
}

std::string nearPlaneText(const CalibrationOutcome& outcome) {
    const double share = 100.0 * outcome.pixelsNearPlane / std::max(1, outcome.measuredPixels);
    return fixed(share, 1) + " % of them (" + std::to_string(outcome.pixelsNearPlane) + ")";
}

void printOutcome(ProductType mode, const CalibrationOutcome& outcome, double offset) {
    const int areaPixels = outcome.area.width * outcome.area.height;
    std::cout << "Calibrated (" << modeName(mode) << ")\n\n"
              << tableText({{"plane normal", vectorText(outcome.plane.normal)},
                            {"camera height", fixed(static_cast<double>(outcome.plane.offset), 1) + " mm (offset " +
                                                  fixed(offset, 1) + " mm included)"},
                            {"tilt", fixed(tiltDegrees(outcome.plane), 1) + " deg"},
                            {"calibration area", rectangleText(outcome.area)},
                            {"pixels with depth",
                             std::to_string(outcome.measuredPixels) + " of " + std::to_string(areaPixels)},
                            {"within 5 mm of it", nearPlaneText(outcome)},
                            {"time", fixed(outcome.milliseconds, 1) + " ms"},
                            {"written", outcome.planeFile},
                            {"", outcome.depthFile}});
}

int calibrateFromFiles(const CalibrateOptions& options) {
    MeasurementSettings settings;
    settings.mode = calibrationMode(options.mode);
    settings.debug = options.debug;
    const CameraFrame input = readCameraFrame(options.frame);
    const CalibrationSettings calibration = calibrationSettings(options.calibration, input.camera.size());
    printNotes(cameraNotes(input.camera, cameraSource(options.frame.camera)));

    Ruler ruler = makeRuler(input.camera, &std::cerr);
    selectMode(ruler, settings);
    const CalibrationOutcome outcome = calibrate(ruler, input.frame, calibration);
    if (!outcome.problem.empty()) {
        std::cout << "Calibration failed (" << modeName(settings.mode) << "): " << outcome.problem << '\n';
        return kNothingMeasured;
    }
    printOutcome(settings.mode, outcome, calibration.offset);
    return kSuccess;
}

}  // namespace

Subcommand addCalibrateCommand(CLI::App& app) {
    auto options = std::make_shared<CalibrateOptions>();
    CLI::App* parser = app.add_subcommand("calibrate", "Learn the reference plane from a frame of the empty surface");
    addFrameOptions(*parser, options->frame);
    parser->add_option("--mode", options->mode, "kiosk (robust fit) or ground-growing (least squares and growth)")
        ->type_name("MODE")
        ->required();
    addCalibrationOptions(*parser, options->calibration);
    parser->add_flag("--debug", options->debug, "the library's diagnostic lines on standard error");
    parser->footer(
        "Leaves ./param/cal.txt and ./param/depth.tif, as the library does.\n"
        "Example:\n"
        "  quorvel calibrate --camera parcel/camera.json --color parcel/empty_color.png"
        " --depth parcel/empty_depth.png --mode kiosk");
    return {parser, [options] { return calibrateFromFiles(*options); }};
}

}  // namespace quorvel::command
