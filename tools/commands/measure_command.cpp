// SPDX-License-Identifier: Apache-2.0
#include "commands/measure_command.h"

#include <filesystem>
#include <iostream>
#include <memory>

#include "commands/exit_code.h"
#include "kit/account/notes.h"
#include "kit/account/text_format.h"
#include "kit/draw/overlay.h"
#include "kit/draw/stage_pictures.h"
#include "kit/measure/measure_timing.h"
#include "kit/measure/stopwatch.h"
#include "kit/output/picture_file.h"
#include "kit/report/batch_report.h"
#include "kit/report/measure_report.h"
#include "options/measure_options.h"

namespace quorvel::command {

using namespace kit;

namespace {

/// Why a ruler that should load its plane has no plane.
std::string missingPlane(const Ruler& ruler) {
    const std::string file = std::filesystem::absolute(ruler.planeFile()).lexically_normal().string();
    if (!std::filesystem::exists(file)) {
        return "there is no stored plane, " + file +
               " does not exist; run quorvel calibrate in this folder, or add --empty-depth with a picture of the "
               "empty surface";
    }
    return file + " holds no usable plane (normal " + vectorText(ruler.state().plane.normal) + ", distance " +
           fixed(static_cast<double>(ruler.state().plane.offset), 1) + " mm); run quorvel calibrate again";
}

/// Sees to it that the ruler has a plane: calibrates first when that is asked for, which writes the library's files.
/// Afterwards the plane is loaded from its file, which has six decimals; so a frame measures the same whether its plane
/// was fitted in this run or in an earlier one, and a replay of its capture, which has six decimals too, gives the very
/// same reading.
/// \return why there is no plane to measure with; empty when there is one, or when the mode fits its own
std::string calibrateOrFindPlane(Ruler& ruler, const MeasureInput& input,
                                 std::optional<CalibrationOutcome>& calibration) {
    if (input.empty) {
        calibration = calibrate(ruler, *input.empty, input.calibration);
        if (calibration->problem.empty()) {
            ruler.loadStoredPlane();
        }
        return calibration->problem;
    }
    if (input.settings.mode != GROUND_TRACKING && !isUsable(ruler.state().plane)) {
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

/// Puts the ruler into its mode and notes the plane and the settings.
MeasureReport beginReport(Ruler& ruler, const MeasureInput& input, const MeasureOptions& options) {
    MeasureReport report;
    report.version = Ruler::version();
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
    Ruler ruler = makeRuler(input.camera, &std::cerr);
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
        TimedRun run;
        run.read = [&options] { readMeasureInput(options); };
        run.empty = input.empty ? &*input.empty : nullptr;
        run.offset = input.calibration.offset;
        run.frame = frame;
        run.planeFound = planeFound;
        report.timing = timeMeasurement(ruler, run);
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
        shown.account = last.account;
    }
    return drawOverlay(input.frames.back().color, input.camera, shown);
}

int measureBatchOfFrames(const MeasureOptions& options, const MeasureInput& input, double readMilliseconds) {
    Batch batch{input.frames, {}, *input.tolerance};
    for (const FrameFiles& files : input.files) {
        batch.names.push_back(files.depth);
    }
    Ruler ruler = makeRuler(input.camera, &std::cerr);
    BatchReport report;
    MeasureReport& whole = report.whole;
    whole = beginReport(ruler, input, options);
    whole.readMilliseconds = readMilliseconds;
    const std::string problem = calibrateOrFindPlane(ruler, input, whole.calibration);
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

MeasureReport measureInput(Ruler& ruler, const MeasureInput& input, const MeasureOptions& options) {
    MeasureReport report = beginReport(ruler, input, options);
    const std::string problem = calibrateOrFindPlane(ruler, input, report.calibration);
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
