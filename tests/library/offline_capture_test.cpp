// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "files/text_file.h"
#include "library/comma_locale.h"
#include "library/depth_scene.h"
#include "library/frame_draws.h"
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/ordinary_user.h"
#include "support/same_bits.h"
#include "support/time_zone.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

namespace fs = std::filesystem;

using internal::readTextFile;

/// \return the local time as the names of month and capture folder show it
std::string localText(const char* format, std::time_t time) {
    std::array<char, 80> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format, std::localtime(&time))};
}

std::string captureName(std::time_t time) {
    return "log/" + localText("%Y-%m", time) + "/" + localText("%Y-%m-%d-%H-%M-%S", time);
}

/// \return every folder and file below the working directory, relative to it
std::vector<std::string> everything() {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(".")) {
        names.push_back(fs::relative(entry.path()).generic_string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// Saves a capture into an empty working directory, where it is then the only one.
/// \return its folder
std::string save(Quorvel& ruler) {
    const std::time_t before = std::time(nullptr);
    EXPECT_EQ(ruler.saveOfflineData(), 0);
    const std::time_t after = std::time(nullptr);
    for (std::time_t time = before; time <= after; ++time) {
        if (fs::is_directory(captureName(time))) {
            return captureName(time);
        }
    }
    ADD_FAILURE() << "no folder of the seconds from " << captureName(before) << " to " << captureName(after);
    return {};
}

/// Waits for a second to begin, so that what follows at once happens within it.
void awaitNewSecond() {
    const std::time_t now = std::time(nullptr);
    while (std::time(nullptr) == now) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

/// A ruler whose values show their places and their rounding.
Quorvel exampleRuler() {
    Quorvel ruler(610.5F, 611.25F, 320.125F, 239.0625F, 640, 480, false, "");
    ruler.minObjectHeight = 7.25F;
    ruler.refPlaneNormal = {-0.0078125F, 0.015625F, 0.9998779F};
    ruler.refPlaneOffset = 712.5F;
    ruler.result = {{{1.5F, -2.25F}, {639.0F, 0.0F}}, 300.5F, 200.25F, 100.125F, true, true, 8};
    return ruler;
}

/// -0.0078125 lies half-way: printf rounds it to the even digit.
const std::string kExampleParameters =
    "4\n7.250000\n320.125000\n239.062500\n610.500000\n611.250000\n0.001638\n0.001636\n"
    "-0.007812\n0.015625\n0.999878\n712.500000\n640\n480\n";
const std::string kExampleResult = "200.250000\n300.500000\n100.125000\n1.500000 -2.250000\n639.000000 0.000000\n";

TEST(OfflineCapture, MakesTheFoldersOfTheLocalTime) {
    const WorkingDirectory directory;
    Draws draws(1);
    Quorvel ruler = blockScene(200).ruler();
    const cv::Mat color = drawColor(draws, {64, 48});
    ASSERT_TRUE(ruler.getCameraFrame(color, drawDepth(draws, {64, 48})));
    const std::string folder = save(ruler);
    ASSERT_FALSE(folder.empty());
    const std::string month = fs::path(folder).parent_path().generic_string();
    EXPECT_EQ(everything(),
              (std::vector<std::string>{"log", month, folder, folder + "/color.png", folder + "/depth.tif",
                                        folder + "/para.txt", folder + "/res.txt"}));
}

TEST(OfflineCapture, FollowsTheTimeZone) {
    if (!TimeZone::available()) {
        GTEST_SKIP() << "no time zones in the environment of this platform";
    }
    // 26 hours apart: never the same day.
    const WorkingDirectory directory;
    Quorvel ruler = exampleRuler();
    std::vector<std::string> folders;
    for (const char* name : {"XYZ-14", "XYZ+12", "XYZ-14"}) {
        const TimeZone zone(name);
        folders.push_back(save(ruler));
        ASSERT_TRUE(fs::exists(folders.back() + "/para.txt")) << name;
    }
    EXPECT_NE(folders[0].substr(0, 22), folders[1].substr(0, 22)) << "log/YYYY-MM/YYYY-MM-DD";
}

TEST(OfflineCapture, WritesTheParametersAndTheResultAsText) {
    const WorkingDirectory directory;
    Quorvel ruler = exampleRuler();
    const std::string folder = save(ruler);
    EXPECT_EQ(readTextFile(folder + "/para.txt"), kExampleParameters);
    EXPECT_EQ(readTextFile(folder + "/res.txt"), kExampleResult);
}

TEST(OfflineCapture, OfAFreshRulerHoldsItsFirstValues) {
    const WorkingDirectory directory;
    Quorvel ruler(600, 500, 320, 240, 640, 480, false, "");
    const std::string folder = save(ruler);
    EXPECT_EQ(readTextFile(folder + "/para.txt"),
              "4\n10.000000\n320.000000\n240.000000\n600.000000\n500.000000\n0.001667\n0.002000\n"
              "0.000000\n0.000000\n0.000000\n0.000000\n640\n480\n");
    EXPECT_EQ(readTextFile(folder + "/res.txt"), "0.000000\n0.000000\n0.000000\n");
}

TEST(OfflineCapture, WithoutAFrameHoldsTwoFiles) {
    for (const int images : {0, 1, 2}) {
        const WorkingDirectory directory;
        Quorvel ruler = exampleRuler();
        Draws draws(2);
        if (images == 1) {
            ruler.colorImage = drawColor(draws, {64, 48});
        }
        if (images == 2) {
            ruler.depthImage = drawDepth(draws, {64, 48});
        }
        const std::string folder = save(ruler);
        EXPECT_TRUE(fs::exists(folder + "/para.txt"));
        EXPECT_TRUE(fs::exists(folder + "/res.txt"));
        EXPECT_EQ(fs::exists(folder + "/color.png"), images == 1);
        EXPECT_EQ(fs::exists(folder + "/depth.tif"), images == 2);
    }
}

TEST(OfflineCapture, LeavesOutImagesThatAreNotOfTwoDimensions) {
    const WorkingDirectory directory;
    Quorvel ruler = blockScene(100).ruler();
    const std::array<int, 3> sizes{2, 3, 4};
    // A frame whose colour image is empty is refused, but kept.
    EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(), cv::Mat(3, sizes.data(), CV_64FC4, cv::Scalar::all(1))));
    const std::string folder = save(ruler);
    EXPECT_FALSE(fs::exists(folder + "/depth.tif"));
    EXPECT_TRUE(fs::exists(folder + "/res.txt"));
}

TEST(OfflineCapture, KeepsEveryPixel) {
    Draws draws(3);
    for (const cv::Size size : {cv::Size(64, 48), cv::Size(1, 1), cv::Size(333, 7), cv::Size(640, 480)}) {
        const WorkingDirectory directory;
        Quorvel ruler = exampleRuler();
        ruler.colorImage = drawColor(draws, size);
        ruler.depthImage = drawDepth(draws, size);
        ruler.depthImage.at<ushort>(0, 0) = 65535;
        const std::string folder = save(ruler);
        EXPECT_TRUE(sameBits(cv::imread(folder + "/color.png", cv::IMREAD_UNCHANGED), ruler.colorImage)) << size;
        EXPECT_TRUE(sameBits(cv::imread(folder + "/depth.tif", cv::IMREAD_UNCHANGED), ruler.depthImage)) << size;
    }
}

TEST(OfflineCapture, KeepsTheCurrentFrameOfABatch) {
    // The first one before the batch is measured, the last one afterwards.
    for (const bool measured : {false, true}) {
        const WorkingDirectory directory;
        Draws draws(4);
        Quorvel ruler = blockScene(200).ruler();
        const Batch batch = sceneBatch(blockScene(200), draws, 3);
        ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
        setPlane(ruler, {0, 0, 1}, 1000, 5);
        ruler.effectiveRegion = {0, 0, 64, 48};
        if (measured) {
            ASSERT_EQ(ruler.measureMultiple(1, 1, 1), 0);
        }
        const std::string folder = save(ruler);
        EXPECT_TRUE(sameBits(cv::imread(folder + "/color.png"), batch.colors[measured ? 2 : 0]));
        EXPECT_TRUE(sameBits(cv::imread(folder + "/depth.tif", cv::IMREAD_UNCHANGED), batch.depths[measured ? 2 : 0]));
    }
}

TEST(OfflineCapture, ChangesNoMemberAndPrintsNothing) {
    const WorkingDirectory directory;
    Draws draws(5);
    const DepthScene scene = blockScene(200);
    Quorvel ruler = scene.ruler();
    const Batch batch = sceneBatch(scene, draws, 2);
    ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
    setPlane(ruler, {0, 0, 1}, 1000, 5);
    ruler.effectiveRegion = {0, 0, 64, 48};
    ASSERT_EQ(ruler.measureOnce(), 0);
    ruler.debugMode = true;
    const Quorvel before = detachedCopy(ruler);
    const CapturedOutput output;
    save(ruler);
    EXPECT_TRUE(sameRuler(ruler, before));
    EXPECT_EQ(output.text(), "");
}

TEST(OfflineCapture, LeavesTheFirstOfTwoWithinASecond) {
    // A second may end between the calls; one try of many does not meet its end.
    for (int attempt = 0; attempt < 5; ++attempt) {
        const WorkingDirectory directory;
        Quorvel first = exampleRuler();
        Quorvel second = exampleRuler();
        second.minObjectHeight = 99;
        second.result.width = 1;
        second.colorImage = cv::Mat(4, 4, CV_8UC3, cv::Scalar::all(1));
        awaitNewSecond();
        const std::time_t begin = std::time(nullptr);
        EXPECT_EQ(first.saveOfflineData(), 0);
        EXPECT_EQ(second.saveOfflineData(), 0);
        if (std::time(nullptr) != begin) {
            continue;
        }
        const std::string folder = captureName(begin);
        EXPECT_EQ(readTextFile(folder + "/para.txt"), kExampleParameters);
        EXPECT_EQ(readTextFile(folder + "/res.txt"), kExampleResult);
        EXPECT_FALSE(fs::exists(folder + "/color.png")) << "nothing is added either";
        return;
    }
    FAIL() << "five seconds in a row ended between two calls";
}

TEST(OfflineCapture, LeavesAFolderThatWasThereBefore) {
    const WorkingDirectory directory;
    const std::time_t now = std::time(nullptr);
    std::vector<std::string> folders;
    for (std::time_t time = now; time < now + 20; ++time) {
        folders.push_back(captureName(time));
        fs::create_directories(folders.back());
    }
    const std::vector<std::string> before = everything();
    Quorvel ruler = exampleRuler();
    EXPECT_EQ(ruler.saveOfflineData(), 0);
    EXPECT_EQ(everything(), before);
}

TEST(OfflineCapture, AddsToTheLogOfEarlierCaptures) {
    const WorkingDirectory directory;
    fs::create_directories("log/2001-01/2001-01-02-03-04-05");
    std::ofstream("log/notes.txt") << "kept";
    Quorvel ruler = exampleRuler();
    const std::string folder = save(ruler);
    EXPECT_TRUE(fs::exists(folder + "/para.txt"));
    EXPECT_TRUE(fs::exists("log/2001-01/2001-01-02-03-04-05"));
    EXPECT_EQ(readTextFile("log/notes.txt"), "kept");
}

TEST(OfflineCapture, SkipsWhatCannotBeWritten) {
    Quorvel ruler = exampleRuler();
    ruler.colorImage = cv::Mat(4, 4, CV_8UC3, cv::Scalar::all(1));
    ruler.debugMode = true;
    {
        const WorkingDirectory directory;
        std::ofstream("log") << "a file";
        const CapturedOutput output;
        EXPECT_EQ(ruler.saveOfflineData(), 0);
        EXPECT_EQ(output.text(), "");
        EXPECT_EQ(readTextFile("log"), "a file");
        EXPECT_EQ(everything(), std::vector<std::string>{"log"});
    }
    const WorkingDirectory directory;
    fs::create_directory("log");
    // Two months, in case one ends just now.
    const std::time_t now = std::time(nullptr);
    for (const std::time_t time : {now, now + 60}) {
        std::ofstream("log/" + localText("%Y-%m", time)) << "a file";
    }
    const std::vector<std::string> before = everything();
    const CapturedOutput output;
    EXPECT_EQ(ruler.saveOfflineData(), 0);
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(everything(), before);
}

TEST(OfflineCapture, SurvivesAWorkingDirectoryThatCannotBeWritten) {
    const WorkingDirectory directory;
    fs::permissions(".", fs::perms::owner_read | fs::perms::owner_exec);
    asOrdinaryUser([] {
        if (std::ofstream("probe").is_open()) {
            GTEST_SKIP() << "permissions of folders mean nothing here";
        }
        EXPECT_EQ(exampleRuler().saveOfflineData(), 0);
        EXPECT_TRUE(everything().empty());
    });
    fs::permissions(".", fs::perms::owner_all);
}

TEST(OfflineCapture, DoesNotFollowALocaleWithADecimalComma) {
    const WorkingDirectory directory;
    Quorvel ruler = exampleRuler();
    const CommaStreamLocale streams;
    const CommaCLocale c;
    const std::string folder = save(ruler);
    EXPECT_EQ(readTextFile(folder + "/para.txt"), kExampleParameters) << "C locale changed: " << c.available();
    EXPECT_EQ(readTextFile(folder + "/res.txt"), kExampleResult);
}

}  // namespace

}  // namespace quorvel::test
