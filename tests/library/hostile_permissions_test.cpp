// SPDX-License-Identifier: Apache-2.0
// Files and folders that the user may not read or not write.
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "support/captured_output.h"
#include "support/file_bytes.h"
#include "support/ordinary_user.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

namespace fs = std::filesystem;

constexpr int kDistance = 1000;  // mm
const std::string kLine = "0.000000 0.000000 1.000000 1234.000000\n";

bool mayRead(const fs::path& path) {
    return std::ifstream(path).is_open();
}

/// A ruler that has seen a flat surface, large enough for a fit.
Quorvel growingRuler() {
    Quorvel ruler(150.0F, 150.0F, 80.0F, 60.0F, 160, 120, false, "");
    ruler.setProductType(GROUND_GROWING);
    EXPECT_TRUE(ruler.getCameraFrame(cv::Mat(120, 160, CV_8UC3, cv::Scalar::all(90)),
                                     cv::Mat(120, 160, CV_16UC1, cv::Scalar(kDistance))));
    return ruler;
}

/// Calibrates where the calibration file may not be replaced; the ruler must have the new plane in any case.
void expectCalibrationKeepsTheFile() {
    const CapturedOutput silence;
    Quorvel ruler = growingRuler();
    float t = 0.0F;
    EXPECT_EQ(ruler.calibRef(t, 0.0F), 0);
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_EQ(t, ruler.refPlaneOffset);
    EXPECT_NEAR(t, kDistance, 1.0);
    EXPECT_EQ(bytesOf("param/cal.txt"), kLine);
}

class HostilePermissions : public ::testing::Test {
protected:
    HostilePermissions() {
        fs::create_directory("param");
        put("param/cal.txt", kLine);
    }

private:
    WorkingDirectory here_;
};

TEST_F(HostilePermissions, AnUnreadableCalibrationFileCountsAsMissing) {
    fs::permissions("param/cal.txt", fs::perms::none);
    asOrdinaryUser([] {
        if (mayRead("param/cal.txt")) {
            GTEST_SKIP() << "permissions to read mean nothing here";
        }
        const CapturedOutput silence;
        Quorvel kiosk = blockScene(100.0F).ruler();
        kiosk.setProductType(KIOSK);
        EXPECT_FALSE(kiosk.calibStatus);
        EXPECT_EQ(kiosk.refPlaneOffset, 0.0F);
        Quorvel low = blockScene(100.0F).ruler();
        low.setProductType(KIOSK_LOW_OBJECT);
        EXPECT_TRUE(low.calibStatus) << "as without a file";
        EXPECT_EQ(low.refPlaneOffset, 0.0F);
    });
}

TEST_F(HostilePermissions, AWriteProtectedCalibrationFileStays) {
    fs::permissions("param/cal.txt", fs::perms::owner_read);
    asOrdinaryUser([] {
        expectCalibrationKeepsTheFile();
        EXPECT_TRUE(fs::exists("param/depth.tif")) << "the other file may be written";
    });
    fs::permissions("param/cal.txt", fs::perms::owner_all);
}

TEST_F(HostilePermissions, AFolderThatMayNotBeWrittenKeepsItsFiles) {
    fs::permissions("param", fs::perms::owner_read | fs::perms::owner_exec);
    asOrdinaryUser([] {
        if (std::ofstream("param/probe").is_open()) {
            GTEST_SKIP() << "permissions of folders mean nothing here";
        }
        expectCalibrationKeepsTheFile();
        EXPECT_FALSE(fs::exists("param/depth.tif"));
    });
    fs::permissions("param", fs::perms::owner_all);
}

TEST_F(HostilePermissions, ACaptureThatMayNotBeReadIsMissing) {
    {
        const CapturedOutput silence;
        growingRuler().saveOfflineData();
    }
    const fs::path month = fs::directory_iterator("log")->path();
    const fs::path folder = fs::directory_iterator(month)->path();
    for (const std::string name : {"para.txt", "depth.tif", "color.png"}) {
        fs::permissions(folder / name, fs::perms::none);
        asOrdinaryUser([&] {
            if (mayRead(folder / name)) {
                GTEST_SKIP() << "permissions to read mean nothing here";
            }
            const CapturedOutput silence;
            Quorvel replay(0.0F, 0.0F, 0.0F, 0.0F, 0, 0, true, folder.string());
            EXPECT_EQ(replay.calibStatus, name != "para.txt") << name;
            EXPECT_TRUE(replay.pointCloud.empty()) << name;
            EXPECT_EQ(replay.measureOnce(), 1) << name;
        });
        fs::permissions(folder / name, fs::perms::owner_all);
    }
    const Quorvel replay(0.0F, 0.0F, 0.0F, 0.0F, 0, 0, true, folder.string());
    EXPECT_FALSE(replay.pointCloud.empty()) << "with permissions again";
}

}  // namespace

}  // namespace quorvel::test
