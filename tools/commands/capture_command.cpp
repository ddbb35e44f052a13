// SPDX-License-Identifier: Apache-2.0
#include "commands/capture_command.h"

#include <iostream>
#include <memory>

#include <nlohmann/json.hpp>

#include "commands/exit_code.h"
#include "commands/measure_command.h"
#include "kit/measure/stopwatch.h"
#include "kit/output/capture_saving.h"
#include "kit/report/measure_report.h"
#include "options/measure_options.h"

namespace quorvel::command {

using namespace kit;

namespace {

/// Pushes the frame when the measurement has not done so, because there was no plane. The capture has to keep the frame
/// in any case.
void keepFrame(Ruler& ruler, const MeasureInput& input) {
    applySettings(ruler, input.settings);
    const FramePair& frame = input.frames.front();
    ruler.takeFrame(frame.color, frame.depth);
}

std::string captureJson(const std::string& folder, const MeasureReport& report) {
    nlohmann::ordered_json document{{"capture", folder}};
    document.update(nlohmann::ordered_json::parse(reportJson(report)));
    return document.dump(2) + "\n";
}

int capture(const MeasureOptions& options) {
    const Stopwatch watch;
    const MeasureInput input = readMeasureInput(options);
    const double readMilliseconds = watch.milliseconds();
    Ruler ruler = makeRuler(input.camera, &std::cerr);
    MeasureReport report = measureInput(ruler, input, options);
    report.readMilliseconds = readMilliseconds;
    if (report.measurement.diagnosis.reason == Reason::NoPlane && report.mode != GROUND_TRACKING) {
        keepFrame(ruler, input);
    }
    const std::string folder = saveCapture(ruler);
    std::cout << (options.json ? captureJson(folder, report) : "Captured in " + folder + "\n\n" + reportTable(report));
    return kSuccess;
}

}  // namespace

Subcommand addCaptureCommand(CLI::App& app) {
    auto options = std::make_shared<MeasureOptions>();
    CLI::App* parser = app.add_subcommand("capture", "Measure one frame and keep it for a replay");
    addMeasureOptions(*parser, *options);
    // A capture keeps one frame; its pictures can be drawn, and its stages timed, at any time.
    for (const char* option : {"--batch", "--tolerance", "--overlay", "--stages", "--timing"}) {
        parser->remove_option(parser->get_option(option));
    }
    for (const char* option : {"--color", "--depth"}) {
        CLI::Option* images = parser->get_option(option)->expected(1);
        const std::string description = images->get_description();
        images->description(description.substr(0, description.find("; several make a batch")));
    }
    parser->footer(
        "Leaves a folder under ./log, as the library does, also when nothing is measured.\n"
        "Exit code 0: captured; 2: wrong input.\n"
        "Examples:\n"
        "  quorvel capture --camera parcel/camera.json --color parcel/color.png --depth parcel/depth.png"
        " --mode kiosk\n"
        "  quorvel capture --camera parcel/camera.json --depth parcel/depth.png --mode ground-growing"
        " --empty-depth parcel/empty_depth.png --json");
    return {parser, [options] { return capture(*options); }};
}

}  // namespace quorvel::command
