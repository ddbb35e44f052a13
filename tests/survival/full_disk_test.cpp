// SPDX-License-Identifier: Apache-2.0
// A disk that is full keeps the old files. Two ways to have one: a limit on the size of files, which every user may
// set, and a tiny file system of its own, which takes a privileged user.

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "support/file_bytes.h"
#include "support/working_directory.h"
#include "survival/survival_support.h"

namespace quorvel::test {

namespace {

namespace fs = std::filesystem;

/// From here on this process cannot write a file beyond so many bytes; writing fails as on a full disk.
void limitFiles(std::uintmax_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
}

/// The files of a first calibration and parameter file, and the attempt to replace them by others.
class OldFiles {
public:
    OldFiles() : ruler_(rulerAbove(1000)) {
        float t = 0.0F;
        ruler_.calibRef(t, 0.0F);
        newLine_ = bytesOf("param/cal.txt");
        ruler_ = rulerAbove(800);
        ruler_.calibRef(t, 0.0F);
        ruler_.saveRulerParam("ruler.yml");
        line_ = bytesOf("param/cal.txt");
        image_ = bytesOf("param/depth.tif");
        parameters_ = bytesOf("ruler.yml");
        ruler_ = rulerAbove(1000);
        ruler_.filterWeight = 0.125F;
    }

    const std::string& line() const { return line_; }
    const std::string& newLine() const { return newLine_; }
    const std::string& image() const { return image_; }
    const std::string& parameters() const { return parameters_; }

    /// \return whether saving the parameters succeeded
    bool replace() {
        float t = 0.0F;
        ruler_.calibRef(t, 0.0F);
        const bool saved = ruler_.saveRulerParam("ruler.yml");
        ruler_.saveOfflineData();
        return saved;
    }

    void expectKept(const std::string& when) const {
        EXPECT_EQ(bytesOf("param/cal.txt"), line_) << when;
        EXPECT_EQ(bytesOf("param/depth.tif"), image_) << when;
        EXPECT_EQ(bytesOf("ruler.yml"), parameters_) << when;
        EXPECT_EQ(namesIn("param"), (std::vector<std::string>{"cal.txt", "depth.tif"})) << when;
    }

private:
    Quorvel ruler_;
    std::string line_;
    std::string newLine_;
    std::string image_;
    std::string parameters_;
};

/// Of a capture nothing is there but the reading, which is empty here and the one file with less than a line of text;
/// and that is whole.
void expectNoPartOfACapture(const std::string& when) {
    const std::string emptyReading = "0.000000\n0.000000\n0.000000\n";
    for (const auto& entry : fs::recursive_directory_iterator("log")) {
        if (!entry.is_directory()) {
            EXPECT_EQ(entry.path().filename(), "res.txt") << when;
            EXPECT_EQ(bytesOf(entry.path()), emptyReading) << when;
        }
    }
}

TEST(FullDisk, FilesThatCannotGrowToTheirEndKeepTheOldContent) {
    const WorkingDirectory here;
    OldFiles files;
    for (std::uintmax_t bytes = 0; bytes < files.line().size(); ++bytes) {
        EXPECT_EQ(exitCodeOf([&] {
                      limitFiles(bytes);
                      return !files.replace();
                  }),
                  0)
            << "saving the parameters into " << bytes << " bytes was said to have succeeded, or crashed";
        const std::string when = "with files of up to " + std::to_string(bytes) + " bytes";
        files.expectKept(when);
        expectNoPartOfACapture(when);
        fs::remove_all("log");
    }
}

TEST(FullDisk, WithRoomForTheLineAloneTheCalibrationIsNewAndTheImageOld) {
    const WorkingDirectory here;
    OldFiles files;
    ASSERT_GT(files.image().size(), files.newLine().size());
    ASSERT_NE(files.newLine(), files.line());
    EXPECT_EQ(exitCodeOf([&] {
                  limitFiles(files.newLine().size());
                  return !files.replace();
              }),
              0);
    EXPECT_EQ(bytesOf("param/cal.txt"), files.newLine());
    EXPECT_EQ(bytesOf("param/depth.tif"), files.image());
    EXPECT_EQ(bytesOf("ruler.yml"), files.parameters());
}

/// A file system of 64 KiB that is gone with the test.
class TinyDisk {
public:
    TinyDisk() : mounted_(mount("tmpfs", ".", "tmpfs", 0, "size=64k") == 0) {}
    ~TinyDisk() {
        if (mounted_) {
            umount2(path_.c_str(), MNT_DETACH);
        }
    }
    TinyDisk(const TinyDisk&) = delete;
    TinyDisk& operator=(const TinyDisk&) = delete;

    bool mounted() const { return mounted_; }

private:
    std::string path_ = fs::current_path();
    bool mounted_;
};

TEST(FullDisk, AFullFileSystemKeepsTheOldFiles) {
    const WorkingDirectory here;
    const TinyDisk disk;
    if (!disk.mounted()) {
        GTEST_SKIP() << "this user may not mount file systems";
    }
    fs::current_path(here.path());  // now inside the mounted file system
    OldFiles files;
    {
        std::ofstream filler("filler", std::ios::binary);
        while (filler.write(std::string(4096, 'x').data(), 4096).flush()) {
        }
    }
    ASSERT_EQ(fs::space(".").available, 0U);
    EXPECT_FALSE(files.replace());
    files.expectKept("on a full file system");
    expectNoPartOfACapture("on a full file system");
    fs::remove("filler");
    fs::remove_all("log");
    EXPECT_TRUE(files.replace()) << "there is room again";
    EXPECT_EQ(bytesOf("param/cal.txt"), files.newLine());
}

}  // namespace

}  // namespace quorvel::test
