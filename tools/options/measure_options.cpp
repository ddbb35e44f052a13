// SPDX-License-Identifier: Apache-2.0
#include "options/measure_options.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>

#include "kit/input/input_error.h"
#include "kit/input/mode_name.h"
#include "kit/input/numbers.h"
#include "kit/input/ruler_params.h"

namespace quorvel::command {

using namespace kit;

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
    constexpr float kDeepest = 65535.0F;  // mm, of a depth image
    if (options.minHeight && !(*options.minHeight > 0.0F && *options.minHeight <= kDeepest)) {
        throw InputError("--min-height: must be above 0 mm and at most 65535 mm");
    }
    if (options.sideBand && *options.sideBand < 0) {
        throw InputError("--side-band: must be 0 mm or more");
    }
}

bool isBatch(const MeasureOptions& options) {
    return !options.batch.empty() || !options.tolerance.empty() || options.frames.depths.size() > 1 ||
           options.frames.colors.size() > 1;
}

/// Refuses options that are not possible with a batch.
void requireBatchOptions(const MeasureOptions& options, ProductType mode) {
    if (mode == GROUND_GROWING) {
        throw InputError(
            "--mode: ground-growing measures no batches, only kiosk and ground-tracking do; choose one of them, or "
            "measure one frame without --batch and --tolerance");
    }
    if (options.tolerance.empty()) {
        throw InputError(
            "--tolerance: a batch needs the largest differences between its frames that count as agreement; add "
            "--tolerance L,W,H in mm, such as --tolerance 5,5,3");
    }
    if (!options.stages.empty()) {
        throw InputError("--stages: shows the stages of one frame; measure it alone, without --batch and --tolerance");
    }
    if (options.timing) {
        throw InputError("--timing: times the stages of one frame; measure it alone, without --batch and --tolerance");
    }
    if (!options.batch.empty() && !(options.frames.colors.empty() && options.frames.depths.empty())) {
        throw InputError(
            "--batch: names all frames of the folder; leave out --color and --depth, or list all frames "
            "with them");
    }
}

/// Refuses files that can be read only once, such as pipes, because timing reads every file again.
void requireRereadable(const MeasureOptions& options) {
    std::vector<std::string> paths{options.frames.camera.file, options.emptyColor, options.emptyDepth, options.params};
    paths.insert(paths.end(), options.frames.colors.begin(), options.frames.colors.end());
    paths.insert(paths.end(), options.frames.depths.begin(), options.frames.depths.end());
    for (const std::string& path : paths) {
        std::error_code unreadable;
        if (std::filesystem::is_other(path, unreadable)) {
            throw InputError(path + ": --timing reads it several times, and it is not a regular file; copy it to one");
        }
    }
}

float toleranceOf(double millimetres, const std::string& text) {
    if (!(millimetres >= 0.0 && millimetres <= static_cast<double>(std::numeric_limits<float>::max()))) {
        throw InputError("--tolerance: every tolerance must be a finite number of 0 mm or more, and \"" + text +
                         "\" has another");
    }
    return static_cast<float>(millimetres);
}

Sizes parseTolerance(const std::string& text) {
    const std::vector<double> numbers = parseNumbers(text, "--tolerance");
    if (numbers.size() != 3) {
        throw InputError("--tolerance: \"" + text + "\" has " + std::to_string(numbers.size()) +
                         " numbers; give three in mm, for length, width and height, such as 5,5,3");
    }
    return {toleranceOf(numbers[0], text), toleranceOf(numbers[1], text), toleranceOf(numbers[2], text)};
}

std::vector<FrameFiles> filesOf(const MeasureOptions& options) {
    return options.batch.empty() ? pairFiles(options.frames.colors, options.frames.depths) : findFrames(options.batch);
}

/// Reads the frames, and the camera with the first of them.
void readFrames(const FrameListOptions& options, MeasureInput& input) {
    const FrameFiles& first = input.files.front();
    CameraFrame cameraFrame = readCameraFrame({options.camera, first.color, first.depth, options.millimetresPerUnit});
    input.camera = cameraFrame.camera;
    input.frames.push_back(std::move(cameraFrame.frame));
    for (auto files = input.files.begin() + 1; files != input.files.end(); ++files) {
        input.frames.push_back(readFrame(files->color, files->depth, options.millimetresPerUnit));
        requireSize(input.frames.back(), input.camera.size(), files->depth);
    }
}

/// Takes the values that no option has set from a ruler parameter file.
void applyParams(const std::string& path, MeasureInput& input) {
    const RulerParams params = readRulerParams(path);
    const std::vector<std::string> problems = rulerParamProblems(params, input.camera.size());
    if (!problems.empty()) {
        throw InputError(path + ": " + problems.front() + "; use the parameter file that belongs to this camera");
    }
    if (!input.settings.area) {
        input.settings.area = params.detectArea;
    }
    if (!input.settings.filterWeight) {
        input.settings.filterWeight = params.groundWeight;
    }
    if (!input.calibration.area) {
        input.calibration.area = params.calibrationArea;
    }
}

}  // namespace

void addMeasureOptions(CLI::App& parser, MeasureOptions& options) {
    addFrameListOptions(parser, options.frames);
    parser
        .add_option("--batch", options.batch,
                    "measure all frames of a folder as one batch: pairs such as color_00.png and depth_00.png")
        ->type_name("DIR");
    parser
        .add_option("--tolerance", options.tolerance,
                    "largest difference between any two frames of a batch in length, width and height; the batch is "
                    "refused beyond it")
        ->type_name("L,W,H");
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
        .add_option("--params", options.params,
                    "ruler parameter file: detection area, filter weight, and the area of a calibration first, where "
                    "no option gives them")
        ->type_name("FILE");
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
    parser.add_flag("--timing", options.timing, "how long each stage takes, each repeated on the same frame");
    parser.add_flag("--debug", options.debug, "the library's diagnostic lines on standard error");
}

MeasureInput readMeasureInput(const MeasureOptions& options) {
    MeasureInput input;
    input.settings.mode = modeFromName(options.mode);
    requireEffect(options, input.settings.mode);
    requireSensible(options);
    if (isBatch(options)) {
        requireBatchOptions(options, input.settings.mode);
        input.tolerance = parseTolerance(options.tolerance);
    }
    if (options.timing) {
        requireRereadable(options);
    }
    input.settings.filterWeight = options.filterWeight;
    input.settings.sideBand = options.sideBand;
    input.settings.minHeight = options.minHeight;
    input.settings.debug = options.debug;

    input.files = filesOf(options);
    readFrames(options.frames, input);
    const cv::Size picture = input.camera.size();
    if (!options.area.empty()) {
        input.settings.area = parseRegion(options.area, "--area");
        requireInside(*input.settings.area, picture, "--area");
    }
    input.calibration = calibrationSettings(options.calibration, picture);
    if (!options.params.empty()) {
        applyParams(options.params, input);
    }
    if (!options.emptyDepth.empty()) {
        input.empty = readFrame(options.emptyColor, options.emptyDepth, options.frames.millimetresPerUnit);
        requireSize(*input.empty, picture, options.emptyDepth);
    }
    return input;
}

}  // namespace quorvel::command
