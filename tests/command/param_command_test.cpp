// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "command_run.h"

namespace quorvel::command {
namespace {

namespace fs = std::filesystem;

const char* const kAllValues = " --calibration-area 10,20,300,200 --detect-area 160,120,320,240 --ground-weight 0.005";
const char* const kSize = " --size 640x480";

/// What the library itself reads from a file.
struct LibraryParams {
    bool read = false;
    cv::Rect calibrationArea;
    cv::Rect detectArea;
    float groundWeight = 0.0F;
};

LibraryParams readWithLibrary(const std::string& path) {
    Quorvel ruler(600.0F, 600.0F, 320.0F, 240.0F, 640, 480, false, "");
    LibraryParams params;
    params.read = ruler.loadRulerParam(path, params.calibrationArea, params.detectArea);
    params.groundWeight = ruler.filterWeight;
    return params;
}

void expectText(const CommandRun& run, const std::string& words) {
    EXPECT_NE(run.output.find(words), std::string::npos) << "expected \"" << words << "\" in\n" << run.text();
}

std::vector<std::string> filesIn(const TemporaryFolder& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

/// A folder with a parameter file of all three values.
class ParamFolder : public TemporaryFolder {
public:
    explicit ParamFolder(std::string name = "line.yml") : name_(std::move(name)) {
        const CommandRun made = set(std::string(kAllValues) + kSize);
        EXPECT_EQ(made.exitCode, 0) << made.text();
        original_ = read(name_);
        EXPECT_FALSE(original_.empty()) << made.text();
    }

    CommandRun set(const std::string& options) const { return run("param set " + name_ + options); }
    CommandRun show(const std::string& options) const { return run("param show " + name_ + options); }
    LibraryParams params() const { return readWithLibrary(file(name_)); }

    /// Exit code 2, one line with the words, and the folder as it was.
    void expectRefusal(const std::string& options, const std::vector<std::string>& words) const {
        const CommandRun run = set(options);
        quorvel::command::expectRefusal(run, words);
        EXPECT_EQ(read(name_), original_) << "the file must stay as it was after\n" << run.text();
        EXPECT_EQ(filesIn(*this), std::vector<std::string>{name_}) << "nothing may be left beside the file";
    }

private:
    std::string name_;
    std::string original_;
};

void expectRefusedFile(const TemporaryFolder& folder, const std::string& arguments, const std::string& words) {
    const CommandRun run = folder.run(arguments);
    EXPECT_EQ(run.exitCode, 2) << run.text();
    EXPECT_EQ(run.output, "") << run.text();
    EXPECT_EQ(run.errorLines(), 1) << run.text();
    EXPECT_NE(run.errors.find(words), std::string::npos) << "expected \"" << words << "\" in\n" << run.text();
}

struct Format {
    const char* file;
    const char* start;  ///< of a file in this format
};

/// For the names of the tests.
void PrintTo(const Format& format, std::ostream* stream) {
    *stream << format.file;
}

class ParamFormat : public ::testing::TestWithParam<Format> {};

TEST_P(ParamFormat, LibraryReadsWhatIsSetAndAnEditKeepsTheRestAndTheFormat) {
    const auto [name, start] = GetParam();
    const ParamFolder folder(name);
    LibraryParams params = folder.params();
    ASSERT_TRUE(params.read);
    EXPECT_EQ(params.calibrationArea, cv::Rect(10, 20, 300, 200));
    EXPECT_EQ(params.detectArea, cv::Rect(160, 120, 320, 240));
    EXPECT_EQ(params.groundWeight, 0.005F);

    const CommandRun run = folder.set(std::string(" --ground-weight -0.3") + kSize);
    ASSERT_EQ(run.exitCode, 0) << run.text();
    params = folder.params();
    EXPECT_EQ(params.calibrationArea, cv::Rect(10, 20, 300, 200));
    EXPECT_EQ(params.detectArea, cv::Rect(160, 120, 320, 240));
    EXPECT_EQ(params.groundWeight, -0.3F);
    EXPECT_EQ(folder.read(name).rfind(start, 0), 0U) << "another format:\n" << folder.read(name);
    EXPECT_EQ(filesIn(folder), std::vector<std::string>{name}) << "nothing may be left beside the file";
}

INSTANTIATE_TEST_SUITE_P(All, ParamFormat,
                         ::testing::Values(Format{"a.yml", "%YAML"}, Format{"a.yaml", "%YAML"},
                                           Format{"a.YML", "%YAML"}, Format{"a.xml", "<?xml"}, Format{"a.json", "{"}),
                         [](const auto& instance) {
                             std::string name;
                             for (const char letter : std::string(instance.param.file)) {
                                 name += letter == '.' ? '_' : letter;
                             }
                             return name;
                         });

TEST(ParamSet, EachValueIsChangedAlone) {
    const ParamFolder folder;
    ASSERT_EQ(folder.set(std::string(" --calibration-area 1,2,3,4") + kSize).exitCode, 0);
    EXPECT_EQ(folder.params().calibrationArea, cv::Rect(1, 2, 3, 4));
    EXPECT_EQ(folder.params().detectArea, cv::Rect(160, 120, 320, 240));
    ASSERT_EQ(folder.set(std::string(" --detect-area 5,6,7,8") + kSize).exitCode, 0);
    EXPECT_EQ(folder.params().calibrationArea, cv::Rect(1, 2, 3, 4));
    EXPECT_EQ(folder.params().detectArea, cv::Rect(5, 6, 7, 8));
    EXPECT_EQ(folder.params().groundWeight, 0.005F);
}

TEST(ParamSet, PrintsOldAndNew) {
    const ParamFolder folder;
    const CommandRun run = folder.set(std::string(" --detect-area 5,6,7,8 --ground-weight 0.25") + kSize);
    EXPECT_EQ(run.output,
              "Written line.yml\n\n"
              "  calibration area   300 x 200 from (10, 20)  (unchanged)\n"
              "  detection area     320 x 240 from (160, 120) -> 7 x 8 from (5, 6)\n"
              "  ground weight      0.005 -> 0.25\n")
        << run.text();
    expectText(folder.run(std::string("param set new.json") + kAllValues + kSize), "none -> 0.005");
}

TEST(ParamSet, RatioIsTheLibrarysOwnRegion) {
    const ParamFolder folder;
    ASSERT_EQ(folder.set(" --calibration-area 0.3 --detect-area 0.7 --size 641x479").exitCode, 0);
    Quorvel ruler(600.0F, 600.0F, 320.0F, 240.0F, 641, 479, false, "");
    cv::Rect calibration;
    cv::Rect detection;
    ruler.setCalibrationRoI(0.3F, calibration);
    ruler.setEffectiveRegionInArea(0.7F, detection);
    EXPECT_EQ(folder.params().calibrationArea, calibration);
    EXPECT_EQ(folder.params().detectArea, detection);
}

TEST(ParamSet, CameraFileGivesTheSize) {
    const ParamFolder folder;
    folder.write("camera.json", R"({"fx":600,"fy":600,"cx":160,"cy":120,"width":480,"height":360})");
    const CommandRun fits = folder.set(" --detect-area 380,260,100,100 --camera camera.json");
    EXPECT_EQ(fits.exitCode, 0) << fits.text();
    const CommandRun leaves = folder.set(" --detect-area 381,260,100,100 --camera camera.json");
    EXPECT_EQ(leaves.exitCode, 2) << leaves.text();
    EXPECT_NE(leaves.errors.find("picture of 480 x 360"), std::string::npos) << leaves.text();
}

TEST(ParamSet, WrongValuesLeaveTheFileAlone) {
    const ParamFolder folder;
    const std::string size = kSize;
    folder.expectRefusal(size, {"nothing to set"});
    folder.expectRefusal(" --ground-weight 1", {"--size WxH or --camera FILE"});
    folder.expectRefusal(" --ground-weight 1 --camera c.json" + size, {"--size and --camera"});
    folder.expectRefusal(" --ground-weight nan" + size, {"line.yml: not written", "not finite"});
    folder.expectRefusal(" --ground-weight 1e39" + size, {"not finite"});
    folder.expectRefusal(" --ground-weight heavy" + size, {"--ground-weight", "heavy"});
    folder.expectRefusal(" --detect-area 541,0,100,100" + size,
                         {"detection area 100 x 100 from (541, 0)", "640 x 480"});
    folder.expectRefusal(" --calibration-area 0,381,100,100" + size, {"calibration area", "640 x 480"});
    folder.expectRefusal(" --calibration-area -1,0,100,100" + size, {"calibration area"});
    folder.expectRefusal(" --detect-area 0.001" + size, {"detection area 0 x 0"});
    folder.expectRefusal(" --detect-area 1.5" + size, {"--detect-area", "at most 1"});
    folder.expectRefusal(" --calibration-area 1,2,3" + size, {"--calibration-area", "3 numbers"});
    for (const char* text : {"640", "x480", "640x480x1", "99999999999x2"}) {
        folder.expectRefusal(std::string(" --ground-weight 1 --size \"") + text + "\"",
                             {"not a picture size", "640x480"});
    }
    folder.expectRefusal(" --ground-weight 1 --size 0x480", {"--size", "0 x 480"});
}

TEST(ParamSet, AreasThatStayMustFitAsWell) {
    const ParamFolder folder;
    folder.expectRefusal(" --ground-weight 0.1 --size 320x240",
                         {"detection area 320 x 240 from (160, 120)", "picture of 320 x 240"});
}

TEST(ParamSet, NewFileNeedsAllValuesAndAFolder) {
    const TemporaryFolder folder;
    expectRefusedFile(folder, "param set new.yml --ground-weight 1 --calibration-area 0.5 --size 640x480",
                      "new.yml: does not exist yet");
    expectRefusedFile(folder, std::string("param set none/new.yml") + kAllValues + kSize,
                      "none/new.yml: cannot be written");
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(ParamSet, OtherExtensionsAreRefused) {
    const TemporaryFolder folder;
    for (const char* name : {"line", "line.txt", "line.yml.bak", "line.yml.gz"}) {
        expectRefusedFile(folder, std::string("param set ") + name + kAllValues + kSize,
                          std::string(name) + ": the extension chooses the format");
    }
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(ParamSet, FileWithMoreInItIsRefused) {
    const TemporaryFolder folder;
    const std::string values =
        "Calibration_Area: [ 1, 2, 30, 40 ]\nDetect_Area: [ 1, 2, 30, 40 ]\nGround_Weight: 0.5\n";
    const std::string more = "%YAML:1.0\n---\n" + values + "Line: 7\n";
    folder.write("more.yml", more);
    expectRefusedFile(folder, "param set more.yml --ground-weight 1 --size 640x480", "holds \"Line\" besides");
    EXPECT_EQ(folder.read("more.yml"), more);
    const std::string two = "%YAML:1.0\n---\n" + values + "...\n---\nLine: 7\n";
    folder.write("two.yml", two);
    expectRefusedFile(folder, "param set two.yml --ground-weight 1 --size 640x480", "continues after its end");
    EXPECT_EQ(folder.read("two.yml"), two);
}

TEST(ParamSet, DamagedFileIsRefusedAndStays) {
    const TemporaryFolder folder;
    const std::string start = "%YAML:1.0\n---\nCalibration_Area: [ 1, 2, 30, 40 ]\n";
    const std::vector<std::pair<std::string, std::string>> files{
        {"", "line.yml: is empty"},
        {"words", "not a ruler parameter file"},
        {start + "Detect_Area: [ 1, 2, 30, 40 ]\n", "\"Ground_Weight\""},
        {start + "Detect_Area: [ 1, 2, 30 ]\nGround_Weight: 1.\n", "\"Detect_Area\""},
        {start + "Detect_Area: [ 1, 2, 30, 4.5 ]\nGround_Weight: 1.\n", "\"Detect_Area\""},
        {start + "Detect_Area: [ 1, 2, 30, 40\nGround_Weight", "not a ruler parameter file"},
        {"%YAML:1.0\n---e:0\n--e-\n", "not a ruler parameter file"}};
    for (const auto& [bytes, words] : files) {
        folder.write("line.yml", bytes);
        expectRefusedFile(folder, std::string("param set line.yml") + kAllValues + kSize, words);
        EXPECT_EQ(folder.read("line.yml"), bytes);
    }
}

#ifndef _WIN32
TEST(ParamSet, LinkStaysALinkAndItsTargetIsChanged) {
    const ParamFolder folder("target.json");
    fs::create_directory(folder.path() / "links");
    fs::create_symlink("../target.json", folder.path() / "links" / "line.yml");
    const CommandRun run = folder.run(std::string("param set links/line.yml --ground-weight 0.125") + kSize);
    ASSERT_EQ(run.exitCode, 0) << run.text();
    EXPECT_TRUE(fs::is_symlink(folder.path() / "links" / "line.yml"));
    EXPECT_EQ(folder.params().groundWeight, 0.125F);
    EXPECT_EQ(folder.read("target.json").substr(0, 1), "{") << "the target's own format stays";
    const auto links = fs::directory_iterator(folder.path() / "links");
    EXPECT_EQ(std::distance(fs::begin(links), fs::end(links)), 1) << "nothing may be left beside the link";

    fs::create_symlink("nowhere.yml", folder.path() / "lost.yml");
    expectRefusedFile(folder, std::string("param set lost.yml") + kAllValues + kSize, "leads to no file");
    EXPECT_FALSE(fs::exists(folder.path() / "nowhere.yml"));
}

TEST(ParamSet, PermissionsStay) {
    const ParamFolder folder;
    const fs::perms permissions = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_write;
    fs::permissions(folder.path() / "line.yml", permissions);
    ASSERT_EQ(folder.set(std::string(" --ground-weight 1") + kSize).exitCode, 0);
    EXPECT_EQ(fs::status(folder.path() / "line.yml").permissions(), permissions);
}
#endif

TEST(ParamSet, FolderIsNoFile) {
    const TemporaryFolder folder;
    fs::create_directory(folder.path() / "line.yml");
    expectRefusedFile(folder, std::string("param set line.yml") + kAllValues + kSize, "is not a regular file");
}

TEST(ParamShow, PrintsTheThreeValues) {
    const ParamFolder folder;
    const CommandRun run = folder.show("");
    EXPECT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output,
              "line.yml\n\n"
              "  calibration area   300 x 200 from (10, 20)\n"
              "  detection area     320 x 240 from (160, 120)\n"
              "  ground weight      0.005\n");
}

TEST(ParamShow, SizeTellsWhetherItFits) {
    const ParamFolder folder;
    const CommandRun fits = folder.show(" --size 480x360");
    EXPECT_EQ(fits.exitCode, 0) << fits.text();
    expectText(fits, "480 x 360, fits");
    const CommandRun leaves = folder.show(" --size 479x360");
    EXPECT_EQ(leaves.exitCode, 1) << leaves.text();
    expectText(leaves, "479 x 360, does not fit");
    expectText(leaves, "Problem: the detection area 320 x 240 from (160, 120)");
    EXPECT_EQ(leaves.output.find("Problem: the calibration area"), std::string::npos) << leaves.text();
}

TEST(ParamShow, JsonHoldsTheValuesAndTheProblems) {
    const ParamFolder folder;
    const nlohmann::json alone = folder.show(" --json").json();
    EXPECT_EQ(alone["file"], "line.yml");
    EXPECT_EQ(alone["calibration_area"], nlohmann::json::parse(R"({"x":10,"y":20,"width":300,"height":200})"));
    EXPECT_EQ(alone["detect_area"], nlohmann::json::parse(R"({"x":160,"y":120,"width":320,"height":240})"));
    EXPECT_EQ(alone["ground_weight"], 0.005);
    EXPECT_TRUE(alone["picture"].is_null() && alone["problems"].is_null()) << alone;

    const CommandRun leaves = folder.show(" --json --size 100x100");
    EXPECT_EQ(leaves.exitCode, 1) << leaves.text();
    EXPECT_EQ(leaves.json()["picture"], nlohmann::json::parse(R"({"width":100,"height":100})"));
    EXPECT_EQ(leaves.json()["problems"].size(), 2U) << leaves.text();
    EXPECT_EQ(folder.show(" --json --size 640x480").json()["problems"], nlohmann::json::array());
}

TEST(ParamShow, MissingAndDamagedFilesAreNamed) {
    const TemporaryFolder folder;
    folder.write("words.yml", "words");
    expectRefusedFile(folder, "param show words.yml", "not a ruler parameter file");
    expectRefusedFile(folder, "param show none.yml", "none.yml: there is no such readable file");
    expectRefusedFile(folder, "param show", "file is required");
    expectRefusedFile(folder, "param", "quorvel param --help");
}

}  // namespace
}  // namespace quorvel::command
