// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "files/text_file.h"
#include "library/comma_locale.h"
#include "library/depth_scene.h"
#include "library/measure_draws.h"
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/ordinary_user.h"
#include "support/same_bits.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

const cv::Rect kNoArea(0, 0, 0, 0);
const cv::Rect kOldCalibration(1, 2, 3, 4);
const cv::Rect kOldDetection(5, 6, 7, 8);

/// A ruler whose three parameters differ from every default.
Quorvel tunedRuler() {
    Quorvel ruler(600, 600, 320, 240, 640, 480, false, "");
    ruler.calibrationRoI = {10, 20, 300, 200};
    ruler.effectiveRegion = {-5, 0, 640, 480};
    ruler.filterWeight = 0.0125F;
    return ruler;
}

/// Loads into a ruler, and keeps what came through the out-arguments.
struct Loaded {
    Quorvel ruler = tunedRuler();
    cv::Rect calibration = kOldCalibration;
    cv::Rect detection = kOldDetection;

    bool load(const std::string& path) { return ruler.loadRulerParam(path, calibration, detection); }
    /// Nothing may differ from before a load.
    void expectUntouched(const std::string& what) const {
        EXPECT_TRUE(sameRuler(withoutDebug(ruler), tunedRuler())) << what;
        EXPECT_EQ(calibration, kOldCalibration) << what;
        EXPECT_EQ(detection, kOldDetection) << what;
    }

private:
    static Quorvel withoutDebug(Quorvel ruler) {
        ruler.debugMode = false;
        return ruler;
    }
};

/// Reads a document in YAML that holds these lines.
Loaded loadedFrom(const std::string& lines) {
    const WorkingDirectory directory;
    std::ofstream("ruler.yml", std::ios::binary) << "%YAML:1.0\n---\n" << lines;
    Loaded loaded;
    EXPECT_TRUE(loaded.load("ruler.yml")) << lines;
    return loaded;
}

const std::string kCalibrationLine = "Calibration_Area: [ 11, 12, 13, 14 ]\n";
const std::string kDetectLine = "Detect_Area: [ 21, 22, 23, 24 ]\n";
const std::string kWeightLine = "Ground_Weight: 0.25\n";

TEST(RulerParameters, WritesThreeKeysInYaml) {
    for (const std::string path : {"ruler.yml", "ruler.yaml"}) {
        const WorkingDirectory directory;
        EXPECT_TRUE(tunedRuler().saveRulerParam(path));
        EXPECT_EQ(internal::readTextFile(path),
                  "%YAML:1.0\n---\nCalibration_Area: [ 10, 20, 300, 200 ]\nDetect_Area: [ -5, 0, 640, 480 ]\n"
                  "Ground_Weight: 1.2500000186264515e-02\n");
    }
}

TEST(RulerParameters, WritesThreeKeysInXml) {
    const WorkingDirectory directory;
    EXPECT_TRUE(tunedRuler().saveRulerParam("ruler.xml"));
    EXPECT_EQ(internal::readTextFile("ruler.xml"),
              "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Calibration_Area>\n  10 20 300 200</Calibration_Area>\n"
              "<Detect_Area>\n  -5 0 640 480</Detect_Area>\n<Ground_Weight>1.2500000186264515e-02</Ground_Weight>\n"
              "</opencv_storage>\n");
}

TEST(RulerParameters, WritesThreeKeysInJson) {
    const WorkingDirectory directory;
    EXPECT_TRUE(tunedRuler().saveRulerParam("ruler.json"));
    EXPECT_EQ(internal::readTextFile("ruler.json"),
              "{\n    \"Calibration_Area\": [ 10, 20, 300, 200 ],\n    \"Detect_Area\": [ -5, 0, 640, 480 ],\n"
              "    \"Ground_Weight\": 1.2500000186264515e-02\n}\n");
}

TEST(RulerParameters, ReturnFromEveryFormatAsTheyWereSaved) {
    Draws draws(51);
    const std::vector<int> corners{0, -1, 1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
    const auto drawValue = [&] { return draws.chance(20) ? draws.oneOf(corners) : draws.between(-5000, 5000); };
    const WorkingDirectory directory;
    for (int run = 0; run < 40; ++run) {
        Quorvel saved = tunedRuler();
        saved.calibrationRoI = {drawValue(), drawValue(), drawValue(), drawValue()};
        saved.effectiveRegion = {drawValue(), drawValue(), drawValue(), drawValue()};
        saved.filterWeight = draws.chance(20) ? static_cast<float>(draws.between(-2, 2)) : draws.real(-2, 2);
        for (const std::string path : {"ruler.yml", "ruler.xml", "ruler.json", "ruler.txt", "ruler"}) {
            ASSERT_TRUE(saved.saveRulerParam(path));
            Loaded loaded;
            ASSERT_TRUE(loaded.load(path));
            ASSERT_TRUE(sameRuler(loaded.ruler, saved)) << path << ", run " << run;
            ASSERT_EQ(loaded.calibration, saved.calibrationRoI) << path;
            ASSERT_EQ(loaded.detection, saved.effectiveRegion) << path;
        }
    }
}

TEST(RulerParameters, ReturnEvenAWeightThatIsFarOut) {
    const WorkingDirectory directory;
    for (const float weight :
         {std::numeric_limits<float>::max(), std::numeric_limits<float>::lowest(), std::numeric_limits<float>::min(),
          std::nextafter(0.1F, 1.0F), kInfinity, -kInfinity, kNaN}) {
        for (const std::string path : {"ruler.yml", "ruler.xml", "ruler.json"}) {
            Quorvel saved = tunedRuler();
            saved.filterWeight = weight;
            ASSERT_TRUE(saved.saveRulerParam(path));
            Loaded loaded;
            ASSERT_TRUE(loaded.load(path));
            EXPECT_TRUE(sameBits(loaded.ruler.filterWeight, weight)) << path << ": " << weight;
        }
    }
}

TEST(RulerParameters, ReplaceAnOlderFile) {
    const WorkingDirectory directory;
    std::ofstream("ruler.yml") << std::string(10000, 'x');
    EXPECT_TRUE(tunedRuler().saveRulerParam("ruler.yml"));
    Loaded loaded;
    EXPECT_TRUE(loaded.load("ruler.yml"));
    EXPECT_EQ(loaded.calibration, cv::Rect(10, 20, 300, 200));
    EXPECT_LT(std::filesystem::file_size("ruler.yml"), 200U);
}

TEST(RulerParameters, ChangeNothingWhenTheyAreSaved) {
    const WorkingDirectory directory;
    Quorvel ruler = tunedRuler();
    EXPECT_TRUE(ruler.saveRulerParam("ruler.yml"));
    EXPECT_TRUE(sameRuler(ruler, tunedRuler()));
    EXPECT_FALSE(ruler.saveRulerParam("missing/ruler.yml"));
    EXPECT_TRUE(sameRuler(ruler, tunedRuler()));
    EXPECT_FALSE(std::filesystem::exists("missing"));
    EXPECT_FALSE(std::filesystem::exists("param")) << "the parameter folder is another matter";
}

TEST(RulerParameters, SayWhereTheyCannotBeSaved) {
    const WorkingDirectory directory;
    std::filesystem::create_directory("folder");
    std::filesystem::create_directory("folder.yml");
    std::ofstream("file") << "a file";
    for (const std::string path : {"missing/ruler.yml", "missing/ruler.xml", "missing/ruler.json", "folder",
                                   "folder.yml", "file/ruler.yml", ""}) {
        for (const bool debug : {false, true}) {
            Quorvel ruler = tunedRuler();
            ruler.debugMode = debug;
            const CapturedOutput output;
            EXPECT_FALSE(ruler.saveRulerParam(path)) << path;
            EXPECT_EQ(output.text(), debug ? "Save Quorvel parameter into " + path + " fail.\n" : "");
        }
    }
}

TEST(RulerParameters, AreNotSavedUnderANameThatOpenCvWouldCut) {
    const WorkingDirectory folder;
    std::ofstream("kept") << "another file";
    for (const char* path : {"kept?x.yml", "kept?base64", "new?.yml"}) {
        EXPECT_FALSE(tunedRuler().saveRulerParam(path)) << path;
    }
    EXPECT_EQ(internal::readTextFile("kept"), "another file");
    EXPECT_FALSE(std::filesystem::exists("new"));
}

TEST(RulerParameters, NeedThePermissionsOfTheFile) {
    const WorkingDirectory directory;
    ASSERT_TRUE(tunedRuler().saveRulerParam("ruler.yml"));
    std::filesystem::permissions("ruler.yml", std::filesystem::perms::none);
    asOrdinaryUser([] {
        if (std::ifstream("ruler.yml").is_open()) {
            GTEST_SKIP() << "permissions to read mean nothing here";
        }
        EXPECT_FALSE(tunedRuler().saveRulerParam("ruler.yml"));
        Loaded loaded;
        EXPECT_FALSE(loaded.load("ruler.yml"));
        loaded.expectUntouched("a file without permissions");
    });
}

TEST(RulerParameters, ArePrintedWhenTheyAreLoadedInDebugModeOnly) {
    const WorkingDirectory directory;
    Quorvel saved = tunedRuler();
    saved.debugMode = true;
    {
        const CapturedOutput output;
        EXPECT_TRUE(saved.saveRulerParam("ruler.yml"));
        EXPECT_EQ(output.text(), "") << "saving tells only of failures";
    }
    for (const bool debug : {false, true}) {
        Loaded loaded;
        loaded.ruler.debugMode = debug;
        const CapturedOutput output;
        EXPECT_TRUE(loaded.load("ruler.yml"));
        EXPECT_EQ(output.text(), debug ? " Quorvel parameter \n"
                                         " [Calibration_Area] : [300 x 200 from (10, 20)]\n"
                                         " [Detect_Area] : [640 x 480 from (-5, 0)]\n"
                                         " [Ground_Weight] : 0.0125\n"
                                       : "");
    }
}

TEST(RulerParameters, SayWhichFileIsMissing) {
    const WorkingDirectory directory;
    std::filesystem::create_directory("folder");
    for (const std::string path : {"none.yml", "missing/ruler.xml", "folder", ""}) {
        for (const bool debug : {false, true}) {
            Loaded loaded;
            loaded.ruler.debugMode = debug;
            const CapturedOutput output;
            EXPECT_FALSE(loaded.load(path)) << path;
            EXPECT_EQ(output.text(), debug ? " Quorvel parameter [" + path + "] is no exist. \n" : "");
            loaded.expectUntouched("\"" + path + "\"");
        }
    }
}

TEST(RulerParameters, LeavePlaneAndStateAlone) {
    const WorkingDirectory directory;
    ASSERT_TRUE(tunedRuler().saveRulerParam("ruler.yml"));
    Loaded loaded;
    setPlane(loaded.ruler, {0, 0.6F, 0.8F}, 700, 9);
    loaded.ruler.minObjectHeight = 4;
    Draws draws(1);
    const DepthScene scene = blockScene(200);
    loaded.ruler.depthImage = scene.depth(draws);
    loaded.ruler.result.height = 5;
    const Quorvel before = detachedCopy(loaded.ruler);
    loaded.ruler.calibrationRoI = {};
    loaded.ruler.effectiveRegion = {};
    loaded.ruler.filterWeight = 9;
    ASSERT_TRUE(loaded.load("ruler.yml"));
    EXPECT_TRUE(sameRuler(loaded.ruler, before));
    loaded.ruler.calibStatus = false;
    ASSERT_TRUE(loaded.load("ruler.yml"));
    EXPECT_FALSE(loaded.ruler.calibStatus);
}

TEST(RulerParameters, MayBeLoadedIntoTheMembersThemselves) {
    const WorkingDirectory directory;
    ASSERT_TRUE(tunedRuler().saveRulerParam("ruler.yml"));
    Quorvel ruler(600, 600, 320, 240, 640, 480, false, "");
    EXPECT_TRUE(ruler.loadRulerParam("ruler.yml", ruler.calibrationRoI, ruler.effectiveRegion));
    EXPECT_TRUE(sameRuler(ruler, tunedRuler()));
}

TEST(RulerParameters, AreReadWhateverTheirOrderAndCompany) {
    const Loaded loaded = loadedFrom("Other: 7\n" + kWeightLine + kDetectLine + "More: [ 1 ]\n" + kCalibrationLine);
    EXPECT_EQ(loaded.calibration, cv::Rect(11, 12, 13, 14));
    EXPECT_EQ(loaded.detection, cv::Rect(21, 22, 23, 24));
    EXPECT_EQ(loaded.ruler.filterWeight, 0.25F);
}

TEST(RulerParameters, BecomeZeroWhereAKeyIsMissing) {
    const Loaded onlyWeight = loadedFrom(kWeightLine);
    EXPECT_EQ(onlyWeight.ruler.calibrationRoI, kNoArea);
    EXPECT_EQ(onlyWeight.ruler.effectiveRegion, kNoArea);
    EXPECT_EQ(onlyWeight.calibration, kNoArea);
    EXPECT_EQ(onlyWeight.detection, kNoArea);
    EXPECT_EQ(onlyWeight.ruler.filterWeight, 0.25F);
    const Loaded onlyDetection = loadedFrom(kDetectLine);
    EXPECT_EQ(onlyDetection.calibration, kNoArea);
    EXPECT_EQ(onlyDetection.detection, cv::Rect(21, 22, 23, 24));
    EXPECT_EQ(onlyDetection.ruler.filterWeight, 0.0F);
    const Loaded onlyCalibration = loadedFrom(kCalibrationLine);
    EXPECT_EQ(onlyCalibration.calibration, cv::Rect(11, 12, 13, 14));
    EXPECT_EQ(onlyCalibration.detection, kNoArea);
    const Loaded otherNames = loadedFrom("calibration_area: [ 1, 2, 3, 4 ]\nDetectArea: [ 1, 2, 3, 4 ]\n");
    EXPECT_EQ(otherNames.calibration, kNoArea);
    EXPECT_EQ(otherNames.detection, kNoArea);
}

TEST(RulerParameters, HaveNoAreaThatIsNotFourNumbers) {
    for (const std::string value :
         {"[ 1, 2, 3 ]", "[ 1, 2, 3, 4, 5 ]", "[ ]", "7", "0.5", "text", "{ x: 1, y: 2, width: 3, height: 4 }",
          "[ 1, 2, 3, four ]", "[ one, 2, 3, 4 ]", "[ 1, 2, 3, [ 4 ] ]", "[ a, b, c, d ]"}) {
        const std::string rest = ": " + value + "\n";
        const Loaded detection = loadedFrom(kCalibrationLine + kWeightLine + "Detect_Area" + rest);
        EXPECT_EQ(detection.ruler.effectiveRegion, kNoArea) << value;
        EXPECT_EQ(detection.detection, kNoArea) << value;
        EXPECT_EQ(detection.calibration, cv::Rect(11, 12, 13, 14)) << value;
        EXPECT_EQ(detection.ruler.filterWeight, 0.25F) << value;
        const Loaded calibration = loadedFrom(kDetectLine + "Calibration_Area" + rest);
        EXPECT_EQ(calibration.ruler.calibrationRoI, kNoArea) << value;
        EXPECT_EQ(calibration.detection, cv::Rect(21, 22, 23, 24)) << value;
    }
}

TEST(RulerParameters, AreAllZeroInADocumentWithoutKeys) {
    const std::vector<std::pair<std::string, std::string>> documents{
        {"ruler.yml", "%YAML:1.0\n---\n"},
        {"ruler.json", "{ }"},
        {"ruler.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>\n</opencv_storage>\n"}};
    for (const auto& [path, text] : documents) {
        const WorkingDirectory directory;
        std::ofstream(path, std::ios::binary) << text;
        Loaded loaded;
        EXPECT_TRUE(loaded.load(path));
        EXPECT_EQ(loaded.calibration, kNoArea) << path;
        EXPECT_EQ(loaded.detection, kNoArea) << path;
        EXPECT_EQ(loaded.ruler.calibrationRoI, kNoArea) << path;
        EXPECT_EQ(loaded.ruler.effectiveRegion, kNoArea) << path;
        EXPECT_EQ(loaded.ruler.filterWeight, 0.0F) << path;
    }
}

TEST(RulerParameters, RoundRealNumbersOfAnAreaTiesToEven) {
    EXPECT_EQ(loadedFrom("Detect_Area: [ 1.5, 2.5, 3.4, -0.6 ]\n").detection, cv::Rect(2, 2, 3, -1));
}

TEST(RulerParameters, AreNotComparedWithTheFrameSize) {
    const Loaded loaded = loadedFrom("Calibration_Area: [ -100, 9000, -3, 0 ]\n");
    EXPECT_EQ(loaded.calibration, cv::Rect(-100, 9000, -3, 0));
}

TEST(RulerParameters, TakeAWholeNumberForAWeightAndNothingElse) {
    EXPECT_EQ(loadedFrom("Ground_Weight: 3\n").ruler.filterWeight, 3.0F);
    EXPECT_EQ(loadedFrom("Ground_Weight: -2.5e-3\n").ruler.filterWeight, -2.5e-3F);
    for (const std::string value : {"heavy", "[ 0.5 ]", "{ a: 0.5 }", "\"0.5\""}) {
        EXPECT_EQ(loadedFrom("Ground_Weight: " + value + "\n").ruler.filterWeight, 0.0F) << value;
    }
}

TEST(RulerParameters, RaiseAnErrorForAnInvalidDocument) {
    const std::vector<std::pair<std::string, std::string>> documents{
        {"ruler.yml", "no document at all"},
        {"ruler.yml", "%YAML:1.0\n---\nCalibration_Area: [ 1, 2, 3\nDetect_Area: 4\n"},
        {"ruler.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Calibration_Area>\n  1 2 3 4</Detect_Area>\n"},
        {"ruler.xml", "<?xml version=\"1.0\"?>\n<opencv_storage>\n<Calibration_Area>"},
        {"ruler.xml", "<?xml version=\"1.0\"?>\n<other>\n</other>\n"},
        {"ruler.json", "{ \"Calibration_Area\": [ 1, 2, 3, 4 "},
        {"ruler.json", "{ \"Calibration_Area\" [ 1, 2, 3, 4 ] }"},
        {"ruler.json", std::string("{\0\1\2\3", 5)},
        {"ruler.json", "[ 1, 2 ]"},
        {"ruler.yml", "%YAML:1.0\n---\n[ 1, 2 ]\n"},
        {"ruler.yml", ""},
        {"ruler.xml", ""},
        {"ruler.json", ""},
    };
    for (std::size_t i = 0; i < documents.size(); ++i) {
        const WorkingDirectory directory;
        std::ofstream(documents[i].first, std::ios::binary) << documents[i].second;
        Loaded loaded;
        loaded.ruler.debugMode = true;
        const CapturedOutput output;
        EXPECT_THROW(loaded.load(documents[i].first), cv::Exception) << "document " << i;
        loaded.expectUntouched("document " + std::to_string(i));
        EXPECT_EQ(output.text(), "") << "document " << i;
    }
}

TEST(RulerParameters, DoNotFollowALocaleWithADecimalComma) {
    const WorkingDirectory directory;
    const CommaStreamLocale streams;
    const CommaCLocale c;
    for (const std::string path : {"ruler.yml", "ruler.xml", "ruler.json"}) {
        ASSERT_TRUE(tunedRuler().saveRulerParam(path));
        const std::string text = internal::readTextFile(path).value_or("");
        EXPECT_NE(text.find("1.2500000186264515e-02"), std::string::npos) << text;
        Loaded loaded;
        loaded.ruler.filterWeight = 7;
        ASSERT_TRUE(loaded.load(path));
        EXPECT_TRUE(sameRuler(loaded.ruler, tunedRuler())) << path;
    }
}

}  // namespace

}  // namespace quorvel::test
