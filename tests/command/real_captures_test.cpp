// SPDX-License-Identifier: Apache-2.0
// Real depth-camera captures, when their folder exists. The library's tests check the sizes; these tests check that the
// command handles every frame and gives a reason when nothing is measured.

#include <gtest/gtest.h>

#include "real_frames.h"

namespace quorvel::command {
namespace {

using Json = nlohmann::json;

class RealCaptures : public RealFrames {
protected:
    /// Measures with JSON output; checks that the exit code, the status and the reason go together.
    Json measure(const std::string& arguments) const {
        const CommandRun run = folder_.run("measure --json " + arguments);
        const Json report = run.json();
        if (!report.is_object()) {
            ADD_FAILURE() << run.text();
            return {};
        }
        EXPECT_EQ(run.exitCode, report["status"] == "measured" ? 0 : 1) << run.text();
        EXPECT_EQ(report["reason"].is_null(), report["status"] == "measured") << run.text();
        return report;
    }
};

class OverheadSingle : public RealCaptures {
protected:
    std::string frame(const std::string& name) const {
        return "--camera " + quoted("overhead_single/camera.json") + " --color " +
               quoted("overhead_single/" + name + "_color.png") + " --depth " +
               quoted("overhead_single/" + name + "_depth.png") + " --area 0.6 ";
    }
    std::string empty() const {
        return "--empty-color " + quoted("overhead_single/composed_empty_color.png") + " --empty-depth " +
               quoted("overhead_single/composed_empty_depth.png") + " ";
    }
};

TEST_F(OverheadSingle, KioskFindsEachObjectWithANegativeWeight) {
    for (const char* name : {"00", "01", "02", "04", "07"}) {
        const Json report = measure(frame(name) + empty() + "--mode kiosk --filter-weight -1");
        EXPECT_EQ(report["status"], "measured") << name << "\n" << report.dump(2);
        EXPECT_EQ(report["on_target"], true) << name;
        EXPECT_NEAR(report["plane"]["offset_mm"].get<double>(), 713.0, 5.0) << name;
        EXPECT_NEAR(report["plane"]["tilt_deg"].get<double>(), 12.7, 1.0) << name;
    }
}

TEST_F(OverheadSingle, WithoutANegativeWeightTheCommandAdvisesOne) {
    for (const char* name : {"00", "01", "02", "04", "07"}) {
        const Json report = measure(frame(name) + empty() + "--mode kiosk");
        ASSERT_FALSE(report["notes"].empty()) << name << "\n" << report.dump(2);
        EXPECT_NE(report["notes"][0].get<std::string>().find("--filter-weight -1"), std::string::npos) << name;
    }
}

TEST_F(OverheadSingle, GroundGrowingExplainsTheFrameWhoseObjectIsTooFlat) {
    // The clip of frame 01 hardly reaches 10 mm, so the frame's other raised thing is taken, far from the area.
    const Json report = measure(frame("01") + empty() + "--mode ground-growing --filter-weight -1");
    EXPECT_EQ(report["reason"]["code"], "misses_area") << report.dump(2);
}

TEST_F(RealCaptures, BinWithThinThingsIsExplained) {
    // From obliquely above, the walls join what lies in the bin to one region that leaves the picture; only in bin0,
    // above 10 mm, does a thing stand apart.
    const struct {
        const char* name;
        const char* mode;
        const char* status;
    } cases[] = {{"bin0", "kiosk", "out_of_view"},
                 {"bin0", "ground-growing", "measured"},
                 {"tote", "kiosk", "out_of_view"},
                 {"tote", "ground-growing", "out_of_view"}};
    for (const auto& [name, mode, status] : cases) {
        const std::string prefix = std::string("bin_with_empty/") + name;
        const std::string camera = quoted(std::string("bin_with_empty/camera_") + name + ".json");
        const Json report =
            measure("--camera " + camera + " --color " + quoted(prefix + "_objects_color.png") + " --depth " +
                    quoted(prefix + "_objects_depth.png") + " --empty-depth " + quoted(prefix + "_empty_depth.png") +
                    " --filter-weight -1 --area 1 --mode " + mode);
        EXPECT_EQ(report["status"], status) << name << " " << mode << "\n" << report.dump(2);
        EXPECT_NEAR(report["plane"]["tilt_deg"].get<double>(), 34.0, 1.5) << name << " " << mode;
        if (report["status"] == "out_of_view") {
            EXPECT_GT(report["reason"]["numbers"]["footprint_length_mm"].get<double>(), 300.0)
                << "the message names the joined footprint\n"
                << report.dump(2);
        }
    }
}

TEST_F(RealCaptures, TableWithoutEmptyFrameIsExplained) {
    const std::string frame = "--camera " + quoted("hammer_box/camera.json") + " --color " +
                              quoted("hammer_box/00_color.png") + " --depth " + quoted("hammer_box/00_depth.png");
    EXPECT_EQ(measure(frame + " --mode kiosk")["reason"]["code"], "no_plane");
    // Carton, mallet and hand touch one another and reach the picture's edge.
    const Json tracked = measure(frame + " --mode ground-tracking --filter-weight -1 --area 1");
    EXPECT_EQ(tracked["status"], "out_of_view") << tracked.dump(2);
    EXPECT_NEAR(tracked["plane"]["offset_mm"].get<double>(), 449.0, 4.0);
}

}  // namespace
}  // namespace quorvel::command
