// SPDX-License-Identifier: Apache-2.0
#include "measure_command.h"

#include <filesystem>
#include <iostream>
#include <memory>

#include "batch_report.h"
#include "exit_code.h"
#include "measure_options.h"
#include "measure_report.h"
#include "measure_timing.h"
#include "notes.h"
#include "overlay.h"
#include "picture_file.h"
#include "stage_pictures.h"
#include "stopwatch.h"
#include "stream_redirect.h"
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

/// Loads the plane that a calibration has just stored. The file has six decimals; so a frame measures the same whether
/// its plane was fitted in this run or in an earlier one, and a replay of its capture, which has six decimals too,
/// gives the very same reading.
void useStoredPlane(Quorvel& ruler) {
    const LibraryOutputToStderr redirected;
    const auto mode = static_cast<ProductType>(ruler.productType);
    const cv::Rect area = ruler.effectiveRegion;
    ruler.setProductType(KIOSK);
    ruler.setProductType(mode);
    ruler.effectiveRegion = area;
}

/// Calibrates first when that is asked for.
/// \return why there is no plane to measure with; empty when there is one, or when the mode fits its own
std::string planeProblem(Quorvel& ruler, const MeasureInput& input, std::optional<CalibrationOutcome>& calibration) {
    if (input.empty) {
        calibration = calibrate(ruler, *input.empty, input.calibration);
        if (calibration->problem.empty()) {
            useStoredPlane(ruler);
        }
        return calibration->problem;
    }
    if (input.settings.mode != GROUND_TRACKING && !isUsable(planeOf(ruler))) {
        return missingPlane(ruler);
    }
    return {};
}

void addCameraNotes(MeasureReport& report) {
    for (const std::string& note : cameraNotes(report.camera, report.cameraSource)) {
        report.measurement.notes.push_back(note);
    }
}

int exitCodeOf(const Measurement& measurement) {
    return measurement.diagnosis.reason == Reason::None ? kSuccess : kNothingMeasured;
}

/// Puts the ruler into its mode and notes what is measured with.
MeasureReport beginReport(Quorvel& ruler, const MeasureInput& input, const MeasureOptions& options) {
    MeasureReport report;
    report.version = ruler.getVersion();
    report.mode = input.settings.mode;
    report.camera = input.camera;
    report.cameraSource = cameraSource(options.frames.camera);
    report.overlay = options.overlay;
    report.stages = options.stages;
    report.areaGiven = input.settings.area.has_value();
    selectMode(ruler, input.settings);
    return report;
}

int measureSingle(const MeasureOptions& options, const MeasureInput& input, double readMilliseconds) {
    Quorvel ruler = makeRuler(input.camera);
    MeasureReport report = measureInput(ruler, input, options);
    report.readMilliseconds = readMilliseconds;
    const FramePair& frame = input.frames.front();
    OutputFiles outputs;
    if (!options.overlay.empty()) {
        addPicture(outputs, options.overlay, drawOverlay(frame.color, input.camera, report.measurement));
    }
    if (!options.stages.empty()) {
        addStagePictures(outputs, options.stages, frame, input.camera, report.measurement);
    }
    if (options.timing) {
        const bool planeFound = report.measurement.diagnosis.reason != Reason::NoPlane;
        report.timing = timeMeasurement(ruler, input, options, planeFound);
    }
    outputs.commit();
    std::cout << (options.json ? reportJson(report) : reportTable(report));
    return exitCodeOf(report.measurement);
}

/// Draws the batch on its last frame: the mean sizes when the frames agreed, else that frame's box and the reason.
cv::Mat drawBatchOverlay(const MeasureInput& input, const BatchReport& report) {
    Measurement shown = report.whole.measurement;
    if (shown.result.corners.empty() && !report.batch.frames.empty()) {
        const Measurement& last = report.batch.frames.back();
        shown.result.corners = last.result.corners;
        shown.facts = last.facts;
    }
    return drawOverlay(input.frames.back().color, input.camera, shown);
}

int measureBatchOfFrames(const MeasureOptions& options, const MeasureInput& input, double readMilliseconds) {
    Batch batch{input.frames, {}, *input.tolerance};
    for (const FrameFiles& files : input.files) {
        batch.names.push_back(files.depth);
    }
    Quorvel ruler = makeRuler(input.camera);
    BatchReport report;
    MeasureReport& whole = report.whole;
    whole = beginReport(ruler, input, options);
    whole.readMilliseconds = readMilliseconds;
    const std::string problem = planeProblem(ruler, input, whole.calibration);
    report.batch = problem.empty() ? measureBatch(ruler, batch, input.settings) : batchWithoutPlane(ruler, problem);
    whole.measurement = report.batch.combined;
    addCameraNotes(whole);
    report.files = input.files;
    report.tolerance = batch.tolerance;
    OutputFiles outputs;
    if (!options.overlay.empty()) {
        addPicture(outputs, options.overlay, drawBatchOverlay(input, report));
    }
    outputs.commit();
    std::cout << (options.json ? batchJson(report) : batchTable(report));
    return exitCodeOf(whole.measurement);
}

int measure(const MeasureOptions& options) {
    const Stopwatch watch;
    const MeasureInput input = readMeasureInput(options);
    const double milliseconds = watch.milliseconds();
    return input.tolerance ? measureBatchOfFrames(options, input, milliseconds)
                           : measureSingle(options, input, milliseconds);
}

}  // namespace

MeasureReport measureInput(Quorvel& ruler, const MeasureInput& input, const MeasureOptions& options) {
    MeasureReport report = beginReport(ruler, input, options);
    const std::string problem = planeProblem(ruler, input, report.calibration);
    report.measurement = problem.empty() ? measureFrame(ruler, input.frames.front(), input.settings)
                                         : measurementWithoutPlane(ruler, problem);
    addCameraNotes(report);
    return report;
}

Subcommand addMeasureCommand(CLI::App& app) {
    auto options = std::make_shared<MeasureOptions>();
    CLI::App* parser = app.add_subcommand("measure", "Measure the object in one frame, or in a batch of frames");
    addMeasureOptions(*parser, *options);
    parser->footer(
        "Exit code 0: measured; 1: nothing measured or a batch refused, the report says why; 2: wrong input.\n"
        "Examples:\n"
        "  quorvel measure --camera parcel/camera.json --color parcel/color.png --depth parcel/depth.png"
        " --mode kiosk --overlay overlay.png\n"
        "  quorvel measure --camera parcel/camera.json --depth parcel/depth.png --mode ground-growing"
        " --empty-depth parcel/empty_depth.png --json\n"
        "  quorvel measure --camera parcel/camera.json --batch parcel --tolerance 5,5,3 --mode kiosk");
    return {parser, [options] { return measure(*options); }};
}

}  // namespace quorvel::command
