// SPDX-License-Identifier: Apache-2.0
#include "kit/replay/replay.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "capture_folder.h"
#include "command_run.h"
#include "sim/presets.h"
#include "sim/render.h"
#include "simulated_folder.h"
#include "support/captured_output.h"
#include "support/same_bits.h"
#include "support/working_directory.h"

namespace quorvel::command {

using namespace kit;
namespace {

namespace fs = std::filesystem;

class Replay : public ::testing::Test {
protected:
    static sim::Scene parcel() { return boxScene(20.0, -10.0, 200.0, 120.0, 90.0); }

    ReplayOutcome replay(const ReplaySettings& settings) const { return replayCapture(capture_.string(), settings); }
    ReplayOutcome replay(const CaptureSetup& setup) const { return replay(settingsOf(setup)); }

    static ReplaySettings settingsOf(const CaptureSetup& setup) {
        ReplaySettings settings;
        settings.measurement.mode = setup.mode;
        settings.measurement.area = setup.area;
        settings.measurement.filterWeight = setup.filterWeight;
        return settings;
    }

    /// Replaces a line of para.txt, counted from 1.
    void editParameters(int number, const std::string& line) const {
        std::string text;
        {
            std::ifstream file(capture_ / "para.txt");
            int at = 0;
            for (std::string kept; std::getline(file, kept);) {
                text += (++at == number ? line : kept) + "\n";
            }
        }
        std::ofstream(capture_ / "para.txt") << text;
    }

    TemporaryFolder folder_;
    fs::path capture_ = folder_.path() / "capture";
};

TEST_F(Replay, APlaneOfSixDecimalsGivesTheVerySameReading) {
    for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING}) {
        for (const char* preset : {"parcel", "small-box", "clutter", "tilted-camera", "cylinder"}) {
            SCOPED_TRACE(std::string(preset) + ", mode " + std::to_string(mode));
            CaptureSetup setup;
            setup.mode = mode;
            setup.filterWeight = std::string(preset) == "tilted-camera" ? -1.0F : 0.0F;
            fs::remove_all(capture_);
            const Quorvel ruler = captureScene(sim::preset(preset), setup, capture_);
            ASSERT_FALSE(ruler.result.corners.empty());
            const ReplayOutcome outcome = replay(setup);
            EXPECT_EQ(outcome.status, ReplayStatus::Same) << outcome.note;
            EXPECT_EQ(outcome.change, 0.0);
            EXPECT_EQ(outcome.replayed.inView, ruler.result.inView);
            EXPECT_EQ(outcome.replayed.height, ruler.result.height);
            ASSERT_EQ(outcome.replayed.corners.size(), 8U);
            for (std::size_t i = 0; i < 8; ++i) {
                EXPECT_EQ(outcome.replayed.corners[i], ruler.result.corners[i]) << "corner " << i;
            }
        }
    }
}

TEST_F(Replay, PlaneOfMoreThanSixDecimals) {
    // The rounding of the normal moves a point's height by less than a thousandth of a millimetre. Depth comes in whole
    // millimetres, so points stand on the thresholds, and this little takes a pixel at an edge in or out: a side, which
    // has two edges, may change by the width of two pixels on the plane. Half a pixel is usual.
    constexpr float kEdges = 2.0F;
    CaptureSetup setup;
    setup.roundPlane = false;
    for (const char* preset : {"parcel", "small-box", "clutter", "flat-box", "tall-box", "diagonal"}) {
        fs::remove_all(capture_);
        const Quorvel ruler = captureScene(sim::preset(preset), setup, capture_);
        ReplaySettings settings = settingsOf(setup);
        settings.tolerance = static_cast<double>(kEdges * ruler.refPlaneOffset / ruler.fx);
        const ReplayOutcome outcome = replay(settings);
        EXPECT_EQ(outcome.status, ReplayStatus::Same) << preset << " changed by " << outcome.change << " mm";
    }
}

TEST_F(Replay, ToleranceIsTheLargestDifferenceThatPasses) {
    captureScene(parcel(), {}, capture_);
    const ReplayOutcome exact = replay(CaptureSetup());
    ASSERT_EQ(exact.status, ReplayStatus::Same);
    const auto& now = exact.replayed;
    const auto record = [&](float width, float length, float height) {
        std::ofstream file(capture_ / "res.txt");
        file << std::fixed << width << '\n' << length << '\n' << height << '\n';
        for (const cv::Point2f& corner : exact.recorded.corners) {
            file << corner.x << ' ' << corner.y << '\n';
        }
    };
    ReplaySettings settings = settingsOf({});
    settings.tolerance = 0.75;
    const float passes = 0.75F - 0.0001F;
    const float fails = 0.75F + 0.0001F;
    for (const auto& [delta, status] :
         {std::pair(passes, ReplayStatus::Same), std::pair(fails, ReplayStatus::Changed),
          std::pair(-passes, ReplayStatus::Same), std::pair(-fails, ReplayStatus::Changed)}) {
        record(now.width + delta, now.length, now.height);
        EXPECT_EQ(replay(settings).status, status) << "width " << delta;
        record(now.width, now.length + delta, now.height);
        EXPECT_EQ(replay(settings).status, status) << "length " << delta;
        record(now.width, now.length, now.height + delta);
        EXPECT_EQ(replay(settings).status, status) << "height " << delta;
    }
    record(now.width, std::numeric_limits<float>::quiet_NaN(), now.height);
    EXPECT_EQ(replay(settings).status, ReplayStatus::Changed) << "a recorded size of NaN";
}

TEST_F(Replay, AMovedBoxShowsInTheShift) {
    captureScene(parcel(), {}, capture_);
    const ReplayOutcome exact = replay(CaptureSetup());
    EXPECT_NEAR(exact.shift, 0.0, 1e-4);
    std::ofstream file(capture_ / "res.txt");
    file << std::fixed << exact.recorded.width << '\n'
         << exact.recorded.length << '\n'
         << exact.recorded.height << '\n';
    for (const cv::Point2f& corner : exact.recorded.corners) {
        file << corner.x + 3.0F << ' ' << corner.y - 4.0F << '\n';
    }
    file.close();
    EXPECT_NEAR(replay(CaptureSetup()).shift, 5.0, 1e-3);
}

TEST_F(Replay, AnObjectThatIsLostOrFoundIsAChange) {
    captureScene(parcel(), {}, capture_);
    ReplaySettings elsewhere = settingsOf({});
    elsewhere.tolerance = 1e9;
    elsewhere.measurement.area = cv::Rect(0, 0, 5, 5);
    const ReplayOutcome lost = replay(elsewhere);
    EXPECT_EQ(lost.status, ReplayStatus::Changed);
    EXPECT_EQ(lost.note, "nothing is measured now");
    std::ofstream(capture_ / "res.txt") << "0.000000\n0.000000\n0.000000\n";
    const ReplayOutcome found = replay(CaptureSetup());
    EXPECT_EQ(found.status, ReplayStatus::Changed);
    EXPECT_EQ(found.note, "nothing was recorded");
}

TEST_F(Replay, NothingThenAndNothingNowIsEmpty) {
    sim::Scene scene = parcel();
    scene.boxes.clear();
    captureScene(scene, {}, capture_);
    EXPECT_EQ(replay(CaptureSetup()).status, ReplayStatus::Empty);
}

TEST_F(Replay, ACaptureBeforeAnyFrameIsEmpty) {
    Quorvel ruler(600.0F, 600.0F, 320.0F, 240.0F, 640, 480, false, "");
    captureTo(ruler, capture_);
    const ReplayOutcome outcome = replay(CaptureSetup());
    EXPECT_EQ(outcome.status, ReplayStatus::Empty);
    EXPECT_EQ(outcome.note, "captured before any frame");
}

TEST_F(Replay, ACaptureWithoutAPlaneMeasuresNothing) {
    captureScene(parcel(), {}, capture_);
    for (int line = 9; line <= 12; ++line) {
        editParameters(line, "0.000000");
    }
    EXPECT_EQ(replay(CaptureSetup()).note, "nothing is measured now");
}

TEST_F(Replay, AnUnreadableCaptureIsAnOutcome) {
    captureScene(parcel(), {}, capture_);
    fs::remove(capture_ / "res.txt");
    const ReplayOutcome outcome = replay(CaptureSetup());
    EXPECT_EQ(outcome.status, ReplayStatus::Unreadable);
    EXPECT_EQ(outcome.note, "res.txt: there is no such readable file; copy the whole capture folder");
}

TEST_F(Replay, ABatchIsComparedWithItsLastFrame) {
    const sim::Scene scene = sim::preset("parcel");
    Quorvel ruler = readyRuler(scene, {});
    std::vector<cv::Mat> colors;
    std::vector<cv::Mat> depths;
    for (std::uint32_t i = 0; i < 4; ++i) {
        const sim::Frame frame = sim::render(scene, i);
        colors.push_back(frame.color);
        depths.push_back(frame.depth);
    }
    ASSERT_TRUE(ruler.getCameraMultipleFrame(colors, depths));
    ASSERT_EQ(ruler.measureMultiple(5.0F, 5.0F, 5.0F), 0);
    captureTo(ruler, capture_);
    ReplaySettings settings = settingsOf({});
    settings.tolerance = 5.0;
    const ReplayOutcome outcome = replay(settings);
    EXPECT_EQ(outcome.status, ReplayStatus::Same);
    EXPECT_LE(outcome.change, 5.0);
    EXPECT_NEAR(outcome.shift, 0.0, 1e-3) << "the corners are the last frame's";
}

TEST_F(Replay, AnotherDownScaleIsKept) {
    Quorvel ruler = readyRuler(parcel(), {});
    ruler.downScale = 2;
    ruler.fxSmall = ruler.fx / 2.0F;
    ruler.fySmall = ruler.fy / 2.0F;
    ruler.cxSmall = ruler.cx / 2.0F;
    ruler.cySmall = ruler.cy / 2.0F;
    ruler.invFxSmall = ruler.invFx * 2.0F;
    ruler.invFySmall = ruler.invFy * 2.0F;
    const float edge = 50.0F / ruler.refPlaneOffset * ruler.fxSmall;
    ruler.minObjectPixels = static_cast<int>(edge * edge);
    const sim::Frame frame = sim::render(parcel(), 0);
    ASSERT_TRUE(ruler.getCameraFrame(frame.color, frame.depth));
    ASSERT_EQ(ruler.measureOnce(), 0);
    captureTo(ruler, capture_);
    EXPECT_EQ(replay(CaptureSetup()).change, 0.0);
}

TEST_F(Replay, AReciprocalThatTheHostHadChangedIsKept) {
    Quorvel ruler = readyRuler(parcel(), {});
    ruler.invFx = 0.0017F;
    ruler.invFxSmall = ruler.invFx * 4.0F;
    const sim::Frame frame = sim::render(parcel(), 0);
    ASSERT_TRUE(ruler.getCameraFrame(frame.color, frame.depth));
    ASSERT_EQ(ruler.measureOnce(), 0);
    captureTo(ruler, capture_);
    EXPECT_EQ(replay(CaptureSetup()).change, 0.0);
}

TEST_F(Replay, AsHostIsTheOfflineStart) {
    captureScene(parcel(), {}, capture_);
    ReplaySettings settings;
    settings.asHost = true;
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    const ReplayOutcome outcome = replay(settings);
    MeasureResult expected;
    {
        const test::CapturedOutput silence;
        expected = Quorvel(0.0F, 0.0F, 0.0F, 0.0F, 0, 0, true, "capture").result;
    }
    fs::current_path(before);
    EXPECT_EQ(outcome.replayed.corners, expected.corners);
    // The offline start leaves the detection area empty, and no object meets an empty area.
    EXPECT_TRUE(expected.corners.empty());
    EXPECT_EQ(outcome.status, ReplayStatus::Changed);
}

TEST_F(Replay, TheStoredPlaneOfTheFolderIsNotUsed) {
    captureScene(parcel(), {}, capture_);
    const test::WorkingDirectory work;
    fs::create_directory("param");
    std::ofstream("param/cal.txt") << "0 0 1 500\n";
    EXPECT_EQ(replay(CaptureSetup()).change, 0.0);
}

}  // namespace
}  // namespace quorvel::command
