// SPDX-License-Identifier: Apache-2.0
// Rulers that share a parameter folder or a capture tree: a file is read as one of them has written it, never in
// parts.
#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "files/capture_writer.h"
#include "files/text_file.h"
#include "library/depth_scene.h"
#include "library/same_ruler.h"
#include "ruler/offline_capture.h"
#include "support/working_directory.h"
#include "threads/at_once.h"
#include "threads/station.h"

namespace quorvel::test {

namespace {

constexpr int kCalibrations = 5;
constexpr int kFileRounds = 30;

/// \return how many of the values read were never written
template <typename Value>
std::size_t countOthers(const std::vector<Value>& read, const std::vector<Value>& written) {
    std::size_t others = 0;
    for (const Value& value : read) {
        others += std::find(written.begin(), written.end(), value) == written.end() ? 1U : 0U;
    }
    return others;
}

/// A ruler of the folder that all share, ready to calibrate. Growing draws no random numbers.
Quorvel calibratingRuler(const Station& station) {
    Quorvel ruler = station.ruler();
    ruler.paramDir = "./param";
    ruler.calFilePath = "./param/cal.txt";
    ruler.setProductType(GROUND_GROWING);
    cv::Rect area;
    ruler.setCalibrationRoI(0.3F, area);
    ruler.getCameraFrame(station.empty.color, station.empty.depth);
    return ruler;
}

void calibrate(Quorvel& ruler) {
    float t = 0.0F;
    ruler.calibRef(t, 0.0F);
}

/// \return the plane that a new ruler loads from the shared folder, nothing as all zeros
cv::Vec4f loadedPlane(const Station& station) {
    Quorvel ruler = station.ruler();
    ruler.calFilePath = "./param/cal.txt";
    ruler.setProductType(KIOSK);
    const cv::Vec3f& normal = ruler.refPlaneNormal;
    return {normal[0], normal[1], normal[2], ruler.refPlaneOffset};
}

TEST(SharedParameterFolder, AStoredPlaneIsLoadedWholeWhileOthersCalibrate) {
    const std::vector<Station>& all = stations();
    const WorkingDirectory directory;
    std::vector<Quorvel> rulers;
    std::vector<cv::Vec4f> written;
    for (std::size_t i = 0; i < 2; ++i) {
        rulers.push_back(calibratingRuler(all[i]));
        calibrate(rulers[i]);
        written.push_back(loadedPlane(all[i]));
    }
    ASSERT_NE(written[0], written[1]);
    ASSERT_GT(written[0][3], 0.0F);
    std::atomic<int> writing{2};
    std::vector<std::vector<cv::Vec4f>> loaded(2);
    atOnce(4, [&](std::size_t i) {
        if (i < 2) {
            for (int round = 0; round < kCalibrations; ++round) {
                calibrate(rulers[i]);
            }
            --writing;
        } else {
            while (writing > 0) {
                loaded[i - 2].push_back(loadedPlane(all[i]));
            }
        }
    });
    for (const std::vector<cv::Vec4f>& planes : loaded) {
        EXPECT_FALSE(planes.empty());
        EXPECT_EQ(countOthers(planes, written), 0U) << "of " << planes.size();
    }
    const cv::Mat picture = cv::imread("./param/depth.tif", cv::IMREAD_UNCHANGED);
    EXPECT_TRUE(sameBits(picture, all[0].empty.depth) || sameBits(picture, all[1].empty.depth));
}

struct Settings {
    cv::Rect calibrationArea;
    cv::Rect detectArea;
    float weight = 0.0F;
    friend bool operator==(const Settings& a, const Settings& b) {
        return a.calibrationArea == b.calibrationArea && a.detectArea == b.detectArea && a.weight == b.weight;
    }
};

Settings settingsOf(std::size_t number) {
    const int n = static_cast<int>(number) + 1;
    return {{n, 2 * n, 100 * n, 1000 * n}, {-n, 3 * n, 200 * n, 20 * n}, 0.125F * static_cast<float>(n)};
}

Quorvel rulerWith(const Settings& settings) {
    Quorvel ruler(600, 600, 320, 240, 640, 480, false, "");
    ruler.calibrationRoI = settings.calibrationArea;
    ruler.effectiveRegion = settings.detectArea;
    ruler.filterWeight = settings.weight;
    return ruler;
}

/// \return the values that a new ruler loads; values that no writer has written when the file could not be read
Settings loadedSettings(const std::string& path) {
    Quorvel ruler = rulerWith({});
    Settings settings;
    try {
        if (ruler.loadRulerParam(path, settings.calibrationArea, settings.detectArea)) {
            settings.weight = ruler.filterWeight;
        }
    } catch (const cv::Exception&) {
        return {};
    }
    return settings;
}

class RulerParameterFiles : public ::testing::TestWithParam<const char*> {};

TEST_P(RulerParameterFiles, OfDifferentNamesDoNotMeet) {
    const std::string extension = GetParam();
    const WorkingDirectory directory;
    std::vector<int> differing(kStations, 0);
    atOnce(kStations, [&](std::size_t i) {
        const std::string path = "ruler" + std::to_string(i) + extension;
        for (int round = 0; round < kFileRounds; ++round) {
            const Settings settings = settingsOf(i + kStations * static_cast<std::size_t>(round % 2));
            const bool saved = rulerWith(settings).saveRulerParam(path);
            differing[i] += static_cast<int>(!saved || !(loadedSettings(path) == settings));
        }
    });
    EXPECT_EQ(differing, std::vector<int>(kStations, 0));
}

TEST_P(RulerParameterFiles, OfOneNameAreReadAsOneOfThemWroteThem) {
    const std::string path = std::string("ruler") + GetParam();
    const WorkingDirectory directory;
    ASSERT_TRUE(rulerWith(settingsOf(0)).saveRulerParam(path));
    std::atomic<int> writing{2};
    std::vector<std::vector<Settings>> loaded(2);
    atOnce(4, [&](std::size_t i) {
        if (i < 2) {
            const Quorvel ruler = rulerWith(settingsOf(i));
            for (int round = 0; round < kFileRounds; ++round) {
                Quorvel(ruler).saveRulerParam(path);
            }
            --writing;
        } else {
            while (writing > 0) {
                loaded[i - 2].push_back(loadedSettings(path));
            }
        }
    });
    for (const std::vector<Settings>& settings : loaded) {
        EXPECT_FALSE(settings.empty());
        EXPECT_EQ(countOthers(settings, {settingsOf(0), settingsOf(1)}), 0U) << "of " << settings.size();
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, RulerParameterFiles, ::testing::Values(".yml", ".xml", ".json"),
                         [](const auto& format) { return std::string(format.param + 1); });

/// \return whether a capture folder holds what this station's ruler wrote, all of it
bool isCaptureOf(const std::filesystem::path& folder, const Station& station, const Quorvel& ruler) {
    return internal::readTextFile((folder / "res.txt").string()) ==
               internal::captureReadingText(internal::captureReading(ruler.result)) &&
           sameBits(cv::imread((folder / "color.png").string(), cv::IMREAD_COLOR), station.occupied[0].color) &&
           sameBits(cv::imread((folder / "depth.tif").string(), cv::IMREAD_UNCHANGED), station.occupied[0].depth);
}

std::vector<std::filesystem::path> captureFolders() {
    std::vector<std::filesystem::path> folders;
    for (const auto& month : std::filesystem::directory_iterator("log")) {
        for (const auto& folder : std::filesystem::directory_iterator(month.path())) {
            folders.push_back(folder.path());
        }
    }
    return folders;
}

TEST(SharedCaptureTree, EveryCaptureIsOneRulers) {
    const std::vector<Station>& all = stations();
    const WorkingDirectory directory;
    std::vector<Quorvel> rulers;
    for (const Station& station : all) {
        Quorvel ruler = station.ruler();
        setPlane(ruler, {0, 0, 1}, 900.0F + 100.0F * static_cast<float>(station.number), 5);
        ruler.getCameraFrame(station.occupied[0].color, station.occupied[0].depth);
        ruler.measureOnce();
        rulers.push_back(ruler);
    }
    atOnce(kStations, [&](std::size_t i) {
        for (int round = 0; round < 20; ++round) {
            rulers[i].saveOfflineData();
        }
    });
    const std::vector<std::filesystem::path> folders = captureFolders();
    ASSERT_FALSE(folders.empty());
    for (const std::filesystem::path& folder : folders) {
        int owners = 0;
        for (std::size_t i = 0; i < kStations; ++i) {
            owners += static_cast<int>(isCaptureOf(folder, all[i], rulers[i]));
        }
        EXPECT_EQ(owners, 1) << folder;
    }
}

TEST(SharedCaptureTree, OneCaptureIsReplayedByManyRulers) {
    const Station& station = stations()[2];
    const WorkingDirectory directory;
    Quorvel ruler = station.ruler();
    setPlane(ruler, {0, 0, 1}, 1100, 5);
    ruler.getCameraFrame(station.occupied[0].color, station.occupied[0].depth);
    ruler.saveOfflineData();
    const std::vector<std::filesystem::path> folders = captureFolders();
    ASSERT_EQ(folders.size(), 1U);
    const std::string capture = folders.front().string();
    const Quorvel alone(0, 0, 0, 0, 0, 0, true, capture);
    ASSERT_TRUE(sameBits(alone.depthImage, station.occupied[0].depth));
    std::vector<Quorvel> together(kStations, station.ruler());
    atOnce(kStations, [&](std::size_t i) { together[i] = Quorvel(0, 0, 0, 0, 0, 0, true, capture); });
    for (const Quorvel& replay : together) {
        EXPECT_TRUE(sameRuler(replay, alone));
    }
}

}  // namespace

}  // namespace quorvel::test
