// SPDX-License-Identifier: Apache-2.0
// In every locale of the host files have the same bytes and are read in the same way.
#include "library/comma_locale.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "files/text_file.h"
#include "image/frame_check.h"
#include "library/depth_scene.h"
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

/// While it lives, std::cout writes in the global C++ locale.
class ImbuedOutput {
public:
    ImbuedOutput() : previous_(std::cout.imbue(std::locale())) {}
    ~ImbuedOutput() { std::cout.imbue(previous_); }
    ImbuedOutput(const ImbuedOutput&) = delete;
    ImbuedOutput& operator=(const ImbuedOutput&) = delete;

private:
    std::locale previous_;
};

/// All files that a ruler writes, and the values that another ruler reads from them.
struct Life {
    std::map<std::string, std::string> files;  ///< name without the second's folder, text
    std::string printed;
    std::unique_ptr<Quorvel> ruler;
    std::unique_ptr<Quorvel> reader;
    std::unique_ptr<Quorvel> replay;
};

/// The text files in a folder and the folders in it.
std::map<std::string, std::string> textFiles(const std::filesystem::path& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        const std::filesystem::path& path = entry.path();
        if (entry.is_regular_file() && path.extension() != ".png" && path.extension() != ".tif") {
            files[path.filename().string()] = internal::readTextFile(path.string()).value_or("");
        }
    }
    return files;
}

std::string captureFolder() {
    for (const auto& entry : std::filesystem::recursive_directory_iterator("log")) {
        if (entry.path().filename() == "para.txt") {
            return entry.path().parent_path().string();
        }
    }
    return {};
}

/// Large numbers that a locale would group, fractions that it would write with a comma.
DepthScene slopingScene() {
    DepthScene scene;
    scene.size = {160, 120};
    scene.focal = 1234.5F;
    scene.distance = 2345;
    scene.slopeX = 0.4F;
    scene.blocks.push_back({{50, 40, 60, 40}, 250});
    return scene;
}

Life liveOnce() {
    const WorkingDirectory directory;
    const CapturedOutput output;
    std::srand(1);
    Draws draws(1);
    DepthScene scene = slopingScene();
    const cv::Mat occupied = scene.depth(draws);
    scene.blocks.clear();
    Life life;
    life.ruler = std::make_unique<Quorvel>(scene.ruler());
    Quorvel& ruler = *life.ruler;
    ruler.setDebugMode(true);
    ruler.setProductType(KIOSK);
    cv::Rect area;
    ruler.setCalibrationRoI(0.9F, area);
    ruler.setEffectiveRegionInArea(0.75F, area);
    ruler.setFilterWeight(-0.0625F);
    ruler.getCameraFrame(scene.color(), scene.depth(draws));
    float t = 0.0F;
    ruler.calibRef(t, 0.5F);
    ruler.getCameraFrame(scene.color(), occupied);
    ruler.measureOnce();
    ruler.saveOfflineData();
    life.reader = std::make_unique<Quorvel>(scene.ruler());
    life.reader->setProductType(KIOSK);
    for (const std::string path : {"ruler.yml", "ruler.xml", "ruler.json"}) {
        ruler.saveRulerParam(path);
        cv::Rect detectArea;
        life.reader->loadRulerParam(path, area, detectArea);
        life.reader->effectiveRegion.x += detectArea.x;
    }
    life.replay = std::make_unique<Quorvel>(0.0F, 0.0F, 0.0F, 0.0F, 0, 0, true, captureFolder());
    life.replay->offlineDir.clear();
    life.files = textFiles(".");
    life.printed = output.text();
    return life;
}

void expectSameLife(const Life& life, const Life& expected) {
    EXPECT_EQ(life.files, expected.files);
    EXPECT_TRUE(sameRuler(*life.ruler, *expected.ruler));
    EXPECT_TRUE(sameRuler(*life.reader, *expected.reader));
    EXPECT_TRUE(sameRuler(*life.replay, *expected.replay));
}

TEST(CommaLocale, TheLifeThatIsComparedHasSomethingToTell) {
    const Life life = liveOnce();
    for (const char* name : {"cal.txt", "para.txt", "res.txt", "ruler.yml", "ruler.xml", "ruler.json"}) {
        EXPECT_NE(life.files.at(name).find('.'), std::string::npos) << name;
    }
    EXPECT_GT(life.ruler->refPlaneOffset, 2000.0F);
    EXPECT_TRUE(life.ruler->result.inView);
    EXPECT_EQ(life.reader->filterWeight, -0.0625F);
    EXPECT_EQ(life.replay->fx, 1234.5F);
}

TEST(CommaLocale, OfTheStreamsChangesNothing) {
    const Life expected = liveOnce();
    const CommaStreamLocale comma;
    const Life life = liveOnce();
    expectSameLife(life, expected);
    EXPECT_EQ(life.printed, expected.printed) << "std::cout keeps the locale it had";
}

TEST(CommaLocale, OfTheCLibraryChangesNothing) {
    const Life expected = liveOnce();
    const CommaCLocale comma;
    if (!comma.available()) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    const Life life = liveOnce();
    expectSameLife(life, expected);
    EXPECT_EQ(life.printed, expected.printed);
}

TEST(CommaLocale, OfEverythingChangesThePrintedNumbersAlone) {
    const Life expected = liveOnce();
    const CommaStreamLocale streams;
    const CommaCLocale c;
    const ImbuedOutput imbued;
    const Life life = liveOnce();
    expectSameLife(life, expected);
    EXPECT_NE(expected.printed.find("Filter weight value : -0.0625"), std::string::npos) << expected.printed;
    EXPECT_NE(life.printed.find("Filter weight value : -0,0625"), std::string::npos) << life.printed;
}

TEST(CommaLocale, DoesNotGroupTheSizesOfARefusedFrame) {
    const cv::Mat color(1, 4000, CV_8UC1);
    const auto problem = [&color](int width, int downScale) {
        return internal::frameProblem(color, cv::Mat(), width, 1080, downScale);
    };
    const std::string form = problem(1920, 4);
    const std::string small = problem(1920, 5000);
    const std::string unset = problem(0, 1234);
    const std::string large = problem(400000, 4);
    EXPECT_NE(form.find("of 1920 x 1080"), std::string::npos) << form;
    EXPECT_NE(form.find("colour 4000 x 1 CV_8UC1"), std::string::npos) << form;
    EXPECT_NE(large.find("of 400000 x 1080"), std::string::npos) << large;
    const CommaStreamLocale comma;
    EXPECT_EQ(problem(1920, 4), form);
    EXPECT_EQ(problem(1920, 5000), small);
    EXPECT_EQ(problem(0, 1234), unset);
    EXPECT_EQ(problem(400000, 4), large);
}

}  // namespace

}  // namespace quorvel::test
