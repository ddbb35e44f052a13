// SPDX-License-Identifier: Apache-2.0
#include "measure_command.h"

#include <filesystem>
#include <iostream>
#include <memory>

#include "exit_code.h"
#include "measure_options.h"
#include "measure_report.h"
#include "notes.h"
#include "overlay.h"
#include "picture_file.h"
#include "stage_pictures.h"
#include "stopwatch.h"
#include "text_format.h"

namespace quorvel::command {

namespace {

/// Why a ruler that loads its plane has none.
std::string missingPlane(const Quorvel& ruler) {
    const std::string file = std::filesystem::absolute(ruler.calFilePath).lexically_normal().string();
    if (!std::filesystem::exists(file)) {
        return "there is no stored plane, " + file +
               " does not exist; run quorvel calibrate in this folder, or add --empty-depth with a picture of the "
               "empty surface";
    }
    return file + " holds no usable plane (normal " + vectorText(ruler.refPlaneNormal) + ", distance " +
           fixed(static_cast<double>(ruler.refPlaneOffset), 1) + " mm); run quorvel calibrate again";
}

Measurement measureInput(Quorvel& ruler, const MeasureInput& input, std::optional<CalibrationOutcome>& calibration) {
    if (input.empty) {
        calibration = calibrate(ruler, *input.empty, input.calibration);
        if (!calibration->problem.empty()) {
            return measurementWithoutPlane(ruler, calibration->problem);
        }
    } else if (input.settings.mode != GROUND_TRACKING && !isUsable(planeOf(ruler))) {
        return measurementWithoutPlane(ruler, missingPlane(ruler));
    }
    return measureFrame(ruler, input.cameraFrame.frame, input.settings);
}

void writePictures(const MeasureOptions& options, const MeasureInput& input, const Measurement& measurement) {
    const Camera& camera = input.cameraFrame.camera;
    const FramePair& frame = input.cameraFrame.frame;
    if (!options.overlay.empty()) {
        writePicture(options.overlay, drawOverlay(frame.color, camera, measurement));
    }
    if (!options.stages.empty()) {
        writeStagePictures(options.stages, frame, camera, measurement);
    }
}

int measure(const MeasureOptions& options) {
    const Stopwatch watch;
    const MeasureInput input = readMeasureInput(options);
    MeasureReport report;
    report.readMilliseconds = watch.milliseconds();
    report.mode = input.settings.mode;
    report.camera = input.cameraFrame.camera;
    report.cameraSource = cameraSource(options.frame.camera);
    report.overlay = options.overlay;
    report.stages = options.stages;
    report.areaGiven = input.settings.area.has_value();

    Quorvel ruler = makeRuler(report.camera);
    report.version = ruler.getVersion();
    selectMode(ruler, input.settings);
    report.measurement = measureInput(ruler, input, report.calibration);
    for (const std::string& note : cameraNotes(report.camera, report.cameraSource)) {
        report.measurement.notes.push_back(note);
    }
    writePictures(options, input, report.measurement);
    std::cout << (options.json ? reportJson(report) : reportTable(report));
    return report.measurement.diagnosis.reason == Reason::None ? kSuccess : kNothingMeasured;
}

}  // namespace

Subcommand addMeasureCommand(CLI::App& app) {
    auto options = std::make_shared<MeasureOptions>();
    CLI::App* parser = app.add_subcommand("measure", "Measure the object in one frame");
    addMeasureOptions(*parser, *options);
    parser->footer(
        "Exit code 0: measured; 1: nothing measured, the report says why; 2: wrong input.\n"
        "Examples:\n"
        "  quorvel measure --camera parcel/camera.json --color parcel/color.png --depth parcel/depth.png"
        " --mode kiosk --overlay overlay.png\n"
        "  quorvel measure --camera parcel/camera.json --depth parcel/depth.png --mode ground-growing"
        " --empty-depth parcel/empty_depth.png --json");
    return {parser, [options] { return measure(*options); }};
}

}  // namespace quorvel::command
