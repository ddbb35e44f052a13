// SPDX-License-Identifier: Apache-2.0
// Batches made of real captures, when their folder exists. Each capture is a single frame. The other frames of its
// batch are the same frame with the noise and the missing pixels that a depth camera adds from frame to frame.

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "real_frames.h"

namespace quorvel::command {
namespace {

using Json = nlohmann::json;

/// Standard deviation of the added noise, mm, and share of the pixels that lose their depth.
constexpr double kNoise = 1.0;
constexpr double kDropout = 0.005;

cv::Mat jittered(const cv::Mat& depth, std::uint64_t seed) {
    cv::RNG random(seed);
    cv::Mat_<std::uint16_t> result = depth.clone();
    for (std::uint16_t& value : result) {
        const int shifted = value + cvRound(random.gaussian(kNoise));
        const bool lost = random.uniform(0.0, 1.0) < kDropout;
        value = value == 0 || lost ? std::uint16_t{0} : static_cast<std::uint16_t>(shifted);
    }
    return result;
}

class RealBatches : public RealFrames {
protected:
    /// Writes a frame of the object with noise of its own, called object_seed.png.
    /// \return the file's name
    std::string writeJittered(const std::string& object, unsigned seed) const {
        const cv::Mat depth =
            cv::imread((data_ / "overhead_single" / (object + "_depth.png")).string(), cv::IMREAD_UNCHANGED);
        std::string name = object + "_" + std::to_string(seed) + ".png";
        EXPECT_TRUE(cv::imwrite(folder_.file(name), jittered(depth, seed)));
        return name;
    }

    CommandRun measure(const std::string& frames, const std::string& tolerance) const {
        return folder_.run(
            "measure --json --mode kiosk --filter-weight -1 --area 0.6 --calibration-area 0.3 --camera " +
            quoted("overhead_single/camera.json") + " --empty-depth " +
            quoted("overhead_single/composed_empty_depth.png") + " --tolerance " + tolerance + " --depth " + frames);
    }
};

/// Length, width and height, mm. The noise alone moves the outlines of these small, irregular things by up to 9, 5 and
/// 1 mm.
constexpr const char* kTolerance = "12,8,3";

TEST_F(RealBatches, FramesOfOneObjectAgree) {
    for (const std::string object : {"00", "02", "04", "07"}) {
        const std::string frames =
            writeJittered(object, 1) + " " + writeJittered(object, 2) + " " + writeJittered(object, 3);
        const CommandRun run = measure(frames, kTolerance);
        EXPECT_EQ(run.exitCode, 0) << run.text();
        const Json report = run.json();
        ASSERT_TRUE(report.is_object()) << run.text();
        EXPECT_EQ(report["status"], "agreed") << object << " " << report["reason"];
        EXPECT_EQ(report["frames"].size(), 3U) << object;
        EXPECT_EQ(report["on_target"], true) << object;
        EXPECT_GT(report["spread_mm"]["length"], 0.0) << "the frames must differ: " << object;
    }
}

TEST_F(RealBatches, TwoObjectsAreRefused) {
    const struct {
        const char* first;
        const char* second;
        const char* dimension;
    } cases[] = {{"00", "02", "height"}, {"07", "00", "height"}, {"02", "07", "height"}};
    for (const auto& [first, second, dimension] : cases) {
        const std::string a = writeJittered(first, 1);
        const std::string b = writeJittered(first, 2);
        const std::string c = writeJittered(second, 3);
        const CommandRun run = measure(a + " " + b + " " + c, kTolerance);
        EXPECT_EQ(run.exitCode, 1) << run.text();
        const Json reason = run.json()["reason"];
        EXPECT_EQ(reason["code"], "frames_disagree") << run.text();
        EXPECT_EQ(reason["dimension"], dimension) << reason;
        EXPECT_EQ(reason["message"].get<std::string>().rfind(a + " and " + c + " disagree", 0), 0U) << reason;
    }
}

TEST_F(RealBatches, TwoObjectsOfOneHeightAreRefusedForTheirWidth) {
    const std::string a = writeJittered("07", 1);
    const std::string b = writeJittered("04", 2);
    const CommandRun run = measure(a + " " + b, "12,8,5");
    EXPECT_EQ(run.exitCode, 1) << run.text();
    EXPECT_EQ(run.json()["reason"]["dimension"], "width") << run.text();
}

TEST_F(RealBatches, OutlineThatSwingsFromFrameToFrameIsRefusedRatherThanAveraged) {
    // The clip of frame 01 hardly rises above the noise, and its bounding rectangle turns with what is seen of it.
    const std::string frames = writeJittered("01", 1) + " " + writeJittered("01", 2) + " " + writeJittered("01", 3);
    const CommandRun run = measure(frames, kTolerance);
    EXPECT_EQ(run.exitCode, 1) << run.text();
    EXPECT_EQ(run.json()["reason"]["code"], "frames_disagree") << run.text();
    EXPECT_NE(run.json()["reason"]["dimension"], "height") << run.text();
}

}  // namespace
}  // namespace quorvel::command
