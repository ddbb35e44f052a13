// SPDX-License-Identifier: Apache-2.0
// `quorvel measure` on batches of frames: what agrees, what is refused, and how both are reported.

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "sim/render.h"
#include "simulated_folder.h"

namespace quorvel::command {
namespace {

using Json = nlohmann::json;

constexpr const char* kBatchCamera = "--intrinsics 600,600,320,240 ";

/// Folder with the plane of boxScene() stored, and frames written by the tests.
class MeasureBatch : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directory(folder_.path() / "param");
        folder_.write("param/cal.txt", "0.000000 0.000000 1.000000 1000.000000\n");
    }

    /// Writes the depth of one frame.
    /// \param noise standard deviation of the depth at 1 m, mm
    void writeFrame(const std::string& name, sim::Scene scene, double noise = 0.0, unsigned frame = 0) const {
        scene.effects.axialNoise = noise;
        ASSERT_TRUE(cv::imwrite(folder_.file(name), sim::renderDepth(scene, frame)));
    }

    /// Writes d0.png, d1.png and d2.png: noisy frames of three boxes that differ a little in every size.
    void writeSimilarFrames() const {
        for (const unsigned i : {0U, 1U, 2U}) {
            writeFrame("d" + std::to_string(i) + ".png", boxScene(0, 0, 200 + 3 * i, 150 + 2 * i, 100 + 2 * i), 1.0, i);
        }
    }

    CommandRun measure(const std::string& options) const { return folder_.run("measure " + (kBatchCamera + options)); }

    /// The JSON report, after a check of the exit code.
    Json report(const std::string& options, int exitCode) const {
        const CommandRun run = measure("--json " + options);
        EXPECT_EQ(run.exitCode, exitCode) << run.text();
        const Json report = run.json();
        if (!report.is_object()) {
            ADD_FAILURE() << "no report\n" << run.text();
            return Json{{"reason", Json::object()}, {"frames", Json::array()}};
        }
        return report;
    }

    /// The reason of a refused batch.
    Json refusal(const std::string& options, const std::string& code, const std::vector<std::string>& words) const {
        const Json refused = report(options, 1);
        const Json reason = refused["reason"];
        if (!reason.is_object() || !reason.contains("message")) {
            ADD_FAILURE() << "no reason in\n" << refused.dump(2);
            return {};
        }
        EXPECT_EQ(reason["code"], code) << reason;
        for (const std::string& word : words) {
            EXPECT_NE(reason["message"].get<std::string>().find(word), std::string::npos)
                << "expected \"" << word << "\" in " << reason["message"];
        }
        return reason;
    }

    TemporaryFolder folder_;
};

float valueOf(const Json& number) {
    return number.is_number() ? number.get<float>() : std::numeric_limits<float>::quiet_NaN();
}

/// The mean as the ruler takes it: summed in float, frame after frame.
float meanOf(const Json& frames, const std::string& key) {
    float sum = 0.0F;
    for (const Json& frame : frames) {
        sum += valueOf(frame[key]);
    }
    return sum / static_cast<float>(frames.size());
}

float spreadOf(const Json& frames, const std::string& key) {
    float largest = 0.0F;
    for (const Json& a : frames) {
        for (const Json& b : frames) {
            largest = std::max(largest, std::fabs(valueOf(a[key]) - valueOf(b[key])));
        }
    }
    return largest;
}

/// All digits of a float, as an option takes it.
std::string digits(float value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    return text;
}

std::string tolerance(float length, float width, float height) {
    return " --tolerance " + digits(length) + "," + digits(width) + "," + digits(height);
}

constexpr const char* kThreeFrames = "--depth d0.png d1.png d2.png ";

TEST_F(MeasureBatch, MeanIsThatOfTheFramesBitForBit) {
    writeSimilarFrames();
    for (const std::string mode : {"--mode kiosk", "--mode ground-tracking"}) {
        const Json batch = report(kThreeFrames + mode + " --tolerance 20,20,20", 0);
        EXPECT_EQ(batch["status"], "agreed") << mode;
        ASSERT_EQ(batch["frames"].size(), 3U) << mode;
        for (const std::string size : {"length", "width", "height"}) {
            const std::string key = size + "_mm";
            EXPECT_EQ(valueOf(batch[key]), meanOf(batch["frames"], key)) << mode << " " << key;
            EXPECT_EQ(valueOf(batch["spread_mm"][size]), spreadOf(batch["frames"], key)) << mode << " " << key;
            EXPECT_GT(valueOf(batch["spread_mm"][size]), 0.0F) << "the frames must differ: " << mode << " " << key;
        }
        EXPECT_EQ(batch["corners"], batch["frames"][2]["corners"]) << mode << ": the corners are the last frame's";
        EXPECT_NEAR(batch["length_mm"].get<double>(), 200.0, 10.0) << mode;
        EXPECT_NEAR(batch["width_mm"].get<double>(), 150.0, 10.0) << mode;
        EXPECT_NEAR(batch["height_mm"].get<double>(), 100.0, 10.0) << mode;
    }
}

TEST_F(MeasureBatch, DifferenceEqualToItsTolerancePassesAndTheNextSmallerToleranceDoesNot) {
    writeSimilarFrames();
    const std::string frames = kThreeFrames + std::string("--mode kiosk");
    const Json spread = report(frames + " --tolerance 20,20,20", 0)["spread_mm"];
    const float length = valueOf(spread["length"]);
    const float width = valueOf(spread["width"]);
    const float height = valueOf(spread["height"]);
    EXPECT_EQ(report(frames + tolerance(length, width, height), 0)["status"], "agreed");
    const auto dimension = [&](const std::string& options) {
        const Json reason = refusal(frames + options, "frames_disagree", {"and the tolerance is"});
        return reason.is_object() ? reason["dimension"].get<std::string>() : "";
    };
    EXPECT_EQ(dimension(tolerance(std::nextafter(length, 0.0F), width, height)), "length");
    EXPECT_EQ(dimension(tolerance(length, std::nextafter(width, 0.0F), height)), "width");
    EXPECT_EQ(dimension(tolerance(length, width, std::nextafter(height, 0.0F))), "height");
}

TEST_F(MeasureBatch, KioskBatchOfOneIsTheSingleShot) {
    writeSimilarFrames();
    const Json single = report("--depth d0.png --mode kiosk", 0);
    const Json batch = report("--depth d0.png --mode kiosk --tolerance 0,0,0", 0);
    EXPECT_EQ(single["status"], "measured");
    EXPECT_EQ(batch["status"], "agreed");
    for (const char* key : {"length_mm", "width_mm", "height_mm", "corners", "plane", "min_height_mm"}) {
        EXPECT_EQ(batch[key], single[key]) << key;
    }
}

TEST_F(MeasureBatch, GroundTrackingBatchLowersNoHeight) {
    writeSimilarFrames();
    const Json single = report("--depth d0.png --mode ground-tracking", 0);
    const Json batch = report("--depth d0.png --mode ground-tracking --tolerance 0,0,0", 0);
    EXPECT_EQ(batch["plane"], single["plane"]);
    // At 900 to 1100 mm a single shot lowers the height by 7 mm.
    EXPECT_NEAR(batch["height_mm"].get<double>() - single["height_mm"].get<double>(), 7.0, 1e-4);
    EXPECT_EQ(batch["frames"][0]["height_mm"], batch["height_mm"]);
}

TEST_F(MeasureBatch, GroundTrackingMeasuresEveryFrameOnThePlaneOfTheFirst) {
    writeFrame("near.png", boxScene(0, 0, 200, 150, 100));
    sim::Scene farther = boxScene(0, 0, 200, 150, 100);
    farther.surface.distance = 1010.0;
    writeFrame("far.png", farther);
    const Json batch = report("--depth near.png far.png --mode ground-tracking --tolerance 50,50,50", 0);
    EXPECT_NEAR(batch["plane"]["offset_mm"].get<double>(), 1000.0, 1.0);
    EXPECT_NEAR(batch["frames"][0]["height_mm"].get<double>() - batch["frames"][1]["height_mm"].get<double>(), 10.0,
                1.0)
        << "the second box stands 10 mm farther away, on a plane that is not its own";
    EXPECT_EQ(valueOf(batch["height_mm"]), meanOf(batch["frames"], "height_mm"));
}

TEST_F(MeasureBatch, MixedScenesAreRefusedNamingThePairAndTheDimension) {
    writeFrame("box.png", boxScene(0, 0, 200, 150, 100));
    writeFrame("higher.png", boxScene(0, 0, 200, 150, 120));
    writeFrame("wider.png", boxScene(0, 0, 200, 180, 100));
    writeFrame("longer.png", boxScene(0, 0, 240, 150, 100));
    for (const auto& [name, dimension, difference] :
         {std::tuple("higher", "height", 20.0), std::tuple("wider", "width", 30.0),
          std::tuple("longer", "length", 40.0)}) {
        const std::string file = std::string(name) + ".png";
        const Json reason = refusal("--mode kiosk --tolerance 10,10,10 --depth box.png box.png " + file,
                                    "frames_disagree", {"box.png and " + file, std::string(dimension) + "s differ by"});
        ASSERT_TRUE(reason.is_object());
        EXPECT_EQ(reason["dimension"], dimension) << reason;
        EXPECT_EQ(reason["numbers"]["first_frame"], 0.0) << reason;
        EXPECT_EQ(reason["numbers"]["second_frame"], 2.0) << reason;
        EXPECT_EQ(reason["numbers"]["tolerance_mm"], 10.0) << reason;
        EXPECT_NEAR(reason["numbers"]["difference_mm"].get<double>(), difference, 6.0) << reason;
    }
}

TEST_F(MeasureBatch, EarlierPairIsNamedBeforeALaterOneAndHeightBeforeWidthBeforeLength) {
    writeFrame("box.png", boxScene(0, 0, 200, 150, 100));
    writeFrame("longer.png", boxScene(0, 0, 240, 150, 100));
    writeFrame("other.png", boxScene(0, 0, 240, 190, 130));
    const std::string options = "--mode kiosk --tolerance 10,10,10 --depth ";
    EXPECT_EQ(
        refusal(options + "box.png longer.png other.png", "frames_disagree", {"box.png and longer.png"})["dimension"],
        "length");
    EXPECT_EQ(refusal(options + "box.png other.png", "frames_disagree", {})["dimension"], "height");
    EXPECT_EQ(
        refusal("--mode kiosk --tolerance 10,10,50 --depth box.png other.png", "frames_disagree", {})["dimension"],
        "width");
}

TEST_F(MeasureBatch, FrameWithoutAnObjectIsNamed) {
    writeFrame("box.png", boxScene(0, 0, 200, 150, 100));
    writeFrame("bare.png", sim::Scene());
    const std::string options = "--mode kiosk --tolerance 10,10,10 --depth box.png bare.png box.png";
    const Json reason = refusal(options, "nothing_high_enough", {"frame bare.png was not measured", "no pixel stands"});
    EXPECT_EQ(reason["numbers"]["frame"], 1.0) << reason;
    EXPECT_TRUE(reason["dimension"].is_null()) << reason;
    const Json refused = report(options, 1);
    EXPECT_TRUE(refused["spread_mm"].is_null());
    ASSERT_EQ(refused["frames"].size(), 3U);
    EXPECT_EQ(refused["frames"][1]["status"], "empty");
    EXPECT_EQ(refused["frames"][1]["reason"]["code"], "nothing_high_enough");
    EXPECT_TRUE(refused["frames"][1]["height_mm"].is_null());
    const Json single = report("--mode kiosk --depth box.png", 0);
    for (const std::size_t measured : {0U, 2U}) {
        EXPECT_EQ(refused["frames"][measured]["status"], "measured");
        EXPECT_EQ(refused["frames"][measured]["height_mm"], single["height_mm"]) << "the other frames are told as well";
    }
}

TEST_F(MeasureBatch, FrameOutOfViewIsNamedEvenWhenSizesWouldDisagreeFirst) {
    writeFrame("box.png", boxScene(0, 0, 200, 150, 100));
    sim::Scene left = boxScene(-290, 25, 640, 180, 130);
    left.boxes[0].yawDeg = 4.0;
    writeFrame("left.png", left);
    const Json refused = report("--mode kiosk --area 1 --tolerance 10,10,10 --depth box.png left.png", 1);
    EXPECT_EQ(refused["status"], "refused");
    EXPECT_EQ(refused["reason"]["code"], "out_of_view") << refused["reason"];
    EXPECT_EQ(refused["reason"]["numbers"]["frame"], 1.0) << refused["reason"];
    EXPECT_EQ(refused["frames"][1]["in_view"], false);
    EXPECT_EQ(refused["frames"][1]["corners"].size(), 8U);
    EXPECT_EQ(refused["frames"][0]["in_view"], true);
}

TEST_F(MeasureBatch, FrameWhoseBoxMissesTheAreaIsNamed) {
    writeFrame("box.png", boxScene(0, 0, 200, 150, 100));
    writeFrame("aside.png", boxScene(250, 0, 120, 100, 100));
    const Json reason = refusal("--mode kiosk --tolerance 900,900,900 --depth box.png aside.png", "misses_area",
                                {"frame aside.png", "misses the detection area"});
    EXPECT_EQ(reason["numbers"]["frame"], 1.0) << reason;
}

TEST_F(MeasureBatch, WithoutAPlaneNoFrameIsMeasured) {
    writeSimilarFrames();
    std::filesystem::remove_all(folder_.path() / "param");
    const Json kiosk = report(kThreeFrames + std::string("--mode kiosk --tolerance 5,5,5"), 1);
    EXPECT_EQ(kiosk["status"], "no_plane");
    EXPECT_EQ(kiosk["reason"]["code"], "no_plane");
    EXPECT_TRUE(kiosk["frames"].empty());
    ASSERT_TRUE(cv::imwrite(folder_.file("blank.png"), cv::Mat::zeros(480, 640, CV_16UC1)));
    const Json tracking = report("--depth blank.png d0.png --mode ground-tracking --tolerance 5,5,5", 1);
    EXPECT_EQ(tracking["status"], "no_plane");
    EXPECT_EQ(tracking["reason"]["numbers"]["measured_pixels"], 0.0);
}

TEST_F(MeasureBatch, JsonHasItsKeysWhateverTheVerdict) {
    writeFrame("box.png", boxScene(0, 0, 200, 150, 100));
    writeFrame("higher.png", boxScene(0, 0, 200, 150, 120));
    const auto keysOf = [](const Json& object) {
        std::vector<std::string> keys;
        for (const auto& entry : object.items()) {
            keys.push_back(entry.key());
        }
        return keys;
    };
    for (const auto& [frames, exitCode] : {std::pair("box.png box.png", 0), std::pair("box.png higher.png", 1)}) {
        const Json batch = report(std::string("--mode kiosk --tolerance 5,4.5,0.25 --depth ") + frames, exitCode);
        EXPECT_EQ(keysOf(batch),
                  (std::vector<std::string>{
                      "areas",     "calibration", "camera",       "corners",       "filter_weight",     "frames",
                      "height_mm", "in_view",     "length_mm",    "min_height_mm", "min_object_pixels", "mode",
                      "notes",     "on_target",   "plane",        "reason",        "side_margin_px",    "spread_mm",
                      "status",    "timings_ms",  "tolerance_mm", "version",       "width_mm"}));
        EXPECT_EQ(batch["tolerance_mm"], (Json{{"length", 5.0}, {"width", 4.5}, {"height", 0.25}}));
        EXPECT_EQ(keysOf(batch["frames"][0]),
                  (std::vector<std::string>{"color", "corners", "depth", "height_mm", "in_view", "length_mm",
                                            "on_target", "reason", "side_margin_px", "status", "width_mm"}));
        EXPECT_TRUE(batch["frames"][0]["color"].is_null());
        EXPECT_EQ(batch["frames"][0]["depth"], "box.png");
        for (const char* key : {"length_mm", "width_mm", "height_mm"}) {
            EXPECT_EQ(batch[key].is_null(), exitCode == 1) << key;
        }
        EXPECT_EQ(batch["reason"].is_null(), exitCode == 0);
        EXPECT_EQ(batch["in_view"], exitCode == 0);
    }
}

TEST_F(MeasureBatch, TableHasARowAFrameAndTheVerdict) {
    writeFrame("box.png", boxScene(0, 0, 200, 150, 100));
    writeFrame("higher.png", boxScene(0, 0, 200, 150, 120));
    writeFrame("bare.png", sim::Scene());
    const auto expectWords = [this](const std::string& options, int exitCode, const std::vector<std::string>& words) {
        const CommandRun run = measure("--mode kiosk --tolerance 5,5,5 --depth " + options);
        EXPECT_EQ(run.exitCode, exitCode) << run.text();
        for (const std::string& word : words) {
            EXPECT_NE(run.output.find(word), std::string::npos) << "expected \"" << word << "\" in\n" << run.text();
        }
    };
    expectWords("box.png box.png", 0,
                {"Agreed (kiosk): mean ", " mm of 2 frames, largest differences 0.0 x 0.0 x 0.0 mm", "\n  box.png ",
                 "  mean ", "  largest difference ", "  tolerance ", "  5.000 ", "   yes\n", "  plane normal "});
    expectWords("box.png higher.png", 1, {"Refused (kiosk): box.png and higher.png disagree", "\n  higher.png "});
    expectWords(
        "box.png bare.png", 1,
        {"Refused (kiosk): frame bare.png was not measured: no pixel", "\n  bare.png ", "nothing_high_enough\n"});
}

TEST_F(MeasureBatch, OverlayShowsTheLastFrame) {
    writeFrame("box.png", boxScene(0, 0, 200, 150, 100));
    writeFrame("higher.png", boxScene(0, 0, 200, 150, 120));
    const cv::Mat red(480, 640, CV_8UC3, cv::Scalar(0, 0, 200));
    const cv::Mat blue(480, 640, CV_8UC3, cv::Scalar(200, 0, 0));
    ASSERT_TRUE(cv::imwrite(folder_.file("red.png"), red));
    ASSERT_TRUE(cv::imwrite(folder_.file("blue.png"), blue));
    for (const auto& [last, exitCode] : {std::pair("box.png", 0), std::pair("higher.png", 1)}) {
        const CommandRun run = measure(
            "--mode kiosk --tolerance 5,5,5 --overlay o.png --color red.png blue.png "
            "--depth box.png " +
            std::string(last));
        EXPECT_EQ(run.exitCode, exitCode) << run.text();
        const cv::Mat overlay = cv::imread(folder_.file("o.png"));
        ASSERT_EQ(overlay.size(), cv::Size(640, 480)) << run.text();
        EXPECT_EQ(overlay.at<cv::Vec3b>(479, 0), cv::Vec3b(200, 0, 0)) << "the last colour image lies below";
        const cv::Mat box = overlay(cv::Rect(230, 170, 180, 140));
        EXPECT_GT(cv::norm(box, blue(cv::Rect(230, 170, 180, 140)), cv::NORM_L1), 0.0) << "a box is drawn";
    }
}

TEST_F(MeasureBatch, SimulatedFolderAgreesWithTheTruth) {
    ASSERT_EQ(folder_.run("simulate --preset parcel --out parcel --frames 3").exitCode, 0);
    const std::string calibration =
        "--empty-color parcel/empty_color.png --empty-depth parcel/empty_depth.png --mode kiosk";
    const Json batch = report("--batch parcel --tolerance 5,5,3 " + calibration, 0);
    EXPECT_EQ(batch["status"], "agreed") << batch["reason"];
    ASSERT_EQ(batch["frames"].size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string end = "_0" + std::to_string(i) + ".png";
        EXPECT_EQ(std::filesystem::path(batch["frames"][i]["color"].get<std::string>()).filename(), "color" + end);
        EXPECT_EQ(std::filesystem::path(batch["frames"][i]["depth"].get<std::string>()).filename(), "depth" + end);
    }
    EXPECT_TRUE(batch["calibration"].is_object());
    EXPECT_NEAR(batch["length_mm"].get<double>(), 300.0, 6.0);
    EXPECT_NEAR(batch["width_mm"].get<double>(), 200.0, 6.0);
    EXPECT_NEAR(batch["height_mm"].get<double>(), 150.0, 6.0);
}

TEST_F(MeasureBatch, ParameterFileSetsWhatNoOptionSets) {
    writeFrame("box.png", boxScene(0, 0, 200, 150, 100));
    writeFrame("bare.png", sim::Scene());
    folder_.write("params.json", R"({"Calibration_Area": [200, 150, 240, 180], "Detect_Area": [100, 80, 400, 300],
                                     "Ground_Weight": 0.0125})");
    const Json area{{"x", 100}, {"y", 80}, {"width", 400}, {"height", 300}};
    const Json calibrationArea{{"x", 200}, {"y", 150}, {"width", 240}, {"height", 180}};
    const std::string calibrated = "--mode kiosk --params params.json --empty-depth bare.png --depth box.png ";
    for (const std::string frames : {"", "box.png --tolerance 5,5,5 "}) {
        const Json taken = report(calibrated + frames, 0);
        EXPECT_EQ(taken["areas"]["detection"], area) << frames;
        EXPECT_EQ(taken["areas"]["calibration"], calibrationArea) << frames;
        EXPECT_EQ(taken["filter_weight"], 0.0125) << frames;
        const Json overruled =
            report(calibrated + frames + "--area 0.5 --filter-weight -0.25 --calibration-area 0.25", 0);
        EXPECT_EQ(overruled["areas"]["detection"]["width"], 320) << frames;
        EXPECT_EQ(overruled["areas"]["calibration"]["width"], 160) << frames;
        EXPECT_EQ(overruled["filter_weight"], -0.25) << frames;
    }
    EXPECT_EQ(report("--mode ground-tracking --params params.json --depth box.png", 0)["areas"]["detection"], area);
}

class WrongBatch : public MeasureBatch {
protected:
    void SetUp() override {
        MeasureBatch::SetUp();
        writeFrame("d0.png", boxScene(0, 0, 200, 150, 100));
        ASSERT_TRUE(cv::imwrite(folder_.file("small.png"), cv::Mat(240, 320, CV_16UC1, cv::Scalar(900))));
        ASSERT_TRUE(cv::imwrite(folder_.file("c.png"), cv::Mat(480, 640, CV_8UC3, cv::Scalar(90, 80, 70))));
    }

    void expectRefusal(const std::string& options, const std::vector<std::string>& words) const {
        quorvel::command::expectRefusal(measure(options), words);
    }
};

TEST_F(WrongBatch, Tolerance) {
    const std::string frames = "--mode kiosk --depth d0.png d0.png ";
    expectRefusal(frames, {"--tolerance", "L,W,H"});
    expectRefusal("--mode kiosk --batch .", {"--tolerance", "L,W,H"});
    expectRefusal(frames + "--tolerance 5", {"--tolerance", "has 1 numbers"});
    expectRefusal(frames + "--tolerance 5,5,5,5", {"--tolerance", "has 4 numbers"});
    expectRefusal(frames + "--tolerance 5,5,x", {"--tolerance", "\"x\" is not a number"});
    for (const char* value : {"-1,5,5", "5,-0.5,5", "5,5,1e39"}) {
        expectRefusal(frames + "--tolerance=" + value, {"--tolerance", "0 mm or more", value});
    }
    for (const char* value : {"nan,5,5", "5,inf,5"}) {
        expectRefusal(frames + "--tolerance " + value, {"--tolerance", "is not a number"});
    }
}

TEST_F(WrongBatch, ModeWithoutBatchesIsRefusedBeforeAnythingIsRead) {
    expectRefusal("--mode ground-growing --batch nothing --tolerance 5,5,5",
                  {"ground-growing", "kiosk", "ground-tracking"});
    expectRefusal("--mode ground-growing --depth no.png no.png", {"ground-growing measures no batches"});
}

TEST_F(WrongBatch, Frames) {
    const std::string start = "--mode kiosk --tolerance 5,5,5 ";
    expectRefusal(start, {"--depth is required", "--batch"});
    expectRefusal(start + "--color c.png", {"--depth is required"});
    expectRefusal(start + "--color c.png --depth d0.png d0.png", {"names 1 of the frames", "names 2"});
    expectRefusal("--mode kiosk --color c.png c.png --depth d0.png --tolerance 5,5,5", {"names 2 of the frames"});
    expectRefusal(start + "--depth d0.png nothing.png", {"nothing.png", "no such readable file"});
    expectRefusal(start + "--depth d0.png small.png", {"small.png", "320 x 240", "640 x 480"});
    expectRefusal(start + "--batch . --depth d0.png", {"--batch", "leave out --color and --depth"});
    expectRefusal(start + "--batch . --color c.png", {"--batch", "leave out --color and --depth"});
    expectRefusal(start + "--batch nothing", {"--batch nothing", "no such readable folder"});
    expectRefusal(start + "--batch d0.png", {"--batch d0.png", "no such readable folder"});
    expectRefusal(start + "--batch .", {"--batch .", "holds no pair"});
    folder_.write("color_01.png", "x");
    expectRefusal(start + "--batch .", {"color_01.png", "no depth image"});
    expectRefusal(start + "--depth d0.png --stages stages", {"--stages", "one frame"});
    expectRefusal(start + "--depth d0.png --timing", {"--timing", "one frame", "without --batch and --tolerance"});
    expectRefusal(start + "--batch . --timing", {"--timing", "one frame", "without --batch and --tolerance"});
}

TEST_F(WrongBatch, ParameterFile) {
    const std::string start = "--mode kiosk --depth d0.png --params ";
    expectRefusal(start + "nothing.yml", {"nothing.yml", "no such readable file"});
    folder_.write("words.yml", "words");
    expectRefusal(start + "words.yml", {"words.yml"});
    folder_.write("large.json", R"({"Calibration_Area": [0, 0, 10, 10], "Detect_Area": [600, 0, 100, 100],
                                    "Ground_Weight": 0.0})");
    expectRefusal(start + "large.json", {"large.json", "detection area", "640 x 480", "belongs to this camera"});
}

}  // namespace
}  // namespace quorvel::command
