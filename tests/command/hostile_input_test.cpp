// SPDX-License-Identifier: Apache-2.0
// Every option that names a file against every kind of wrong file, and every option against wrong values: exit code 2,
// one line on standard error, nothing on standard output, nothing left behind.
#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "simulated_folder.h"
#include "support/random.h"

namespace quorvel::command {
namespace {

const char* const kCamera = "--camera camera.json ";
const char* const kPlace = "@";  ///< stands for the file or the value in a command line

/// A command line with `kPlace` in it.
struct Place {
    const char* name;
    const char* line;
};

void PrintTo(const Place& place, std::ostream* stream) {
    *stream << place.name;
}

std::string filledIn(const Place& place, const std::string& value) {
    std::string line = place.line;
    return line.replace(line.find(kPlace), 1, value);
}

std::string randomBytes(std::size_t count) {
    test::Draws draws(1);
    std::string bytes(count, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(draws.bits()); });
    return bytes;
}

std::string encoded(const std::string& ending, const cv::Mat& picture) {
    std::vector<unsigned char> bytes;
    cv::imencode(ending, picture, bytes);
    return {bytes.begin(), bytes.end()};
}

std::string bigEndian(std::uint32_t value) {
    std::string bytes;
    for (const unsigned shift : {24U, 16U, 8U, 0U}) {
        bytes += static_cast<char>((value >> shift) & 0xFFU);
    }
    return bytes;
}

std::uint32_t checksum(const std::string& bytes) {
    std::uint32_t crc = 0xFFFFFFFFU;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1U) != 0U ? (crc >> 1U) ^ 0xEDB88320U : crc >> 1U;
        }
    }
    return ~crc;
}

std::string pngChunk(const std::string& type, const std::string& data) {
    return bigEndian(static_cast<std::uint32_t>(data.size())) + type + data + bigEndian(checksum(type + data));
}

/// A PNG file of 16-bit pixels with right checksums, whose data are not validly compressed.
std::string pngOfNoise(std::uint32_t width, std::uint32_t height) {
    const std::string kind("\x10\0\0\0\0", 5);
    return "\x89PNG\r\n\x1A\n" + pngChunk("IHDR", bigEndian(width) + bigEndian(height) + kind) +
           pngChunk("IDAT", "no such stream") + pngChunk("IEND", "");
}

/// A folder with a parcel, a plane, a parameter file and a capture, and with every kind of wrong file.
class HostileFolder {
public:
    HostileFolder() : folder_("parcel") {
        EXPECT_EQ(folder_.calibrate("--mode kiosk").exitCode, 0);
        EXPECT_EQ(folder_
                      .run("param set line.yml --size 640x480 --calibration-area 0.5 --detect-area 0.5 "
                           "--ground-weight 0")
                      .exitCode,
                  0);
        std::filesystem::create_directory(folder_.path() / "folder.png");
        const std::string depth = folder_.read("depth.png");
        folder_.write("empty.png", "");
        folder_.write("random.png", randomBytes(5000));
        folder_.write("words.json", "words");
        folder_.write("cut.png", depth.substr(0, depth.size() / 2));
        folder_.write("noise.png", pngOfNoise(640, 480));
        folder_.write("vast.png", pngOfNoise(40000, 40000));
        const cv::Mat flat(480, 640, CV_16UC1, cv::Scalar(1000));
        const std::string tiff = encoded(".tif", flat);
        folder_.write("cut.tif", tiff.substr(0, tiff.size() / 2));
        if (cv::haveImageWriter("cut.jpg")) {  // missing otherwise, which is refused as well
            const std::string jpeg = encoded(".jpg", cv::imread(folder_.file("color.png")));
            folder_.write("cut.jpg", jpeg.substr(0, jpeg.size() / 2));
        }
        folder_.write("deep.json", std::string(100000, '['));
        folder_.write("deep.yml", "%YAML:1.0\n---\na: " + std::string(100000, '['));
        folder_.write("deep.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>" + repeated("<a>", 30000));
        folder_.write("steps.yml", "%YAML:1.0\n---\na:\n" + repeated("- ", 30000));
        folder_.write("long.json", "{\"" + std::string(1000000, 'a') + "\": 1}");
        folder_.write("nul.json", std::string("{\"fx\": \0}", 9));
        folder_.write("matrix.yml",
                      "%YAML:1.0\n---\nimage_width: 640\nimage_height: 480\ncamera_matrix: !!opencv-matrix\n"
                      "   rows: 2000000000\n   cols: 2000000000\n   dt: d\n   data: [ 1. ]\n");
        before_ = contents();
    }

    CommandRun run(const std::string& line) const { return folder_.run(line); }

    /// All names in the folder, and what the files that a run may replace hold.
    std::set<std::string> contents() const {
        std::set<std::string> all;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path())) {
            all.insert(entry.path().string());
        }
        for (const char* file : {"param/cal.txt", "param/depth.tif", "line.yml"}) {
            all.insert(file + (" " + std::to_string(std::hash<std::string>()(folder_.read(file)))));
        }
        return all;
    }

    void expectRefusal(const std::string& line, const std::string& named) const {
        const CommandRun run = folder_.run(line);
        EXPECT_EQ(run.exitCode, 2) << run.text().substr(0, 2000);
        EXPECT_EQ(run.output, "") << run.text().substr(0, 2000);
        EXPECT_EQ(run.errorLines(), 1) << run.text().substr(0, 2000);
        EXPECT_LT(run.errors.size(), 1500U);
        EXPECT_NE(run.errors.find(named), std::string::npos) << "expected " << named << " in\n" << run.errors;
        EXPECT_TRUE(contents() == before_) << "a refused run leaves and changes nothing\n" << run.line;
    }

private:
    static std::string repeated(const std::string& text, int times) {
        std::string all;
        for (int i = 0; i < times; ++i) {
            all += text;
        }
        return all;
    }

    SimulatedFolder folder_;
    std::set<std::string> before_;
};

/// One folder serves all tests, because each run leaves it as it was, which is tested.
const HostileFolder& hostileFolder() {
    static const HostileFolder folder;
    return folder;
}

class HostileFile : public ::testing::TestWithParam<Place> {};

TEST_P(HostileFile, IsRefusedInOneLine) {
    const HostileFolder& folder = hostileFolder();
    for (const char* file : {"missing.png", "folder.png", "empty.png", "random.png", "words.json", "cut.png",
                             "noise.png", "vast.png", "cut.tif", "cut.jpg", "deep.json", "deep.yml", "deep.xml",
                             "steps.yml", "long.json", "nul.json", "matrix.yml"}) {
        folder.expectRefusal(filledIn(GetParam(), file), file);
    }
}

const Place kFilePlaces[] = {
    {"depth", "measure --camera camera.json --mode kiosk --depth @"},
    {"color", "measure --camera camera.json --mode kiosk --depth depth.png --color @"},
    {"camera", "measure --mode kiosk --depth depth.png --camera @"},
    {"params", "measure --camera camera.json --mode kiosk --depth depth.png --params @"},
    {"empty_depth", "measure --camera camera.json --mode kiosk --depth depth.png --empty-depth @"},
    {"empty_color",
     "measure --camera camera.json --mode kiosk --depth depth.png --empty-depth empty_depth.png --empty-color @"},
    {"batch_depth", "measure --camera camera.json --mode kiosk --tolerance 9,9,9 --depth depth.png @"},
    {"batch_folder", "measure --camera camera.json --mode kiosk --tolerance 9,9,9 --batch @"},
    {"tracking", "measure --camera camera.json --mode ground-tracking --depth @"},
    {"calibrate_depth", "calibrate --camera camera.json --mode kiosk --depth @"},
    {"calibrate_color", "calibrate --camera camera.json --mode ground-growing --depth empty_depth.png --color @"},
    {"capture_depth", "capture --camera camera.json --mode kiosk --depth @"},
    {"simulate", "simulate --out new --scene @"},
    {"param_show", "param show @"},
    {"param_camera", "param show line.yml --camera @"},
    {"param_set", "param set @ --size 640x480 --ground-weight 0"},
    {"replay_params", "replay . --params @"},
};

INSTANTIATE_TEST_SUITE_P(Command, HostileFile, ::testing::ValuesIn(kFilePlaces),
                         [](const auto& instance) { return std::string(instance.param.name); });

class HostileValue : public ::testing::TestWithParam<Place> {};

TEST_P(HostileValue, IsRefusedInOneLine) {
    const HostileFolder& folder = hostileFolder();
    for (const char* value : {"", "nan", "inf", "-inf", "1e999", "0,5", "0.5x", "x", "--", ",", "nan,nan,nan,nan",
                              "1e300,1e300,1e300,1e300", "-2147483648,0,2147483647,2147483647"}) {
        folder.expectRefusal(filledIn(GetParam(), std::string("\"") + value + "\""), "quorvel: ");
    }
}

const Place kNumberPlaces[] = {
    {"area", "measure --camera camera.json --mode kiosk --depth depth.png --area @"},
    {"filter_weight", "measure --camera camera.json --mode kiosk --depth depth.png --filter-weight @"},
    {"side_band", "measure --camera camera.json --mode kiosk --depth depth.png --side-band @"},
    {"depth_scale", "measure --camera camera.json --mode kiosk --depth depth.png --depth-scale @"},
    {"tolerance", "measure --camera camera.json --mode kiosk --depth depth.png --tolerance @"},
    {"intrinsics", "measure --mode kiosk --depth depth.png --intrinsics @"},
    {"mode", "measure --camera camera.json --depth depth.png --mode @"},
    {"min_height", "measure --camera camera.json --mode ground-tracking --depth depth.png --min-height @"},
    {"calibration_area", "calibrate --camera camera.json --mode kiosk --depth empty_depth.png --calibration-area @"},
    {"offset", "calibrate --camera camera.json --mode kiosk --depth empty_depth.png --offset @"},
    {"capture_area", "capture --camera camera.json --mode kiosk --depth depth.png --area @"},
    {"preset", "simulate --out new --preset @"},
    {"seed", "simulate --preset parcel --out new --seed @"},
    {"frame", "simulate --preset parcel --out new --frame @"},
    {"frames", "simulate --preset parcel --out new --frames @"},
    {"replay_tolerance", "replay . --tolerance @"},
    {"replay_jobs", "replay . --jobs @"},
    {"replay_area", "replay . --area @"},
    {"param_area", "param set line.yml --size 640x480 --calibration-area @"},
    {"param_weight", "param set line.yml --size 640x480 --ground-weight @"},
    {"param_size", "param show line.yml --size @"},
    {"bench_size", "bench --seconds 0.01 --size @"},
    {"bench_seconds", "bench --size 320x240 --seconds @"},
    {"bench_mode", "bench --size 320x240 --seconds 0.01 --mode @"},
};

INSTANTIATE_TEST_SUITE_P(Command, HostileValue, ::testing::ValuesIn(kNumberPlaces),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST(HostileNames, EmptyOnesAreRefused) {
    const HostileFolder& folder = hostileFolder();
    const std::string measure = std::string("measure ") + kCamera + "--mode kiosk --depth depth.png ";
    for (const char* option : {"--color", "--params", "--overlay", "--stages", "--empty-depth"}) {
        folder.expectRefusal(measure + option + " \"\"", option);
    }
    folder.expectRefusal("-C \"\" simulate --list", "-C");
    folder.expectRefusal("simulate --preset parcel --out \"\"", "--out");
    folder.expectRefusal("replay \"\"", "PATH");
    folder.expectRefusal("param show \"\"", "file");
}

TEST(HostileValues, HugeOnesAreRefusedWhereNoPictureReaches) {
    const HostileFolder& folder = hostileFolder();
    const std::string measure = std::string("measure ") + kCamera + "--depth depth.png ";
    folder.expectRefusal(measure + "--mode ground-tracking --min-height 1e20", "--min-height");
    folder.expectRefusal(measure + "--mode kiosk --depth-scale 1e20", "--depth-scale");
    folder.expectRefusal(measure + "--mode kiosk --side-band 99999999999", "--side-band");
    folder.expectRefusal(measure + "--mode kiosk --empty-depth empty_depth.png --offset 1e20", "--offset");
    folder.expectRefusal("measure --depth depth.png --mode kiosk --intrinsics 1e7,525,320,240", "--intrinsics");
    folder.expectRefusal("measure --depth depth.png --mode kiosk --intrinsics 525,525,1e7,240", "--intrinsics");
    folder.expectRefusal("measure --depth depth.png --mode kiosk --intrinsics 525,1e-9,320,240", "--intrinsics");
    folder.expectRefusal("replay . --jobs 99999999999", "--jobs");
    folder.expectRefusal("bench --size 99999x99999", "--size");
    folder.expectRefusal("bench --seconds 1e20", "--seconds");
    folder.expectRefusal("simulate --preset parcel --out new --seed 99999999999999999999", "--seed");
}

TEST(HostileColor, OtherKindsOfPicturesServe) {
    const SimulatedFolder folder("parcel");
    const cv::Mat color = cv::imread(folder.file("color.png"));
    const CommandRun usual = folder.calibrateAndMeasure("--mode kiosk --json");
    ASSERT_EQ(usual.exitCode, 0) << usual.text();
    const auto expectSame = [&](const cv::Mat& picture) {
        ASSERT_TRUE(cv::imwrite(folder.file("color.png"), picture));
        const CommandRun run = folder.measure("--mode kiosk --json");
        ASSERT_EQ(run.exitCode, 0) << run.text();
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.json()["corners"], usual.json()["corners"]);
    };
    cv::Mat alpha(color.size(), CV_8UC4, cv::Scalar(10, 20, 30, 0));
    expectSame(alpha);
    expectSame(cv::Mat(color.size(), CV_8UC1, cv::Scalar(90)));
    expectSame(cv::Mat(color.size(), CV_16UC3, cv::Scalar(9000, 8000, 70)));
}

TEST(HostilePlane, IsTheReasonWhyNothingIsMeasured) {
    const SimulatedFolder folder("parcel");
    std::filesystem::create_directory(folder.path() / "param");
    for (const std::string& plane :
         {std::string(), std::string("words"), std::string("0 0 1"), std::string("0 0 0 0"), std::string("0 0 1 -1000"),
          std::string("0 0 5 1000"), std::string("nan nan nan nan"), std::string("inf 0 0 inf"),
          std::string("0 0 1 1e999"), std::string("1e38 1e38 1e38 1e38"), std::string(300, '9'), randomBytes(3000)}) {
        folder.write("param/cal.txt", plane);
        for (const char* mode : {"kiosk", "ground-growing"}) {
            const CommandRun run = folder.measure(std::string("--json --mode ") + mode);
            ASSERT_EQ(run.exitCode, 1) << plane << "\n" << run.text();
            EXPECT_EQ(run.json()["reason"]["code"], "no_plane") << plane << "\n" << run.text();
            EXPECT_EQ(run.errors, "") << plane;
        }
    }
}

TEST(HostilePlane, OnAWallOrFarAwayMeasuresNothing) {
    const SimulatedFolder folder("parcel");
    std::filesystem::create_directory(folder.path() / "param");
    for (const char* plane : {"1 0 0 1000", "0 1 0 1", "0 0 -1 1000", "0 0 1 0.000001", "0 0 1 1e30"}) {
        folder.write("param/cal.txt", plane);
        for (const char* mode : {"kiosk", "ground-growing"}) {
            const CommandRun run = folder.measure(std::string("--json --mode ") + mode);
            ASSERT_EQ(run.exitCode, 1) << plane << "\n" << run.text();
            EXPECT_TRUE(run.json()["length_mm"].is_null()) << run.text();
            EXPECT_TRUE(run.json()["reason"]["message"].is_string()) << run.text();
        }
    }
}

TEST(HostileText, StaysOneLineWithoutControlCharacters) {
    const SimulatedFolder folder("parcel");
    folder.write("odd.json", "{\"fx\\u001b[31m\\n\\u0007\": 1}");
    const CommandRun run = folder.run("measure --camera odd.json --mode kiosk --depth depth.png");
    EXPECT_EQ(run.exitCode, 2) << run.text();
    EXPECT_EQ(run.errorLines(), 1) << run.text();
    EXPECT_TRUE(std::none_of(run.errors.begin(), run.errors.end() - 1, [](unsigned char c) {
        return c < 0x20 || c == 0x7F;
    })) << run.text();
}

}  // namespace
}  // namespace quorvel::command
