// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#ifndef _WIN32
#include <sys/stat.h>
#endif

#include "kit/measure/median.h"
#include "simulated_folder.h"

namespace quorvel::command {

using namespace kit;
namespace {

using Json = nlohmann::json;
using Names = std::vector<std::string>;

const Names kStages{"ground removal", "height cut", "object component", "object window", "surface filter", "footprint"};

Names joined(Names first, const Names& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// \return where the timing begins in a report for people; npos when there is none
std::size_t timingStart(const std::string& report) {
    return report.find("\n  Timing: ");
}

/// Reads the rows of the timing: names in their order; every value must be a positive number of ms.
Names timedNames(const CommandRun& run) {
    const std::size_t start = timingStart(run.output);
    if (start == std::string::npos) {
        ADD_FAILURE() << "no timing in\n" << run.text();
        return {};
    }
    Names names;
    std::istringstream lines(run.output.substr(start + 1));
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line.rfind("  Timing: medians of 20 repetitions on this frame, after a warm-up", 0), 0U) << line;
    while (std::getline(lines, line)) {
        if (line.empty()) {
            continue;
        }
        const std::size_t nameEnd = line.find("   ", 2);
        const std::string value = line.substr(nameEnd);
        std::size_t used = 0;
        const double milliseconds = std::stod(value, &used);
        EXPECT_TRUE(std::isfinite(milliseconds) && milliseconds > 0.0) << line;
        EXPECT_EQ(value.substr(used), " ms") << line;
        names.push_back(line.substr(2, nameEnd - 2));
    }
    return names;
}

/// Checks that the parts named have a positive duration and all others none.
void expectTimed(const Json& timing, const Names& present) {
    const Names keys{"reading",         "calibrating",  "frameIntake",   "planeRefit", "groundRemoval", "heightCut",
                     "objectComponent", "objectWindow", "surfaceFilter", "footprint",  "measureOnce"};
    ASSERT_TRUE(timing.is_object()) << timing;
    EXPECT_EQ(timing.size(), keys.size() + 1) << timing;
    EXPECT_EQ(timing["repetitions"], 20);
    for (const std::string& key : keys) {
        ASSERT_TRUE(timing.contains(key)) << key;
        if (std::find(present.begin(), present.end(), key) == present.end()) {
            EXPECT_TRUE(timing[key].is_null()) << key << " " << timing[key];
            continue;
        }
        ASSERT_TRUE(timing[key].is_number()) << key << " " << timing[key];
        EXPECT_TRUE(std::isfinite(timing[key].get<double>()) && timing[key].get<double>() > 0.0) << key;
    }
}

/// The report but for what differs from run to run.
Json withoutDurations(Json report) {
    report.erase("timings_ms");
    report.erase("timing");
    return report;
}

TEST(MeasureTiming, RowsFollowTheRun) {
    const SimulatedFolder folder("parcel");
    for (const char* mode : {"kiosk", "ground-growing"}) {
        const CommandRun run = folder.calibrateAndMeasure(std::string("--timing --mode ") + mode);
        ASSERT_EQ(run.exitCode, 0) << run.text();
        EXPECT_EQ(timedNames(run), joined(joined({"reading", "calibrating", "frame intake"}, kStages), {"measureOnce"}))
            << mode;
    }
    const CommandRun stored = folder.measure("--timing --mode kiosk");
    ASSERT_EQ(stored.exitCode, 0) << stored.text();
    EXPECT_EQ(timedNames(stored), joined(joined({"reading", "frame intake"}, kStages), {"measureOnce"}));
}

TEST(MeasureTiming, GroundTrackingNamesItsFit) {
    const SimulatedFolder folder("parcel");
    const CommandRun run = folder.measure("--timing --mode ground-tracking");
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(timedNames(run), joined(joined({"reading", "frame intake", "plane re-fit"}, kStages), {"measureOnce"}));
    EXPECT_NE(run.output.find("; the frame intake includes the plane re-fit\n"), std::string::npos) << run.text();
}

TEST(MeasureTiming, JsonHasEveryPart) {
    const SimulatedFolder folder("parcel");
    const Names measured{"groundRemoval", "heightCut", "objectComponent", "objectWindow", "surfaceFilter", "footprint"};
    const Json kiosk = folder.calibrateAndMeasure("--timing --json --mode kiosk").json();
    expectTimed(kiosk["timing"], joined(joined({"reading", "calibrating", "frameIntake"}, measured), {"measureOnce"}));
    const Json tracking = folder.measure("--timing --json --mode ground-tracking").json();
    expectTimed(tracking["timing"],
                joined(joined({"reading", "frameIntake", "planeRefit"}, measured), {"measureOnce"}));
}

TEST(MeasureTiming, LeavesTheReadingAsItIs) {
    const SimulatedFolder folder("parcel");
    ASSERT_EQ(folder.calibrate("--mode kiosk").exitCode, 0);
    for (const char* mode : {"kiosk", "ground-growing", "ground-tracking"}) {
        const std::string options = std::string("--json --mode ") + mode;
        const CommandRun plain = folder.measure(options);
        const CommandRun timed = folder.measure("--timing " + options);
        ASSERT_EQ(plain.exitCode, 0) << plain.text();
        ASSERT_EQ(timed.exitCode, 0) << timed.text();
        EXPECT_TRUE(plain.json()["timing"].is_null()) << plain.text();
        EXPECT_EQ(withoutDurations(timed.json()), withoutDurations(plain.json())) << mode;
        EXPECT_EQ(timed.errors, plain.errors) << mode;
    }
    const CommandRun table = folder.measure("--mode kiosk");
    EXPECT_EQ(timingStart(table.output), std::string::npos) << table.text();
}

TEST(MeasureTiming, LeavesTheCalibrationAsItIs) {
    const SimulatedFolder folder("parcel");
    for (const char* mode : {"kiosk", "ground-growing"}) {
        const std::string options = std::string("--json --mode ") + mode;
        const CommandRun plain = folder.calibrateAndMeasure(options);
        const std::string plane = folder.read("param/cal.txt");
        const CommandRun timed = folder.calibrateAndMeasure("--timing " + options);
        EXPECT_EQ(withoutDurations(timed.json()), withoutDurations(plain.json())) << mode;
        EXPECT_EQ(folder.read("param/cal.txt"), plane) << mode;
    }
}

TEST(MeasureTiming, PrintsNoLineOfTheRepetitions) {
    const SimulatedFolder folder("parcel");
    ASSERT_EQ(folder.calibrate("--mode kiosk").exitCode, 0);
    const CommandRun plain = folder.calibrateAndMeasure("--mode kiosk --debug");
    const CommandRun timed = folder.calibrateAndMeasure("--mode kiosk --debug --timing");
    EXPECT_NE(plain.errors, "") << plain.text();
    EXPECT_EQ(timed.errors, plain.errors);
}

TEST(MeasureTiming, EndsWhereTheMeasurementDid) {
    const SimulatedFolder folder("parcel");
    ASSERT_EQ(folder.calibrate("--mode kiosk").exitCode, 0);
    const std::string empty = "measure --camera camera.json --depth empty_depth.png --timing --mode kiosk";
    const CommandRun run = folder.run(empty);
    EXPECT_EQ(run.exitCode, 1) << run.text();
    EXPECT_EQ(timedNames(run),
              (Names{"reading", "frame intake", "ground removal", "height cut", "object component", "measureOnce"}));
    expectTimed(folder.run(empty + " --json").json()["timing"],
                {"reading", "frameIntake", "groundRemoval", "heightCut", "objectComponent", "measureOnce"});
}

TEST(MeasureTiming, EndsWithoutAPlane) {
    const SimulatedFolder folder("parcel");
    const CommandRun run = folder.measure("--timing --mode kiosk");
    EXPECT_EQ(run.exitCode, 1) << run.text();
    EXPECT_EQ(timedNames(run), Names{"reading"});

    cv::imwrite(folder.file("nothing.png"), cv::Mat::zeros(480, 640, CV_16UC1));
    const CommandRun failed = folder.measure("--empty-depth nothing.png --timing --mode kiosk");
    EXPECT_EQ(failed.exitCode, 1) << failed.text();
    EXPECT_EQ(timedNames(failed), (Names{"reading", "calibrating"}));
    const CommandRun tracking = folder.run(
        "measure --camera camera.json --depth nothing.png --timing "
        "--mode ground-tracking");
    EXPECT_EQ(tracking.exitCode, 1) << tracking.text();
    EXPECT_EQ(timedNames(tracking), (Names{"reading", "frame intake", "plane re-fit"}));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "param")) << "no file may come from the repetitions";
}

#ifndef _WIN32
TEST(MeasureTiming, RefusesWhatCannotBeReadAgain) {
    const SimulatedFolder folder("parcel");
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    for (const char* files : {"--camera camera.json --depth pipe", "--camera pipe --depth depth.png",
                              "--camera camera.json --depth depth.png --color pipe",
                              "--camera camera.json --depth depth.png --empty-depth pipe",
                              "--camera camera.json --depth depth.png --params pipe"}) {
        const CommandRun run = folder.run(std::string("measure --timing --mode kiosk ") + files);
        EXPECT_EQ(run.exitCode, 2) << run.text();
        EXPECT_EQ(run.output, "") << run.text();
        EXPECT_EQ(run.errorLines(), 1) << run.text();
        EXPECT_NE(run.errors.find("pipe: --timing reads it several times"), std::string::npos) << run.text();
    }
}
#endif

TEST(Median, IsTheMiddleOne) {
    EXPECT_EQ(median({3.0}), 3.0);
    EXPECT_EQ(median({9.0, 1.0, 5.0}), 5.0);
    EXPECT_EQ(median({4.0, 1.0, 3.0, 2.0}), 3.0);
}

}  // namespace
}  // namespace quorvel::command
