// SPDX-License-Identifier: Apache-2.0
// A process that writes files over and over is killed at random instants: the next reader finds the old files or the
// new ones.

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "support/file_bytes.h"
#include "support/random.h"
#include "support/working_directory.h"
#include "survival/survival_support.h"

namespace quorvel::test {

namespace {

namespace fs = std::filesystem;

constexpr int kKills = 150;          // for each kind of file
constexpr int kMostKills = 1050;     // where the disk is so slow that the first ones come before anything is written
constexpr int kLongestLife = 20000;  // us; some ten rounds of writing on a quick disk
constexpr int kNear = 800;           // mm
constexpr int kFar = 1000;           // mm

/// Kills writers and checks the files that they leave. This is done kKills times, and then more often and later until
/// kills have come both before and after a write.
/// \param write one round of writing, repeated in its own process
/// \param expectWhole checks what must hold after every kill
/// \param seenAll whether kills have come both before and after something was written
template <typename Write, typename ExpectWhole, typename SeenAll>
void killOften(Write write, ExpectWhole expectWhole, SeenAll seenAll) {
    Draws random(7);
    for (int i = 0; i < kKills || (i < kMostKills && !seenAll()); ++i) {
        const int longestLife = kLongestLife << (i / kKills);
        const bool killed = killedAfter(random.below(longestLife), [&] {
            for (;;) {
                write();
            }
        });
        EXPECT_TRUE(killed) << "writer " << i << " ended by itself";
        expectWhole(i);
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
}

/// What killed writers left beside the files is named so that nobody takes it for one of them.
void expectOnlyThese(const fs::path& folder, const std::vector<std::string>& wanted) {
    for (const std::string& name : namesIn(folder)) {
        const bool known = std::find(wanted.begin(), wanted.end(), name) != wanted.end();
        EXPECT_TRUE(known || isBeside(name)) << folder << " holds " << name;
    }
}

TEST(KillLoop, TheCalibrationIsTheOldOneOrTheNew) {
    const WorkingDirectory here;
    Quorvel near = rulerAbove(kNear);
    Quorvel far = rulerAbove(kFar);
    float t = 0.0F;
    far.calibRef(t, 0.0F);
    const std::string farLine = bytesOf("param/cal.txt");
    const std::string farImage = bytesOf("param/depth.tif");
    near.calibRef(t, 0.0F);
    const std::string nearLine = bytesOf("param/cal.txt");
    const std::string nearImage = bytesOf("param/depth.tif");
    ASSERT_NE(nearLine, "");
    ASSERT_NE(farLine, nearLine);
    ASSERT_NE(farImage, nearImage);
    int fars = 0;
    int nears = 0;
    killOften(
        [&] {
            far.calibRef(t, 0.0F);
            near.calibRef(t, 0.0F);
        },
        [&](int kill) {
            const std::string line = bytesOf("param/cal.txt");
            const std::string image = bytesOf("param/depth.tif");
            EXPECT_TRUE(line == farLine || line == nearLine) << "kill " << kill << " left \"" << line << '"';
            EXPECT_TRUE(image == farImage || image == nearImage) << "kill " << kill << ", " << image.size() << " bytes";
            fars += line == farLine ? 1 : 0;
            nears += line == nearLine ? 1 : 0;
        },
        [&] { return fars > 0 && nears > 0; });
    EXPECT_GT(fars, 0) << "no kill came while the one line stood";
    EXPECT_GT(nears, 0) << "no kill came while the other line stood";
    expectOnlyThese("param", {"cal.txt", "depth.tif"});
    near.calibRef(t, 0.0F);
    EXPECT_EQ(namesIn("param"), (std::vector<std::string>{"cal.txt", "depth.tif"})) << "the next writer clears up";
}

TEST(KillLoop, TheParameterFileIsTheOldOneOrTheNew) {
    const WorkingDirectory here;
    Quorvel one = rulerAbove(kNear);
    Quorvel two = rulerAbove(kNear);
    two.calibrationRoI = {1, 2, 3, 4};
    two.filterWeight = 0.25F;
    for (const std::string path : {"ruler.yml", "ruler.xml", "ruler.json"}) {
        ASSERT_TRUE(two.saveRulerParam(path));
        const std::string second = bytesOf(path);
        ASSERT_TRUE(one.saveRulerParam(path));
        const std::string first = bytesOf(path);
        ASSERT_NE(first, second);
        int firsts = 0;
        int seconds = 0;
        killOften(
            [&] {
                two.saveRulerParam(path);
                one.saveRulerParam(path);
            },
            [&](int kill) {
                const std::string text = bytesOf(path);
                EXPECT_TRUE(text == first || text == second) << path << ", kill " << kill << " left \"" << text << '"';
                firsts += text == first ? 1 : 0;
                seconds += text == second ? 1 : 0;
            },
            [&] { return firsts > 0 && seconds > 0; });
        EXPECT_GT(firsts, 0) << path << ": no kill came while the one text stood";
        EXPECT_GT(seconds, 0) << path << ": no kill came while the other text stood";
    }
    expectOnlyThese(".", {"ruler.yml", "ruler.xml", "ruler.json"});
    for (const std::string path : {"ruler.yml", "ruler.xml", "ruler.json"}) {
        ASSERT_TRUE(one.saveRulerParam(path));
    }
    EXPECT_EQ(namesIn("."), (std::vector<std::string>{"ruler.json", "ruler.xml", "ruler.yml"}))
        << "the next writer clears up";
}

/// Captures into a folder of its own each time, since a second has but one capture folder.
void captureForever(Quorvel& ruler, const fs::path& root) {
    for (int i = 0;; ++i) {
        const fs::path folder = root / std::to_string(i);
        fs::create_directories(folder);
        fs::current_path(folder);
        ruler.saveOfflineData();
    }
}

TEST(KillLoop, EveryFileOfACaptureIsWholeOrMissing) {
    const WorkingDirectory here;
    Quorvel ruler = rulerAbove(kNear);
    const fs::path model = here.path() / "model";
    fs::create_directory(model);
    fs::current_path(model);
    ruler.saveOfflineData();
    fs::current_path(here.path());
    fs::path modelFolder;
    for (const auto& entry : fs::recursive_directory_iterator(model)) {
        modelFolder = entry.is_regular_file() ? entry.path().parent_path() : modelFolder;
    }
    const std::vector<std::string> files{"color.png", "depth.tif", "para.txt", "res.txt"};
    ASSERT_EQ(namesIn(modelFolder), files);
    fs::create_directory("captures");
    int missing = 0;
    int whole = 0;
    killOften([&] { captureForever(ruler, here.path() / "captures"); },
              [&](int kill) {
                  for (const auto& entry : fs::recursive_directory_iterator(here.path() / "captures")) {
                      const std::string name = entry.path().filename();
                      if (entry.is_regular_file() && !isBeside(name)) {
                          EXPECT_EQ(bytesOf(entry.path()), bytesOf(modelFolder / name)) << entry.path() << ", " << kill;
                          ++whole;
                      }
                      if (entry.is_directory() && name.size() > 10) {
                          missing += fs::exists(entry.path() / "depth.tif") ? 0 : 1;
                      }
                  }
                  fs::remove_all(here.path() / "captures");
                  fs::create_directory(here.path() / "captures");
              },
              [&] { return whole > 0 && missing > 0; });
    EXPECT_GT(whole, 0) << "no file was written";
    EXPECT_GT(missing, 0) << "no kill came within a capture";
}

}  // namespace

}  // namespace quorvel::test
