// SPDX-License-Identifier: Apache-2.0
#include "commands/replay_command.h"

#include <cmath>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "commands/exit_code.h"
#include "commands/interrupt.h"
#include "commands/progress_bar.h"
#include "commands/standard_streams.h"
#include "kit/account/text_format.h"
#include "kit/input/capture_search.h"
#include "kit/input/input_error.h"
#include "kit/input/mode_name.h"
#include "kit/input/region.h"
#include "kit/input/ruler_params.h"
#include "kit/measure/stopwatch.h"
#include "kit/replay/replay_output.h"
#include "kit/replay/replay_pool.h"

namespace quorvel::command {

using namespace kit;

namespace {

/// More than any machine's cores; a mistyped number must not start a million threads.
constexpr int kMostJobs = 256;

struct ReplayOptions {
    std::vector<std::string> paths;
    std::string mode;
    std::string params;
    std::string area;
    std::optional<float> filterWeight;
    std::optional<int> sideBand;
    /// The width of a pixel at the usual distances. A capture keeps six decimals of the plane, and the rounding may add
    /// or remove a pixel at the object's edge.
    double tolerance = 2.0;
    int jobs = 1;
    bool csv = false;
    bool jsonLines = false;
    bool asHost = false;
};

/// Whether something that a capture does not record is given.
bool isDescribed(const ReplayOptions& options) {
    return !options.mode.empty() || !options.params.empty() || !options.area.empty() || options.filterWeight ||
           options.sideBand;
}

void requireEffect(const ReplayOptions& options) {
    if (options.asHost && isDescribed(options)) {
        throw InputError(
            "--as-host: the library's offline start knows no mode, parameter file, area, weight or band; leave these "
            "options out");
    }
    if (options.csv && options.jsonLines) {
        throw InputError("--csv and --jsonl: there is one output; keep one of them");
    }
}

void requireSensible(const ReplayOptions& options) {
    if (!std::isfinite(options.tolerance) || options.tolerance < 0.0) {
        throw InputError("--tolerance: must be 0 mm or more");
    }
    if (options.jobs < 1 || options.jobs > kMostJobs) {
        throw InputError("--jobs: must be from 1 to " + std::to_string(kMostJobs));
    }
    if (options.filterWeight && !std::isfinite(*options.filterWeight)) {
        throw InputError("--filter-weight: must be a finite number, such as 0.005 or -1");
    }
    if (options.sideBand && *options.sideBand < 0) {
        throw InputError("--side-band: must be 0 mm or more");
    }
}

ReplaySettings replaySettings(const ReplayOptions& options) {
    requireEffect(options);
    requireSensible(options);
    MeasurementSettings measurement;
    measurement.sideBand = options.sideBand;
    if (!options.mode.empty()) {
        measurement.mode = modeFromName(options.mode);
    }
    if (!options.params.empty()) {
        const RulerParams params = readRulerParams(options.params);
        measurement.area = params.detectArea;
        measurement.filterWeight = params.groundWeight;
    }
    if (!options.area.empty()) {
        measurement.area = parseRegion(options.area, "--area");
    }
    if (options.filterWeight) {
        measurement.filterWeight = options.filterWeight;
    }
    return {measurement, options.asHost, options.tolerance};
}

ReplayFormat formatOf(const ReplayOptions& options) {
    if (options.csv) {
        return ReplayFormat::Csv;
    }
    return options.jsonLines ? ReplayFormat::JsonLines : ReplayFormat::Table;
}

std::vector<std::string> captureFolders(const std::vector<std::string>& paths) {
    std::vector<std::string> folders;
    for (const std::string& path : paths) {
        for (const std::string& listed : path == "-" ? readPathList(std::cin) : std::vector<std::string>{path}) {
            for (std::string& folder : findCaptures(listed)) {
                folders.push_back(std::move(folder));
            }
        }
    }
    return folders;
}

int exitCode(const ReplaySummary& summary, int signal) {
    if (signal != 0) {
        return kSignalBase + signal;
    }
    if (summary.changed > 0) {
        return kChanged;
    }
    return summary.unreadable > 0 && summary.unreadable == summary.total() ? kWrongInput : kSuccess;
}

std::string speedText(std::size_t captures, double milliseconds) {
    const double seconds = milliseconds / 1000.0;
    const double rate = static_cast<double>(captures) / std::max(seconds, 1e-3);
    return fixed(seconds, 1) + " s, " + fixed(rate, 1) + " captures/s\n";
}

int replay(const ReplayOptions& options) {
    const ReplaySettings settings = replaySettings(options);
    const ReplayFormat format = formatOf(options);
    const std::vector<std::string> folders = captureFolders(options.paths);
    const Stopwatch watch;
    const InterruptWatch interrupt;
    // The threads work on different captures, so OpenCV must not use threads for one image.
    cv::setNumThreads(1);
    ProgressBar progress(folders.size());
    ReplaySummary summary;
    std::cout << replayHeader(format) << std::flush;
    const ReplayCalls calls{[&](const std::string& folder) { return replayCapture(folder, settings); },
                            [&](const ReplayOutcome& outcome) {
                                summary.add(outcome);
                                progress.hide();
                                std::cout << replayRow(format, outcome);
                                requireWritten(std::cout);
                                progress.show(summary.total());
                            },
                            [&] { return interrupt.signal() != 0; }};
    replayAll(folders, options.jobs, calls);
    progress.hide();
    // Programs read the other formats, so standard output must have only their rows.
    std::ostream& report = format == ReplayFormat::Table ? std::cout : std::cerr;
    if (summary.total() < folders.size()) {
        report << "interrupted after " << summary.total() << " of " << folders.size() << " captures\n";
    }
    report << summaryText(summary, settings.tolerance) << std::flush;
    requireWritten(std::cout);
    if (summary.changed > 0 && !options.asHost && !isDescribed(options)) {
        std::cerr
            << "note: a capture keeps no mode, area, filter weight or side band; give them as they were in the field "
               "(--mode, --params)\n";
    }
    std::cerr << speedText(summary.total(), watch.milliseconds());
    return exitCode(summary, interrupt.signal());
}

void addReplayOptions(CLI::App& parser, ReplayOptions& options) {
    parser.add_option("PATH", options.paths, "capture folders, trees of them, or - for a list of paths, one a line")
        ->required();
    parser
        .add_option("--mode", options.mode,
                    "mode that measures: kiosk (the default), ground-tracking or ground-growing")
        ->type_name("MODE");
    parser.add_option("--params", options.params, "ruler parameter file: detection area and filter weight")
        ->type_name("FILE");
    parser
        .add_option("--area", options.area,
                    "where an object is measured: centred share or pixels (default: of --params, else the mode's own)")
        ->type_name("RATIO|X,Y,W,H");
    parser.add_option("--filter-weight", options.filterWeight, "as in quorvel measure (default: of --params, else 0)")
        ->type_name("W");
    parser.add_option("--side-band", options.sideBand, "as in quorvel measure")->type_name("MM");
    parser
        .add_option("--tolerance", options.tolerance,
                    "a capture has changed when a size differs by more than this (default 2)")
        ->type_name("MM");
    parser.add_option("--jobs", options.jobs, "captures measured side by side (default 1)")->type_name("N");
    parser.add_flag("--csv", options.csv, "comma-separated values instead of the table");
    parser.add_flag("--jsonl", options.jsonLines, "one JSON object a line and capture instead of the table");
    parser.add_flag("--as-host", options.asHost, "replay through the library's offline start, as a host sees it");
}

}  // namespace

Subcommand addReplayCommand(CLI::App& app) {
    auto options = std::make_shared<ReplayOptions>();
    CLI::App* parser = app.add_subcommand("replay", "Measure captures again and compare with what they recorded");
    addReplayOptions(*parser, *options);
    parser->footer(
        "Measures with the intrinsics, plane and minimum height of each capture. What a capture does not record, the "
        "mode,\n"
        "the detection area, the filter weight and the side band, is to be given as it was in the field.\n"
        "Exit code 0: nothing changed; 1: a capture changed; 2: wrong input, or no capture could be read; 130: "
        "Ctrl-C.\n"
        "Examples:\n"
        "  quorvel replay log --params ruler.yml --jobs 4\n"
        "  find log -mindepth 2 -type d | quorvel replay - --jsonl > replay.jsonl");
    return {parser, [options] { return replay(*options); }};
}

}  // namespace quorvel::command
