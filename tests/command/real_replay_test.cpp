// SPDX-License-Identifier: Apache-2.0
// Captures of real frames, when their folder exists: a replay gives the sizes that were captured.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "real_frames.h"

namespace quorvel::command {
namespace {

using ::testing::HasSubstr;

class RealReplay : public RealFrames {
protected:
    std::string frame(const std::string& name) const {
        return " --camera " + quoted("overhead_single/camera.json") + " --color " +
               quoted("overhead_single/" + name + "_color.png") + " --depth " +
               quoted("overhead_single/" + name + "_depth.png");
    }

    /// Captures the five frames, which makes five folders below log.
    void captureAll(const std::string& options) const {
        for (const char* name : {"00", "01", "02", "04", "07"}) {
            const CommandRun run = folder_.run("capture" + frame(name) + kSettings + options);
            ASSERT_EQ(run.exitCode, 0) << run.text();
        }
    }

    static constexpr const char* kSettings = " --area 0.6 --filter-weight -1 ";
    static constexpr const char* kNoneChanged = "5 captures: 5 measured, 0 empty, 0 unreadable; 0 changed";
};

TEST_F(RealReplay, AStoredPlaneGivesTheVerySameReadings) {
    const CommandRun calibrated =
        folder_.run("calibrate" + frame("composed_empty") + " --mode kiosk --calibration-area 0.3");
    ASSERT_EQ(calibrated.exitCode, 0) << calibrated.text();
    captureAll("--mode kiosk");
    const CommandRun run = folder_.run(std::string("replay log --tolerance 0 --jobs 2") + kSettings);
    EXPECT_EQ(run.exitCode, 0) << run.text();
    EXPECT_THAT(run.output, HasSubstr(kNoneChanged)) << run.text();
    EXPECT_THAT(run.output, HasSubstr("largest change 0.000 mm")) << run.text();
}

TEST_F(RealReplay, APlaneFittedInTheSameRunIsThatOfItsFile) {
    captureAll("--mode kiosk --calibration-area 0.3 --empty-depth " +
               quoted("overhead_single/composed_empty_depth.png"));
    const CommandRun run = folder_.run(std::string("replay log --tolerance 0") + kSettings);
    EXPECT_EQ(run.exitCode, 0) << run.text();
    EXPECT_THAT(run.output, HasSubstr(kNoneChanged)) << run.text();
}

TEST_F(RealReplay, EachModeReplaysInItself) {
    ASSERT_EQ(
        folder_.run("calibrate" + frame("composed_empty") + " --mode ground-growing --calibration-area 0.3").exitCode,
        0);
    captureAll("--mode ground-growing");
    const CommandRun run = folder_.run(std::string("replay log --mode ground-growing --tolerance 0") + kSettings);
    EXPECT_EQ(run.exitCode, 0) << run.text();
    // The clip of frame 01 is too flat for this mode's least height: what is found instead misses the area.
    EXPECT_THAT(run.output, HasSubstr("5 captures: 4 measured, 1 empty, 0 unreadable; 0 changed")) << run.text();
    EXPECT_THAT(run.output, HasSubstr("largest change 0.000 mm")) << run.text();
}

}  // namespace
}  // namespace quorvel::command
