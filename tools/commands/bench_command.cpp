// SPDX-License-Identifier: Apache-2.0
#include "commands/bench_command.h"

#include <cmath>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "commands/bench_run.h"
#include "commands/exit_code.h"
#include "kit/account/text_format.h"
#include "kit/input/input_error.h"
#include "kit/input/mode_name.h"
#include "kit/input/size_text.h"
#include "kit/report/report_json.h"
#include "ruler/ruler.h"

namespace quorvel::command {

using namespace kit;

namespace {

constexpr double kLongestRun = 3600.0;  // s a picture size

struct BenchOptions {
    std::vector<std::string> sizes;
    std::string mode = "kiosk";
    double seconds = 2.0;
    bool json = false;
};

/// The results and the settings of a run.
struct BenchReport {
    std::string version;
    ProductType mode = KIOSK;
    double seconds = 0.0;
    std::vector<BenchRow> rows;
};

std::vector<cv::Size> usualSizes(ProductType mode) {
    std::vector<cv::Size> sizes{{640, 480}, {1280, 720}, {1920, 1080}};
    // The fit on every frame needs more than 4000 pixels of the surface in the small picture; 320 x 240 has fewer.
    if (mode != GROUND_TRACKING) {
        sizes.insert(sizes.begin(), cv::Size(320, 240));
    }
    return sizes;
}

/// Checked before the first size is measured.
std::vector<cv::Size> chosenSizes(const BenchOptions& options, ProductType mode) {
    if (options.sizes.empty()) {
        return usualSizes(mode);
    }
    std::vector<cv::Size> sizes;
    for (const std::string& text : options.sizes) {
        sizes.push_back(parseSize(text));
    }
    return sizes;
}

double chosenSeconds(const BenchOptions& options) {
    if (!(options.seconds > 0.0) || options.seconds > kLongestRun) {
        throw InputError("--seconds: give more than 0 and at most " + fixed(kLongestRun, 0) +
                         " seconds a picture size");
    }
    return options.seconds;
}

double framesPerSecond(const BenchRow& row) {
    return 1000.0 / row.bothMilliseconds;
}

std::string benchTable(const BenchReport& report) {
    constexpr std::size_t kColumn = 12;
    std::vector<std::pair<std::string, std::string>> rows{
        {"picture", rightAligned("frames", 8) + rightAligned("intake ms", kColumn) +
                        rightAligned("measure ms", kColumn) + rightAligned("both ms", kColumn) +
                        rightAligned("frames/s", kColumn)}};
    for (const BenchRow& row : report.rows) {
        rows.emplace_back(std::to_string(row.size.width) + " x " + std::to_string(row.size.height),
                          rightAligned(std::to_string(row.frames), 8) +
                              rightAligned(fixed(row.intakeMilliseconds, 2), kColumn) +
                              rightAligned(fixed(row.measureMilliseconds, 2), kColumn) +
                              rightAligned(fixed(row.bothMilliseconds, 2), kColumn) +
                              rightAligned(fixed(framesPerSecond(row), 1), kColumn));
    }
    return "A simulated parcel (" + modeName(report.mode) + "): medians of " + fixed(report.seconds, 1) +
           " s a picture size\n\n" + tableText(rows);
}

std::string benchJson(const BenchReport& report) {
    Json rows = Json::array();
    for (const BenchRow& row : report.rows) {
        rows.push_back({{"width", row.size.width},
                        {"height", row.size.height},
                        {"frames", row.frames},
                        {"intake_ms", row.intakeMilliseconds},
                        {"measure_ms", row.measureMilliseconds},
                        {"both_ms", row.bothMilliseconds},
                        {"frames_per_second", framesPerSecond(row)}});
    }
    return documentText({{"version", report.version},
                         {"mode", modeName(report.mode)},
                         {"seconds", report.seconds},
                         {"opencv_threads", cv::getNumThreads()},
                         {"rows", rows}});
}

int bench(const BenchOptions& options) {
    BenchReport report;
    report.version = internal::Ruler::version();
    report.mode = modeFromName(options.mode);
    report.seconds = chosenSeconds(options);
    for (const cv::Size& size : chosenSizes(options, report.mode)) {
        report.rows.push_back(runBench(size, report.mode, report.seconds));
    }
    std::cout << (options.json ? benchJson(report) : benchTable(report));
    return kSuccess;
}

}  // namespace

Subcommand addBenchCommand(CLI::App& app) {
    auto options = std::make_shared<BenchOptions>();
    CLI::App* parser = app.add_subcommand("bench", "Tell how fast this machine measures a simulated parcel");
    parser
        ->add_option("--size", options->sizes,
                     "size of the picture, pixels; may be given several times (default 320x240, except in "
                     "ground-tracking, 640x480, 1280x720 and 1920x1080)")
        ->type_name("WxH")
        ->allow_extra_args(false);
    parser->add_option("--mode", options->mode, "kiosk (default), ground-growing, or ground-tracking")
        ->type_name("MODE");
    parser->add_option("--seconds", options->seconds, "how long each size is measured, s (default 2)")->type_name("S");
    parser->add_flag("--json", options->json, "one JSON object instead of the table");
    parser->footer(
        "Examples:\n"
        "  quorvel bench --size 640x480\n"
        "  quorvel bench --size 320x240 --mode ground-growing --seconds 0.5 --json");
    return {parser, [options] { return bench(*options); }};
}

}  // namespace quorvel::command
